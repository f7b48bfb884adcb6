// The model: what stacks of streams do, told in as few words as possible. It knows neither locks nor listeners, holds
// bytes in plain strings, and can be copied.
#ifndef OXACORE_TESTS_IO_MODEL_REFERENCE_H
#define OXACORE_TESTS_IO_MODEL_REFERENCE_H

#include <map>
#include <string>
#include <vector>

#include "Side.h"

namespace Model {

/// At most `count` bytes of `bytes`.
inline Bytes Piece(const Bytes& bytes, Count from, Count count) {
  return bytes.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(count));
}

class Reference : public Side {
 public:
  explicit Reference(const Store& store) : m_store(store), m_bOpen(store.m_bPipe) {}

  long long Read(int level, Bytes& into, long long count) override;
  int Read(int level) override;
  bool Skip(int level, Count count) override;
  Count Available(int level) override;
  void CloseInput(int) override { CloseStore(); }

  void Write(int level, const Bytes& bytes) override;
  void Write(int level, unsigned char byte) override {
    Write(level, Bytes(1, static_cast<char>(byte)), true);
  }
  void Flush(int level) override;
  void CloseOutput(int level) override;

  Bytes Get(int level, Value type, bool& whole) override;
  void Put(int level, Value type, const Bytes& bytes) override;

  void PushInput(const Layer& layer) override { m_input.push_back(Stage{layer}); }
  void PopInput() override { m_input.pop_back(); }
  void PushOutput(const Layer& layer) override { m_output.push_back(Stage{layer}); }
  void PopOutput() override;
  void SetSeparators(int level, const Layer& layer) override { Output(level).m_layer = layer; }
  Count InputCount(int level) override { return Input(level).m_ulCount; }
  Count OutputCount(int level) override { return Output(level).m_ulCount; }

  bool Open(const Bytes& name, unsigned int mode, Opening how) override;
  bool IsOpen() override { return m_bOpen; }
  long long SetInputPos(long long offset, Where from) override;
  long long SetOutputPos(long long offset, Where from) override;
  void SetEndOfFile(long long offset, Where from) override;
  long long InputPos() override { return m_iInput; }
  long long OutputPos() override { return m_iOutput; }
  long long CurrentPos() override { return NeedOpen(), m_iCurrent; }
  long long FileSize() override { return NeedOpen(), Size(); }
  Bytes FileName() override { return m_sName; }
  Bytes Content(const Bytes& name) override;
  std::vector<Bytes> TakeWarnings() override;

 private:
  struct Stage {
    Layer m_layer;
    Count m_ulCount = 0;             // bytes through a bounded stream
    Bytes m_held = Bytes();          // read ahead, decoded, or waiting to be written
    Bytes m_group = Bytes(3, '\0');  // the encoder's group with what is left in it of the one before
    int m_iLine = 0;                 // characters since the encoder's last separator
  };

  Stage& Input(int level) { return m_input[static_cast<std::size_t>(level - 1)]; }
  Stage& Output(int level) { return m_output[static_cast<std::size_t>(level - 1)]; }
  int InputTop() const { return static_cast<int>(m_input.size()); }
  int OutputTop() const { return static_cast<int>(m_output.size()); }

  // Input stages.
  int ReadStoreByte();
  void Fill(int level);
  void Decode(int level);
  long long ReadBuffered(int level, Bytes& into, long long count);
  long long ReadByteByByte(int level, Bytes& into, long long count);
  bool SkipBuffered(int level, Count count);
  void DropAllBuffered();
  Count Fully(int level, Bytes& target);

  // Output stages.
  void Write(int level, const Bytes& bytes, bool single);
  void WriteHeld(int level);
  void WriteBuffered(int level, const Bytes& bytes, bool single);
  void WriteBounded(int level, const Bytes& bytes, bool single);
  void Encode(int level);
  void FlushAllBuffered();

  // The file and the pipe.
  long long ReadFile(Bytes& into, long long count);
  void WriteFile(const Bytes& bytes);
  long long ReadPipe(Bytes& into, long long count);
  bool SkipPipe(Count count);
  void WritePipe(const Bytes& bytes, bool single);
  void CloseStore();
  void NeedOpen() const;
  long long Size() { return static_cast<long long>(m_files[m_sName].size()); }
  long long Target(long long offset, Where from, long long current);
  void NeedInside(long long target);

  Store m_store;
  bool m_bOpen;
  std::vector<Stage> m_input, m_output;
  std::map<Bytes, Bytes> m_files;
  Bytes m_sName;
  unsigned int m_uMode = 0;
  long long m_iInput = 0, m_iOutput = 0, m_iCurrent = 0;
  Bytes m_ring;
  std::vector<Bytes> m_warnings;
};

}  // namespace Model

#endif

// The streams themselves, asked the same questions as the model.
#ifndef OXACORE_TESTS_IO_MODEL_SUBJECT_H
#define OXACORE_TESTS_IO_MODEL_SUBJECT_H

#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include <memory>
#include <string>
#include <vector>

#include "Side.h"

namespace Model {

/// Alerts of this process go to nobody but a list per thread, and carry neither call stacks nor circumstances: errors
/// are common in a model test. For the rest of the process.
void CollectAlerts();

/// The warnings of the calling thread since the last call.
std::vector<Bytes> TakeWarningsOfThread();

class Subject : public Side {
 public:
  /// Files are made in `folder`.
  Subject(const Store& store, const std::string& folder);
  ~Subject() override;

  long long Read(int level, Bytes& into, long long count) override;
  int Read(int level) override;
  bool Skip(int level, Count count) override;
  Count Available(int level) override;
  void CloseInput(int level) override;

  void Write(int level, const Bytes& bytes) override;
  void Write(int level, unsigned char byte) override;
  void Flush(int level) override;
  void CloseOutput(int level) override;

  Bytes Get(int level, Value type, bool& whole) override;
  void Put(int level, Value type, const Bytes& bytes) override;

  void PushInput(const Layer& layer) override;
  void PopInput() override { m_input.pop_back(); }
  void PushOutput(const Layer& layer) override;
  void PopOutput() override { m_output.pop_back(); }
  void SetSeparators(int level, const Layer& layer) override;
  Count InputCount(int level) override;
  Count OutputCount(int level) override;

  bool Open(const Bytes& name, unsigned int mode, Opening how) override;
  bool IsOpen() override;
  long long SetInputPos(long long offset, Where from) override;
  long long SetOutputPos(long long offset, Where from) override;
  void SetEndOfFile(long long offset, Where from) override;
  long long InputPos() override;
  long long OutputPos() override;
  long long CurrentPos() override;
  long long FileSize() override;
  Bytes FileName() override;
  Bytes Content(const Bytes& name) override;
  std::vector<Bytes> TakeWarnings() override { return TakeWarningsOfThread(); }

  /// Either side of the pipe, from now on.
  void WaitForEver();

  Oxa::Core::BinaryInputStream& Input(int level);
  Oxa::Core::BinaryOutputStream& Output(int level);

 private:
  std::string m_sFolder;
  std::unique_ptr<Oxa::Core::BinaryFileStream> m_file;
  std::unique_ptr<Oxa::Core::BinaryPipe> m_pipe;
  std::vector<std::unique_ptr<Oxa::Core::BinaryInputStream>> m_input;
  std::vector<std::unique_ptr<Oxa::Core::BinaryOutputStream>> m_output;
};

}  // namespace Model

#endif

// What the model and the streams themselves are both asked for, and how an answer is told, so that the two can be
// compared word by word.
#ifndef OXACORE_TESTS_IO_MODEL_SIDE_H
#define OXACORE_TESTS_IO_MODEL_SIDE_H

#include <string>
#include <vector>

namespace Model {

using Bytes = std::string;
using Count = unsigned long long;

/// In place of the content of a file that isn't there.
inline const char* const sNO_FILE = "(no file)";

/// One filter of a stack. `m_ulSize` is the size of a buffer or the limit of a bounded stream.
struct Layer {
  enum Kind : int { eBUFFERED = 0, eBOUNDED = 1, eDATA = 2, eBASE64 = 3 };

  Kind m_eKind = eDATA;
  Count m_ulSize = 0;
  bool m_bSeparators = false;
  int m_iLineLength = 0;
  Bytes m_sSeparator;
};

/// How a stack begins: a file, or a pipe of a size. A pipe's side that doesn't wait answers at once, one that waits
/// does so in vain: nobody else is there.
struct Store {
  bool m_bPipe = false;
  Count m_ulPipeSize = 0;
  bool m_bReaderWaits = false;
  bool m_bWriterWaits = false;
};

/// The typed values, in the order of their numbers.
enum class Value : int {
  eSIGNED_CHAR,
  eCHAR,
  eUNSIGNED_CHAR,
  eBOOL,
  eSHORT,
  eUNSIGNED_SHORT,
  eINT,
  eUNSIGNED_INT,
  eLONG,
  eUNSIGNED_LONG,
  eLONG_LONG,
  eUNSIGNED_LONG_LONG,
  eFLOAT,
  eDOUBLE,
  eSTRING,
  eWIDE_STRING,
  eEND
};

/// Bytes of a value on the stream; 0 for the texts, whose length differs.
int WidthOf(Value type);

/// What a variable holds before it is read: the end of the stream leaves it as it is.
Bytes FormerValue(Value type);

/// An error, as "Class: message".
struct Failure {
  Bytes m_sText;
};

/// Asked for what has no defined answer, such as typed values of a source that gives 0 bytes for ever.
struct NotToBeAsked {};

enum class Where : int { eFROM_BEGIN = 0, eFROM_CURRENT = 1, eFROM_END = 2, eFROM_NOWHERE = 3 };
enum class Opening : int { eIF_EXISTS = 0, eNEW = 1, eEMPTY = 2, eALWAYS = 3 };

/// A file or pipe with a stack of input filters and one of output filters. Level 0 is the file or pipe itself.
class Side {
 public:
  virtual ~Side() = default;

  virtual long long Read(int level, Bytes& into, long long count) = 0;  // appends what was read
  virtual int Read(int level) = 0;
  virtual bool Skip(int level, Count count) = 0;
  virtual Count Available(int level) = 0;
  virtual void CloseInput(int level) = 0;

  virtual void Write(int level, const Bytes& bytes) = 0;
  virtual void Write(int level, unsigned char byte) = 0;
  virtual void Flush(int level) = 0;
  virtual void CloseOutput(int level) = 0;

  /// A value as its bytes on the stream; texts without their length. Only the model tells in `whole` if a text was
  /// cut off: what it ends with isn't defined then.
  virtual Bytes Get(int level, Value type, bool& whole) = 0;
  virtual void Put(int level, Value type, const Bytes& bytes) = 0;

  virtual void PushInput(const Layer& layer) = 0;
  virtual void PopInput() = 0;
  virtual void PushOutput(const Layer& layer) = 0;
  virtual void PopOutput() = 0;
  virtual void SetSeparators(int level, const Layer& layer) = 0;
  virtual Count InputCount(int level) = 0;
  virtual Count OutputCount(int level) = 0;

  /// Of a pipe, that it is open again; the rest doesn't matter then.
  virtual bool Open(const Bytes& name, unsigned int mode, Opening how) = 0;
  virtual bool IsOpen() = 0;
  virtual long long SetInputPos(long long offset, Where from) = 0;
  virtual long long SetOutputPos(long long offset, Where from) = 0;
  virtual void SetEndOfFile(long long offset, Where from) = 0;
  virtual long long InputPos() = 0;
  virtual long long OutputPos() = 0;
  virtual long long CurrentPos() = 0;
  virtual long long FileSize() = 0;
  virtual Bytes FileName() = 0;

  /// All bytes that the file of this name has now, whoever looks at it.
  virtual Bytes Content(const Bytes& name) = 0;

  /// The warnings since the last call, as "Class: message".
  virtual std::vector<Bytes> TakeWarnings() = 0;

 protected:
  Side() = default;
  Side(const Side&) = default;
  Side& operator=(const Side&) = default;
};

}  // namespace Model

#endif

// A file as a source and a sink of bytes at once, with a position of its own for either.
//
// A read continues where the last read stopped even if writes went on in between, and the other way round; the
// system's pointer is moved only where it doesn't stand there already. Writing to a freshly opened file appends,
// reading starts at its beginning. Positions and sizes are bytes from the beginning of the file, with 64 bits.
//
// Who opens a file for writing has it for himself but for those who only read and come later; who wants to write
// while anybody has it is refused. That holds for those who open by this class, in this process and in others.
// Written bytes go to the system with every Write and are there for all readers when it returns, also if the
// process ends in the next moment; that they reach the disk is not awaited.
//
// Moving a position, shortening and closing take the whole stack of filters along (BinaryStreams.h): what is
// buffered above is dropped or written out, under the locks of all filters, the outermost first and the file last.
//
// Thread safety: any thread may use any operation; one reads or writes at a time. Two stacks of filters in the same
// direction over one file must not be moved at the same time, since either lies above the other in turn.
// Failures, all of them raised as "Oxa.Core.BinaryFileStream": XIOFileNotOpen from every operation that needs an
// open file; XIOSystemCallFailure with the call and the operation, as in "System call to ::ReadFile() failed,
// unable to complete BinaryFileStream::Read", after which the position of that direction is where the system
// stands; XIOBadFilePosition, which leaves both positions as they were; XIOReadOnlyFile and XIOWriteOnlyFile.
//
//   BinaryFileStream file("run.dat", BinaryFileStream::WRITE_MODE, BinaryFileStream::eCREATE_ALWAYS);
//   BufferedBinaryOutputStream buffered(file, BufferedBinaryOutputStream::DEFAULT_BUFFER_SIZE);
//   if (!file.IsOpen()) return;
//   buffered.Write(block, size);
//   buffered.Close();
#ifndef INFRASTRUCTURE_OXACORE_IO_BINARYFILESTREAM_H
#define INFRASTRUCTURE_OXACORE_IO_BINARYFILESTREAM_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/io/BinaryStreams.h>

#include <atomic>
#include <memory>
#include <string>

namespace Oxa::Core {

namespace Platform {
class FileHandle;
}

/// See the top of this file.
class OXACORE_API BinaryFileStream : public BinaryInputStream, public BinaryOutputStream {
 public:
  // What a file is opened for: bits.
  static constexpr unsigned int READ_MODE = 1;
  static constexpr unsigned int WRITE_MODE = 2;
  static constexpr unsigned int READ_WRITE_MODE = 3;

  /// What is done about a file that is there, or isn't.
  enum EOpenBehavior : int {
    eOPEN_IF_EXISTS = 0,  ///< fails if the file is not there
    eCREATE_NEW = 1,      ///< fails if the file is there
    eCREATE_ALWAYS =
        2,            ///< creates or empties; that takes a file that nobody else has, and the right to write
    eOPEN_ALWAYS = 3  ///< opens or creates
  };

  /// Where an offset counts from. For any other value the target of a move is 0.
  enum EMoveMethod : int {
    eFROM_BEGIN = 0,
    eFROM_CURRENT = 1,  ///< from the position that is moved; for SetEndOfFile, the one for output
    eFROM_END = 2
  };

  /// Opens nothing.
  BinaryFileStream();

  /// Opens; IsOpen tells whether that went well. The name and the mode are kept in any case.
  BinaryFileStream(std::string fileName, unsigned int mode, EOpenBehavior behavior);

  /// Closes the file. What is raised on the way ends here.
  ~BinaryFileStream() override;

  /// Closes the file that is open, with all that Close does, and opens another one. Gives whether it is open; a
  /// failure leaves the stream closed, with the name and the mode it had, and raises nothing. Folders are refused.
  bool Open(std::string fileName, unsigned int mode, EOpenBehavior behavior);

  /// Has the filters above write out what they hold, and closes the file. Does nothing if it is closed.
  void Close() override;

  /// Whether a file is open.
  bool IsOpen() const;

  /// The name given to the last opening that went well.
  std::string GetFileName() const;

  /// Up to `count` bytes, no more than 4294967295; -1 at the end of the file and for a count below 1.
  long long Read(void* buffer, long long count) override;
  /// One byte, or -1 at the end of the file.
  int Read() override;

  /// All of `count` bytes, at the position for output, which is where the next ones go then.
  void Write(const void* buffer, unsigned long long count) override;
  void Write(unsigned char byte) override;

  /// Does nothing, for an open file: Write has left nothing to be done.
  void Flush() override;

  /// Moves the position for input by `count` and gives true; or to the end, if that is nearer, and gives false.
  bool Skip(unsigned long long count) override;

  /// From the position for input to the end of the file; 0 behind the end, where somebody else cut the file.
  unsigned long long AvailableBytes() override;

  // The two positions, in bytes from the beginning.
  long long GetInputPos() const;
  long long GetOutputPos() const;

  /// Where the system's pointer stands, which is one of the two positions or neither; -1 if the system can't tell.
  long long GetCurrentPos();

  /// -1 if the system can't tell.
  long long GetFileSize();

  /// Moves the position for input, and gives the new one. A move to the same place does nothing; any other, a
  /// refused one too, drops what is buffered above. Raises XIOBadFilePosition for a place before the beginning or
  /// behind the end.
  long long SetInputPos(long long offset, EMoveMethod method);

  /// Moves the position for output, and gives the new one. Before anything else the filters above write out what
  /// they hold, which counts for the size and the current position. Raises XIOBadFilePosition for a place before the
  /// beginning or behind the end, so that no write leaves a hole.
  long long SetOutputPos(long long offset, EMoveMethod method);

  /// Shortens the file to the place that is given; positions behind it are pulled back to it. What is buffered
  /// above is written out first, and dropped on the side of input. Raises XIOBadFilePosition for a place before the
  /// beginning or behind the end: a file isn't lengthened.
  void SetEndOfFile(long long offset, EMoveMethod method);

  /// Both add the one lock of this stream.
  void AcquireReadLocks(LockSet& locks) override;
  void AcquireWriteLocks(LockSet& locks) override;

 protected:
  /// What Close does.
  void CloseFile();

  /// Moves the system's pointer, and gives whether that went well; where it stands then is known in any case.
  bool SetFilePos(const long long& position, EMoveMethod method);

 private:
  bool RefuseClosed() const;
  bool RefuseToRead() const;
  bool RefuseToWrite() const;
  void RaiseClosed() const;
  const char* Failure(const char* call) const;
  void RaiseFailure(const char* failure, const char* operation) const;
  bool OpenFile(const std::string& fileName, unsigned int mode, EOpenBehavior behavior);
  bool StandAt(long long position);
  void StandWhereTheSystemDoes(long long& position);
  const char* TryToRead(void* buffer, long long count, long long& result);
  const char* TryToWrite(const void* buffer, unsigned long long count);
  const char* TryToTellSize(long long& size) const;
  const char* TryToTellInput(long long& position, long long& size) const;
  template <class Aim>
  long long MoveInput(const Aim& aim, const char* operation);
  long long Move(long long& position, long long target, long long size, LockSet& locks);
  const char* TryToCut(long long target);

  std::string m_fileName;
  std::atomic<unsigned int> m_mode;  // written under m_mutex, as m_isOpen
  std::atomic<bool> m_isOpen;
  Mutex m_mutex;           // guards everything here; behind the locks of all filters above
  long long m_currentPos;  // where the system's pointer stands
  long long m_inputPos;
  long long m_outputPos;
  std::unique_ptr<Platform::FileHandle> m_hFile;  // never null
};

}  // namespace Oxa::Core

#endif

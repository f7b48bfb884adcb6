// A text log of a host's own, in daily files that wrap and grow old.
//
// All files lie in one folder that the host has made. With the prefix "Run":
//   Run2011_03_03-0.log   the first file of 3 March 2011; -1, -2 and so on follow as each grows too large
//   Run2011_03_03.seq     the number of the file last opened that day, as text
// Behind the last number that is allowed a day's files begin anew at 0, each emptied as its turn comes. A restart on
// the same day goes on in the file that the last run wrote to. WrappingFileStreamIterator walks the files.
//
// Days are local ones. A day begins when 24 hours have passed since the last one did (see MidnightCheck).
//
// Thread safety: none; one object belongs to one thread at a time. Nothing guards against another object or process
// that writes to the same files.
// Failures: raised under s_logPath, as told at each operation. From then on nothing is written any more, until an
// Initialize succeeds; what Write was given meanwhile is gone. Trouble that isn't worth that is logged there as an
// alarm.
//
//   WrappingFileStream log;
//   log.Initialize("/var/log/acme", 30, 10, 1000000, "Run");  // 30 days, 10 files a day, 1 MB each
//   log.Write("channel 3 is back\n");
#ifndef INFRASTRUCTURE_OXACORE_WRAPPINGFILESTREAM_H
#define INFRASTRUCTURE_OXACORE_WRAPPINGFILESTREAM_H

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/Time.h>

#include <boost/shared_ptr.hpp>
#include <fstream>
#include <string>
#include <vector>

namespace Oxa::Core {

class Logger;

/// See the top of this file.
class OXACORE_API WrappingFileStream {
 public:
/// Declares one of the errors that end the writing.
#define OXA_DECLARE_STREAM_ERROR(Class)                            \
  class OXACORE_API Class : public ErrorClass<Class, LogicError> { \
   public:                                                         \
    /** `path` is the one in the text. */                          \
    explicit Class(const std::string& path);                       \
    Class(const Class&) = default;                                 \
    Class& operator=(const Class&) = default;                      \
    ~Class() override;                                             \
  }

  OXA_DECLARE_STREAM_ERROR(Error_CreateFailed);     ///< "Error opening/creating wrapping stream file <%1%>"
  OXA_DECLARE_STREAM_ERROR(Error_CreateSeqFailed);  ///< "Error opening/creating stream sequence file <%1%>"
  OXA_DECLARE_STREAM_ERROR(Error_DirecoryParseFailed);  ///< "Error reading wrapping stream directory <%1%>"
  OXA_DECLARE_STREAM_ERROR(Error_FolderDoesNotExist);   ///< "The stream folder <%1%> does not exist"
  OXA_DECLARE_STREAM_ERROR(Error_IllegalFolderSyntax);  ///< "Stream folder <%1%> is not a valid path"
  OXA_DECLARE_STREAM_ERROR(Error_WriteFailed);          ///< "Failed writing wrapping stream file <%1%>"

#undef OXA_DECLARE_STREAM_ERROR

  /// "OxaCore.WrappingFileStream": the logger that complaints go to, and the name that errors are raised under.
  static const std::string& s_logPath;

  /// Writes nothing until Initialize has worked. Raises what LogManager::GetLogger does.
  WrappingFileStream();
  WrappingFileStream(const WrappingFileStream&) = delete;
  WrappingFileStream& operator=(const WrappingFileStream&) = delete;

  /// Closes the files. Tells of no failure.
  virtual ~WrappingFileStream();

  /// Opens the file of today that was written to last, and appends to it; without one, number 0.
  ///   folder          has to be there; a separator at its end is optional
  ///   maxAgeDays      files of that age in days, and older ones, are deleted when a day begins; -1 keeps all. The
  ///                   names of what is deleted begin with the year, so that with a prefix nothing ever is (but for
  ///                   prefixes that read as a part of the year, such as blanks), and nothing from before the start
  ///                   of last year is.
  ///   maxFilesPerDay  numbers go from 0 to one less; -1 for no limit. What is below 1 otherwise counts as 1. Files
  ///                   of higher numbers are deleted along with the old ones.
  ///   maxFileSize     in bytes. The text after the one that takes a file above it begins the next file. -1 for no
  ///                   limit.
  ///   prefix          what all names begin with; may be empty
  /// Once it works it may be called again, with any arguments, and then deletes old files as well, but for the two
  /// that it has just opened.
  /// Raises Error_IllegalFolderSyntax (see PathName::IsValid), Error_FolderDoesNotExist, Error_CreateSeqFailed,
  /// Error_CreateFailed and Error_DirecoryParseFailed. A sequence file that holds no number counts as 0, one that
  /// can't be written is logged.
  void Initialize(const std::string& folder, int maxAgeDays, int maxFilesPerDay, int maxFileSize,
                  const std::string& prefix);

  /// Puts the bytes of `text` into the current file, as they are and with no line end added; they are the system's
  /// when this returns. Before that begins a new day as MidnightCheck does, or the next file if the current one is
  /// above its size. A step back to number 0 is logged. Does nothing before Initialize and after a failure.
  /// Raises Error_WriteFailed, Error_CreateFailed, and what MidnightCheck does. Part of a text may be written when
  /// that fails.
  void Write(const std::string& text);

  /// Begins a new day if it is time: deletes what is too old, and goes on in number 0 of the date of now, which is
  /// emptied if it is there. It is time when midnight of the day of Initialize has passed, and then each 24 hours;
  /// whatever this finds, it takes one such step. So:
  ///   - call it at least once a day, by a timer for instance, if a day may pass without a Write. After more than one
  ///     missed midnight each of the next calls catches up by one, AND EMPTIES number 0 of the same day again.
  ///   - where clocks are changed, steps come an hour off midnight from that day on, until an Initialize on a later
  ///     one. The step at the end of a day of 25 hours comes an hour before that, AND EMPTIES number 0 of that very
  ///     day.
  /// Does nothing before Initialize and after a failure. Raises Error_DirecoryParseFailed, Error_CreateSeqFailed and
  /// Error_CreateFailed.
  void MidnightCheck();

 private:
  bool SetFolder(const std::string& folder);
  bool StartDay(const Time& now);
  bool GetSequenceNumber(int& number);
  bool OpenSequenceFile();
  bool CreateFileA(int number, bool truncate);
  void SaveSequenceNumber(int number);
  bool IsFull();
  bool StartNextFile();
  void WriteText(const std::string& text);

  bool PruneExcessFiles(const Time& now);
  bool FindFiles(int year, std::vector<std::string>& names) const;
  bool IsExcess(const std::string& name, const Time& today) const;
  bool IsInUse(const std::string& name) const;
  void Complain(const char* complaint, const std::string& file) const;

  int m_iCurrentFile;
  std::fstream m_seqFile;  // of the day
  std::ofstream m_logFile;
  bool m_bError;  // not ready, or failed: Write does nothing
  Time m_nextMidnight;
  std::string m_dayName;  // prefix and date
  std::string m_fileName;
  std::string m_seqFileName;
  std::string m_prefix;
  boost::shared_ptr<Logger> m_spLogger;  // empty while there is no log manager
  std::string m_folder;                  // with a separator at its end
  int m_maxFilesPerDay;
  int m_maxFileSize;
  int m_maxAgeDays;
};

}  // namespace Oxa::Core

#endif

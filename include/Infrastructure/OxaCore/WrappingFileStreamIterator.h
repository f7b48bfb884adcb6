// Walks the files that WrappingFileStream wrote: day by day, and within a day from the oldest to the newest, also
// where the day has wrapped.
//
// Only days that have a sequence file exist for it. A stream that writes meanwhile may add a file, which is found or
// missed by chance.
//
// Thread safety: none; one object belongs to one thread at a time.
// Failures: what is missing or can't be read is passed over. Raised is only Time::OsTimeApiError, for moments that
// have no local date; see Time::Year.
//
//   class Printer : public WrappingFileStreamIterator {
//     void NextFile(std::string fileName) override { std::cout << fileName << '\n'; }
//   };
//   Printer printer;
//   printer.Initialize("/var/log/acme", "Run");
//   printer.IterateFiles();
#ifndef INFRASTRUCTURE_OXACORE_WRAPPINGFILESTREAMITERATOR_H
#define INFRASTRUCTURE_OXACORE_WRAPPINGFILESTREAMITERATOR_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/Time.h>

#include <map>
#include <string>
#include <utility>

namespace Oxa::Core {

/// See the top of this file.
class OXACORE_API WrappingFileStreamIterator {
 public:
  /// Without days; both requested times are now.
  WrappingFileStreamIterator();
  WrappingFileStreamIterator(const WrappingFileStreamIterator& other);
  WrappingFileStreamIterator& operator=(const WrappingFileStreamIterator& other);
  virtual ~WrappingFileStreamIterator();

  /// Finds all days of `prefix` in `folder` (as an empty text, the root). The requested times become 1 January 1970
  /// and 31 December 2037, whatever is found. "*" and "?" in the prefix stand for nothing but themselves.
  void Initialize(const std::string& folder, const std::string& prefix);

  /// Finds the days from `start` on in steps of one day, by the time of day of `start`, up to and with `end`. Looks
  /// for the sequence file of each by its name.
  void Initialize(const std::string& folder, const Time& start, const Time& end, const std::string& prefix);

  /// Whether there are any days.
  bool FilesExist() const;

  // As Initialize has set them.
  Time GetRequestedStartTime() const;
  Time GetRequestedEndTime() const;

  /// The first and the last day that were found; 1 January 1970 if there are none. The first form of Initialize gives
  /// days as midnights, the second one with the time of day of `start`.
  Time GetActualStartTime() const;
  Time GetActualEndTime() const;

  /// Calls NextFile for as many files of each day as there are at this moment. The walk of a day begins behind the
  /// number in its sequence file; where that can't be read, behind the number of the day before, or behind 0.
  /// What NextFile throws ends the walk and reaches the caller.
  void IterateFiles();

 protected:
  /// Receives the whole name of a log file. Does nothing here. Must not call Initialize or assign to this object.
  virtual void NextFile(std::string fileName);

 private:
  void IterateDay(const PathName& sequenceFile, const Time& day, int& number);

  std::map<std::pair<Time, std::string>, PathName> m_days;  // sequence files, by day and name
  Time m_requestedStart;
  Time m_requestedEnd;
  std::string m_prefix;
};

}  // namespace Oxa::Core

#endif

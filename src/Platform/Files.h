// Files and folders.
//
// Names are texts of bytes that end with 0, absolute or relative to the current folder of the process; "\" and
// "/" both separate their parts. A drive or a server is no more than a part of a name. Symbolic links are
// followed, except by RemoveFile, RemoveDirectory and RenameFile, which are about the links themselves.
//
// No function raises or throws (but for std::bad_alloc where that is said), takes a lock of ours or logs, and none
// is a place where the cancellation of a thread happens. Those that give an int give 0 or the system's error code;
// results are untouched when they fail, unless an operation says otherwise. Any thread may call anything, but one
// FileHandle belongs to one thread at a time.
#ifndef OXACORE_PLATFORM_FILES_H
#define OXACORE_PLATFORM_FILES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Oxa::Core::Platform {

struct FileStatus {
  bool m_bRegular = false;      ///< a plain file
  bool m_bDirectory = false;    ///< a folder; devices, pipes and the like are neither
  std::uint64_t m_ullSize = 0;  ///< in bytes; means something for plain files only
};

/// What the name stands for.
int Status(const char* name, FileStatus& status) noexcept;

/// Makes one folder, whose parent must be there. Fails if the name is taken.
int MakeDirectory(const char* name) noexcept;

/// Removes a folder that is empty.
int RemoveDirectory(const char* name) noexcept;

/// Removes a file; fails for a folder.
int RemoveFile(const char* name) noexcept;

/// Gives a file or folder another name on the same volume, in one step. A file that has the name `to` is
/// replaced.
int RenameFile(const char* from, const char* to) noexcept;

/// The same for a name `to` that must be free: if anything has it, the result is EEXIST. Nobody gets to take the
/// name in between, where the volume can see to that.
int RenameFileUnlessTaken(const char* from, const char* to) noexcept;

/// Copies the bytes of a plain file; a plain file `to` is replaced. If the copying stops half-way, what there is
/// of the copy is removed. A file can't be copied onto itself.
int CopyFile(const char* from, const char* to) noexcept;

/// Makes a name absolute, by the text alone: "." and ".." and doubled separators are resolved, and nothing has
/// to be there. A name that doesn't begin with a separator begins at the current folder; the empty name is that
/// folder. The result has "/" for all separators, and one at its end if `name` has one. Fails with ERANGE if it
/// takes more than `size` bytes with the closing 0.
int FullPath(const char* name, char* buffer, std::size_t size) noexcept;

/// Appends the names in `folder` that match `pattern` (see MatchesPattern), "." and ".." among them, sorted by
/// their bytes. No match is no failure. The names that stood in `names` keep their places.
int ListDirectory(const char* folder, const char* pattern, std::vector<std::string>& names) noexcept;

/// Whether all of `name` matches: "*" stands for any characters or none, "?" for one, and all others for
/// themselves, their case included.
bool MatchesPattern(const char* name, const char* pattern) noexcept;

/// The name with this system's separators only: for those that open files by other means than this header. Throws
/// nothing but std::bad_alloc.
std::string NameForSystem(std::string name);

/// What opening does where the file is there, and where it is not.
enum class EDisposition {
  eOPEN_EXISTING,  ///< a missing file is a failure: ENOENT
  eCREATE_NEW,     ///< a file that is there is one: EEXIST
  eCREATE_ALWAYS,  ///< made, or emptied
  eOPEN_ALWAYS     ///< opened, or made
};

struct FileAccess {
  bool m_bRead = false;
  bool m_bWrite = false;
};

/// Where a place in a file is counted from.
enum class EOrigin { eBEGIN, eCURRENT, eEND };

/// An open file; closes it at the end of its life. Programs that this process starts don't inherit it.
class FileHandle {
 public:
  /// For writing behind the end, wherever that is at the moment of each write. Made if it is missing, for all to
  /// read and write as the process allows. Takes no lock. `code` is 0, or tells why the handle isn't open.
  static FileHandle OpenForAppend(const char* name, int& code) noexcept;

  /// For writing from the beginning over what is there. Made if it is missing; not cut. Takes no lock.
  static FileHandle OpenForWriting(const char* name, int& code) noexcept;

  /// The same for a file that must not be there yet: if it is, `code` is EEXIST, and nobody else gets to make
  /// it in between.
  static FileHandle CreateForWriting(const char* name, int& code) noexcept;

  /// For reading from the beginning. Takes no lock. Refuses folders.
  static FileHandle OpenForReading(const char* name, int& code) noexcept;

  /// For what `access` says, from the beginning, beside others that open the same file this way: one that writes
  /// has the file for itself and those that read have it together, so that who wants to write fails with
  /// EWOULDBLOCK while anybody has it; but who only reads comes in beside one that writes already. That holds
  /// between handles of this process as between processes, for plain files only, and for those who ask: the other
  /// ways to open a file neither heed nor disturb it. It ends when the process that opened the handle closes it;
  /// a forked child that closes its copy takes nothing away. Where that process ends without closing, it ends with
  /// the last of its children that has a copy.
  ///
  /// Emptying takes the right to write, also for who then only reads, and happens when nobody else has the file.
  /// Missing files are made as by OpenForAppend. Refuses folders.
  static FileHandle OpenShared(const char* name, const FileAccess& access, EDisposition disposition,
                               int& code) noexcept;

  FileHandle() noexcept = default;
  FileHandle(FileHandle&& other) noexcept;
  FileHandle& operator=(FileHandle&& other) noexcept;
  ~FileHandle();

  bool IsOpen() const noexcept { return m_iFile >= 0; }

  /// The handle is not open any more, whatever the result. Nothing happens if it isn't open.
  int Close() noexcept;

  /// One call of the system, made again only if a signal cut in before anything was written. `written` is told
  /// in any case, and may be less than `size`. A write beyond what the process or its user may have comes back
  /// as a failure, never as a signal; see FileLimitGuard.
  int Write(const void* data, std::size_t size, std::size_t& written) noexcept;

  /// Up to `size` bytes; 0 are read at the end of the file. `read` is told in any case.
  int Read(void* data, std::size_t size, std::size_t& read) noexcept;

  /// Sets the place of the next Read or Write, counted from the beginning. It may lie behind the end.
  int Seek(std::uint64_t position) noexcept;

  /// Moves the place by `offset` from `origin`, and tells where that is.
  int Move(std::int64_t offset, EOrigin origin, std::uint64_t& position) noexcept;

  /// Tells the place of the next Read or Write.
  int Position(std::uint64_t& position) const noexcept;

  /// Sets it behind the end, and tells where that is: the length of the file, for half the price of Size. A look
  /// at the status makes the system give the next write a time stamp of its own as well, which costs more still.
  int SeekToEnd(std::uint64_t& position) noexcept;

  int Size(std::uint64_t& size) const noexcept;

  /// Makes sure that there is room for a file of `size` bytes, which is above 0, as far as the system can tell: where
  /// files can't be given room in advance, only the limit for the size of files is looked at. Neither the length of the
  /// file nor the place of the next Write changes. Room that isn't used is given back by Truncate.
  int Reserve(std::uint64_t size) noexcept;

  /// Cuts the file, or fills it up with zeros. The place of the next Read or Write stays.
  int Truncate(std::uint64_t size) noexcept;

 private:
  static FileHandle Open(const char* name, int flags, int& code) noexcept;
  int TakeWhatOpeningPromised(const FileAccess& access, EDisposition disposition) noexcept;
  int Claim(bool alone) noexcept;
  void GiveUpClaim() noexcept;

  int m_iFile = -1;
  int m_iClaimant = 0;  ///< the process that claimed the file against others; 0 if none did
};

/// While one stands on a thread, a write beyond the limit for the size of files fails there, where the system
/// would end the process otherwise. FileHandle::Write asks whether there is a limit, which costs a small call of
/// the system, and puts one up for itself where there is, which costs three more; a thread that writes all its
/// life keeps one instead. They may be nested, and die in the reverse order on the thread that made them. The signal of
/// such a write is gone with the guard, also where the thread itself keeps that signal back; one that waited there
/// before stays.
class FileLimitGuard {
 public:
  /// Whether a write on this thread could end the process: there is a limit at the moment, and no guard.
  static bool IsNeeded() noexcept;

  FileLimitGuard() noexcept;
  FileLimitGuard(const FileLimitGuard&) = delete;
  FileLimitGuard& operator=(const FileLimitGuard&) = delete;
  ~FileLimitGuard();

 private:
  bool m_bOutermost;
  bool m_bBlocked = false;
  bool m_bWaited = false;
};

}  // namespace Oxa::Core::Platform

#endif

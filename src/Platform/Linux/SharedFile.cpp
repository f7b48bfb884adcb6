// Files that several programs open, with a say in who else may.
//
// The claims are flock's: they belong to the open file, so that two handles of one process stand against each
// other as those of two processes do, and closing one handle takes nothing from another. A forked child shares
// the open file with its parent, hence what GiveUpClaim does.

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files.h"

namespace Oxa::Core::Platform {

namespace {

int AccessFlags(const FileAccess& access, EDisposition disposition) noexcept {
  if (access.m_bWrite) return access.m_bRead ? O_RDWR : O_WRONLY;
  return disposition == EDisposition::eCREATE_ALWAYS ? O_RDWR : O_RDONLY;  // emptying is writing
}

// Nothing is emptied here: it may be somebody else's still.
int DispositionFlags(EDisposition disposition) noexcept {
  switch (disposition) {
    case EDisposition::eCREATE_NEW:
      return O_CREAT | O_EXCL;
    case EDisposition::eCREATE_ALWAYS:
    case EDisposition::eOPEN_ALWAYS:
      return O_CREAT;
    case EDisposition::eOPEN_EXISTING:
      break;
  }
  return 0;
}

}  // namespace

FileHandle FileHandle::OpenShared(const char* name, const FileAccess& access, EDisposition disposition,
                                  int& code) noexcept {
  FileHandle handle = Open(name, AccessFlags(access, disposition) | DispositionFlags(disposition), code);
  if (code == 0) code = handle.TakeWhatOpeningPromised(access, disposition);
  if (code != 0) handle.Close();
  return handle;
}

int FileHandle::TakeWhatOpeningPromised(const FileAccess& access, EDisposition disposition) noexcept {
  struct stat facts;
  if (fstat(m_iFile, &facts) != 0) return errno;
  if (S_ISDIR(facts.st_mode)) return EISDIR;
  if (!S_ISREG(facts.st_mode)) return 0;
  const bool bEmpty = disposition == EDisposition::eCREATE_ALWAYS;
  int code = access.m_bWrite || bEmpty ? Claim(true) : 0;
  if (code == 0 && bEmpty) code = Truncate(0);
  if (code != 0 || access.m_bWrite) return code;
  GiveUpClaim();
  if (access.m_bRead) Claim(false);  // beside one that writes there is none to be had
  return 0;
}

int FileHandle::Claim(bool alone) noexcept {
  while (flock(m_iFile, (alone ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0) {
    if (errno != EINTR) return errno;
  }
  m_iClaimant = getpid();
  return 0;
}

// Said aloud and not left to closing: a child that was forked meanwhile, be it on its way to another program, has
// the open file too and would keep the claim. The child itself has nothing to give up.
void FileHandle::GiveUpClaim() noexcept {
  if (m_iClaimant != 0 && m_iClaimant == getpid()) flock(m_iFile, LOCK_UN);
  m_iClaimant = 0;
}

}  // namespace Oxa::Core::Platform

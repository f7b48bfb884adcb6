// Which daily files go when a day begins.
#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/WrappingFileStream.h>

#include "Log/DailyFiles.h"

namespace Oxa::Core {

namespace {

const char* const g_pDELETE_FAILED = "Error deleting file <";

constexpr int iKEEP_ALL = -1;

}  // namespace

bool WrappingFileStream::PruneExcessFiles(const Time& now) {
  if (m_bError || m_maxAgeDays == iKEEP_ALL) return true;
  const DailyDate today = DailyDateOf(now);
  std::vector<std::string> names;
  if (!FindFiles(today.m_iYear, names)) {
    m_bError = true;
    OXA_RAISE_ERROR(s_logPath, Error_DirecoryParseFailed(m_folder));
    return false;
  }
  PathName folder(m_folder);
  for (const std::string& name : names) {
    if (!IsExcess(name, MidnightOf(today)) || IsInUse(name)) continue;
    if (!folder.Delete(name)) Complain(g_pDELETE_FAILED, name);
  }
  return true;
}

// Of `year` and the one before.
bool WrappingFileStream::FindFiles(int year, std::vector<std::string>& names) const {
  PathName folder(m_folder);
  for (const char* const extension : {".log", ".seq"}) {
    for (const int of : {year, year - 1}) {
      if (!folder.ReadDirectory(names, m_prefix + std::to_string(of) + "_*" + extension)) return false;
    }
  }
  return true;
}

// Names with a prefix aren't read, and so never are excess; those of others, which a prefix with "*" in it finds too,
// are none of ours.
bool WrappingFileStream::IsExcess(const std::string& name, const Time& today) const {
  if (name.compare(0, m_prefix.size(), m_prefix) != 0) return false;
  DailyDate date;
  int number = m_maxFilesPerDay - 1;
  if (!ReadDailyFileName(name, date, number)) return false;
  const double age = (today - MidnightOf(date)).GetElapsed(Elapse::Days);
  return age >= m_maxAgeDays || number >= m_maxFilesPerDay;
}

bool WrappingFileStream::IsInUse(const std::string& name) const {
  return m_logFile.is_open() && (m_folder + name == m_fileName || m_folder + name == m_seqFileName);
}

}  // namespace Oxa::Core

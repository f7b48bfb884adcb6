#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/WrappingFileStream.h>

#include <algorithm>
#include <limits>
#include <locale>
#include <optional>

#include "Log/DailyFiles.h"

#include "Platform/Files.h"

namespace Oxa::Core {

namespace {

const char* const g_pCREATE_FAILED = "Error opening/creating wrapping stream file <%1%>";
const char* const g_pCREATE_SEQUENCE_FAILED = "Error opening/creating stream sequence file <%1%>";
const char* const g_pFOLDER_UNREADABLE = "Error reading wrapping stream directory <%1%>";
const char* const g_pNO_FOLDER = "The stream folder <%1%> does not exist";
const char* const g_pILLEGAL_FOLDER = "Stream folder <%1%> is not a valid path";
const char* const g_pWRITE_FAILED = "Failed writing wrapping stream file <%1%>";
const char* const g_pSAVE_FAILED = "Error saving sequence file for <";
const char* const g_pWRAPPED =
    "The daily log file has wrapped because the maximum number of log files (%d) per day has been exceeded";

constexpr int iNO_LIMIT = -1;

Elapse DayLength() { return Elapse(24, Elapse::Hours); }

// From a number that is no limit to how many there are at most.
int FilesPerDay(int given) {
  return given == iNO_LIMIT ? std::numeric_limits<int>::max() : std::max(given, 1);
}

boost::shared_ptr<Logger> FindLogger(const std::string& path) {
  LogManager* const manager = LogManager::Instance();
  return manager != nullptr ? manager->GetLogger(path) : boost::shared_ptr<Logger>();
}

}  // namespace

#define OXA_DEFINE_STREAM_ERROR(Class, text)                                                          \
  WrappingFileStream::Class::Class(const std::string& path) : ErrorClass(AlertMessage(text, path)) {} \
  WrappingFileStream::Class::~Class() = default

OXA_DEFINE_STREAM_ERROR(Error_CreateFailed, g_pCREATE_FAILED);
OXA_DEFINE_STREAM_ERROR(Error_CreateSeqFailed, g_pCREATE_SEQUENCE_FAILED);
OXA_DEFINE_STREAM_ERROR(Error_DirecoryParseFailed, g_pFOLDER_UNREADABLE);
OXA_DEFINE_STREAM_ERROR(Error_FolderDoesNotExist, g_pNO_FOLDER);
OXA_DEFINE_STREAM_ERROR(Error_IllegalFolderSyntax, g_pILLEGAL_FOLDER);
OXA_DEFINE_STREAM_ERROR(Error_WriteFailed, g_pWRITE_FAILED);

#undef OXA_DEFINE_STREAM_ERROR

// A host's locale would put separators into the number of the sequence file.
WrappingFileStream::WrappingFileStream()
    : m_iCurrentFile(0),
      m_bError(true),
      m_spLogger(FindLogger(s_logPath)),
      m_maxFilesPerDay(1),
      m_maxFileSize(iNO_LIMIT),
      m_maxAgeDays(iNO_LIMIT) {
  m_seqFile.imbue(std::locale::classic());
}

WrappingFileStream::~WrappingFileStream() {
  const Platform::FileLimitGuard guard;
  if (m_logFile.is_open()) m_logFile.close();
  if (m_seqFile.is_open()) m_seqFile.close();
}

void WrappingFileStream::Initialize(const std::string& folder, int maxAgeDays, int maxFilesPerDay,
                                    int maxFileSize, const std::string& prefix) {
  const Platform::FileLimitGuard guard;
  m_maxAgeDays = maxAgeDays;
  m_maxFilesPerDay = FilesPerDay(maxFilesPerDay);
  m_maxFileSize = maxFileSize;
  m_prefix = prefix;
  const Time now;
  if (!SetFolder(folder) || !StartDay(now) || !PruneExcessFiles(now)) return;
  m_nextMidnight = MidnightOf(DailyDateOf(now)) + DayLength();
  m_bError = false;
}

bool WrappingFileStream::SetFolder(const std::string& folder) {
  PathName path(folder);
  if (!path.IsValid()) {
    m_bError = true;
    OXA_RAISE_ERROR(s_logPath, Error_IllegalFolderSyntax(folder));
    return false;
  }
  path.ForceAsDir();
  if (!path.IsDir()) {
    m_bError = true;
    OXA_RAISE_ERROR(s_logPath, Error_FolderDoesNotExist(folder));
    return false;
  }
  m_folder = static_cast<const std::string&>(path);
  return true;
}

// Goes on where the last run of this day stopped.
bool WrappingFileStream::StartDay(const Time& now) {
  m_dayName = DailyName(m_prefix, DailyDateOf(now));
  int number = 0;
  return GetSequenceNumber(number) && CreateFileA(std::min(number, m_maxFilesPerDay - 1), false);
}

void WrappingFileStream::Write(const std::string& text) {
  if (m_bError) return;
  std::optional<Platform::FileLimitGuard> guard;
  if (Platform::FileLimitGuard::IsNeeded()) guard.emplace();
  MidnightCheck();
  if (IsFull() && !StartNextFile()) return;
  if (!m_bError) WriteText(text);
}

bool WrappingFileStream::IsFull() {
  return m_maxFileSize != iNO_LIMIT && m_logFile.tellp() > std::streampos(m_maxFileSize);
}

bool WrappingFileStream::StartNextFile() {
  const int next = (m_iCurrentFile + 1) % m_maxFilesPerDay;
  if (!CreateFileA(next, true)) return false;
  if (next == 0 && m_spLogger) m_spLogger->WriteLog(eLOG_ALARM, g_pWRAPPED, m_maxFilesPerDay);
  return true;
}

void WrappingFileStream::WriteText(const std::string& text) {
  m_logFile.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
  if (m_logFile.good()) return;
  m_bError = true;
  OXA_RAISE_ERROR(s_logPath, Error_WriteFailed(m_fileName));
}

// There is one step, however many days have passed.
void WrappingFileStream::MidnightCheck() {
  const Time now;
  if (m_bError || now <= m_nextMidnight) return;
  const Platform::FileLimitGuard guard;
  m_logFile.close();
  if (!PruneExcessFiles(now)) return;
  m_dayName = DailyName(m_prefix, DailyDateOf(now));
  int unused = 0;
  if (!GetSequenceNumber(unused) || !CreateFileA(0, true)) return;
  m_nextMidnight += DayLength();
}

bool WrappingFileStream::GetSequenceNumber(int& number) {
  m_seqFileName = DailySequenceFileName(m_folder, m_dayName);
  if (!OpenSequenceFile()) {
    m_logFile.close();
    m_seqFile.close();
    m_bError = true;
    OXA_RAISE_ERROR(s_logPath, Error_CreateSeqFailed(m_seqFileName));
    return false;
  }
  m_seqFile >> number;
  return true;
}

bool WrappingFileStream::OpenSequenceFile() {
  const std::string name = Platform::NameForSystem(m_seqFileName);
  if (m_seqFile.is_open()) m_seqFile.close();
  m_seqFile.open(name, std::ios::in | std::ios::out);
  if (m_seqFile.good()) return true;
  m_seqFile.clear();
  m_seqFile.open(name, std::ios::in | std::ios::out | std::ios::trunc);
  if (m_seqFile.good()) (m_seqFile << 0).seekp(0).flush();
  return m_seqFile.good();
}

bool WrappingFileStream::CreateFileA(int number, bool truncate) {
  SaveSequenceNumber(number);
  m_iCurrentFile = number;
  if (m_logFile.is_open()) m_logFile.close();
  m_logFile.clear();
  m_fileName = DailyLogFileName(m_folder, m_dayName, number);
  m_logFile.open(Platform::NameForSystem(m_fileName),
                 truncate ? std::ios::in | std::ios::out | std::ios::trunc : std::ios::out | std::ios::app);
  if (m_logFile.good()) return true;
  m_logFile.close();
  m_bError = true;
  OXA_RAISE_ERROR(s_logPath, Error_CreateFailed(m_fileName));
  return false;
}

// The state is cleared first: a stream whose last reading failed doesn't seek.
void WrappingFileStream::SaveSequenceNumber(int number) {
  m_seqFile.clear();
  m_seqFile.seekp(0) << number << '\n' << std::flush;
  if (!m_seqFile.good()) Complain(g_pSAVE_FAILED, m_seqFileName);
}

void WrappingFileStream::Complain(const char* complaint, const std::string& file) const {
  if (m_spLogger) m_spLogger->WriteLog(eLOG_ALARM, "%s%s>", complaint, file.c_str());
}

}  // namespace Oxa::Core

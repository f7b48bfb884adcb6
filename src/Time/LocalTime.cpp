#include "Time/LocalTime.h"

#include <Infrastructure/OxaCore/Assert.h>
#include <Infrastructure/OxaCore/SystemTools.h>
#include <Infrastructure/OxaCore/Time.h>

#include <cstdint>

namespace Platform = Oxa::Core::Platform;
using Oxa::Core::Time;

namespace {

const char* const g_pLOG_NAME = "Oxa.Core.Time";
const char* const g_pAPI_FAILED = "Call to operating system time API failed with error:\n %1%";

std::string SystemText(int code) {
  return MSWindows::GetWindowsErrorMessage(static_cast<unsigned long>(code));
}

}  // namespace

Time::OsTimeApiError::OsTimeApiError(const std::string& systemText)
    : ErrorClass(AlertMessage(g_pAPI_FAILED, systemText)) {
  SetSeverity(eERROR);
}

Time::OsTimeApiError::~OsTimeApiError() = default;

TimeZoneInfo::TimeZoneInfo() {
  using DWORD = std::uint32_t;
  const DWORD dwResult = Platform::LoadZone() == 0 ? 0 : (DWORD)0xFFFFFFFF;
  OXA_ASSERT(((DWORD)0xFFFFFFFF) != dwResult);
}

WindowsFileTime::WindowsFileTime(const Platform::DateTime& utc) : m_iTicks(0) {
  const int failure = Platform::UtcToTicks(utc, m_iTicks);
  if (failure != 0) OXA_RAISE_ERROR(g_pLOG_NAME, Time::OsTimeApiError(SystemText(failure)));
}

bool WindowsFileTime::GetSystemTime(Platform::DateTime& utc) const {
  const int failure = Platform::TicksToUtc(m_iTicks, utc);
  if (failure != 0) OXA_RAISE_ERROR(g_pLOG_NAME, Time::OsTimeApiError(SystemText(failure)));
  return failure == 0;
}

bool ConvertToUTCTime(const Platform::DateTime& local, Platform::DateTime& utc) {
  const int failure = Platform::LocalToUtc(local, utc);
  if (failure != 0) OXA_RAISE_ERROR(g_pLOG_NAME, Time::OsTimeApiError(SystemText(failure)));
  return failure == 0;
}

bool GetLocalSystemTime(long long ticks, Platform::DateTime& local) {
  const int failure = Platform::TicksToLocal(ticks, local);
  if (failure != 0) OXA_RAISE_ERROR(g_pLOG_NAME, Time::OsTimeApiError(SystemText(failure)));
  return failure == 0;
}

std::string GetLocalTimeString(long long ticks) {
  std::string text = Platform::LocalTimeText(ticks);
  if (!text.empty()) return text;
  Platform::DateTime local;
  GetLocalSystemTime(ticks, local);
  const int failure = Platform::DateTimeText(local, text);
  if (failure != 0) OXA_RAISE_ERROR(g_pLOG_NAME, Time::OsTimeApiError(SystemText(failure)));
  return text;
}

#include <Infrastructure/OxaCore/Queue.h>

#include <Infrastructure/OxaCore/System.h>

#include <cstdio>
#include <iostream>

#include "Platform/Clock.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sTIME_FORMAT = "%02d:%02d:%02d - ";
const char* const sBEHIND_PROCESS = " / ";
const char* const sNEW_PEAK = "new high watermark (%u items)\n";
const char* const sHARD_LIMIT = "high watermark (%u items) reached hard limit (%u items)\n\n";

std::string TimePrefix() {
  Platform::DateTime now;
  Platform::TicksToLocal(Platform::NowTicks(), now);
  char text[48];
  std::snprintf(text, sizeof text, sTIME_FORMAT, now.m_iHour, now.m_iMinute, now.m_iSecond);
  return text;
}

std::string ProcessPrefix() {
  std::string name;
  if (const System* const system = System::Instance()) system->GetProcessName(name);
  return name.empty() ? name : name + sBEHIND_PROCESS;
}

std::string LevelText(std::uint32_t peak, std::uint32_t hardLimit) {
  char text[128];
  if (peak < hardLimit)
    std::snprintf(text, sizeof text, sNEW_PEAK, peak);
  else
    std::snprintf(text, sizeof text, sHARD_LIMIT, peak, hardLimit);
  return text;
}

}  // namespace

// A cancellation in the middle of a text would leave the stream failed for all others: it waits.
void ReportQueueWatermark(const std::string& queueName, std::uint32_t peak, std::uint32_t hardLimit) {
  const Platform::HoldCancellation hold;
  try {
    const std::ios_base::Init streams;  // queues of static objects may fill up before main and behind exit
    const std::string time = TimePrefix();
    const std::string indent(time.size(), ' ');
    std::cerr << time + ProcessPrefix() + queueName + "\n" + indent + LevelText(peak, hardLimit)
              << std::flush;
  } catch (...) {
    // The queue works on without its report.
  }
}

}  // namespace Oxa::Core

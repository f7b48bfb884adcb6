#include "Recording.h"

namespace Station {

using Oxa::Core::DataOutputStream;

const char* const sRECORDING_MARK = "OxaStation";

void WriteRecordingHead(DataOutputStream& out, const Plan& plan) {
  out << std::string(sRECORDING_MARK) << uRECORDING_VERSION
      << static_cast<unsigned int>(plan.m_series.size());
  for (const Series& series : plan.m_series) {
    out << series.m_sName << series.m_interval.GetRawTimerTicks() << series.m_tolerance.GetRawTimerTicks()
        << static_cast<unsigned int>(series.m_ulCount) << series.m_sUnit;
  }
}

void WriteSample(DataOutputStream& out, const Sample& sample) {
  out << static_cast<unsigned int>(sample.m_uSeries) << static_cast<unsigned int>(sample.m_ulNumber)
      << sample.m_lateness.GetRawTimerTicks();
}

void WriteEndMark(DataOutputStream& out, unsigned long long samples) {
  out << uEND_MARK << 0U << static_cast<long long>(samples);
}

}  // namespace Station

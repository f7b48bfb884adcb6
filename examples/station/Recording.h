// What a recording is made of: the samples of one run, as typed values in a file.
//
//   "OxaStation"           a string, so that other files are told from recordings
//   version                unsigned int, 2; in recordings of version 1 series have no unit, and are shown in
//                          microseconds
//   number of series       unsigned int, as many as a plan may hold; then of each
//     name                   string, as plans allow it
//     interval, tolerance    long long, in steps of 100 ns
//     count                  unsigned int, the samples that are wanted
//     unit                   string: the main name of the unit in which the plan gives the tolerance
//   samples, of 16 bytes each, in the order of their arrival
//     series                 unsigned int, from 0
//     number                 unsigned int, from 1; grows within a series
//     lateness               long long, in steps of 100 ns
//   end mark, 16 bytes: 4294967295, 0, and the number of samples as a long long
//
// The values have the form that DataOutputStream gives them. A recording without its end mark was cut short; all
// whole samples in it count.
#ifndef STATION_RECORDING_H
#define STATION_RECORDING_H

#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <cstddef>

#include "Plan.h"
#include "Sample.h"

namespace Station {

extern const char* const sRECORDING_MARK;
constexpr unsigned int uRECORDING_VERSION = 2;
constexpr unsigned int uVERSION_WITHOUT_UNITS = 1;
constexpr unsigned int uEND_MARK = 0xFFFFFFFF;
constexpr std::size_t uRECORD_SIZE = 16;

/// What stands in front of the samples.
void WriteRecordingHead(Oxa::Core::DataOutputStream& out, const Plan& plan);

/// uRECORD_SIZE bytes.
void WriteSample(Oxa::Core::DataOutputStream& out, const Sample& sample);
void WriteEndMark(Oxa::Core::DataOutputStream& out, unsigned long long samples);

}  // namespace Station

#endif

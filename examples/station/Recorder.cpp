#include "Recorder.h"

#include <Infrastructure/OxaCore/RaiseSite.h>
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/io/BufferedStreams.h>
#include <Infrastructure/OxaCore/io/DataStreams.h>

#include <algorithm>
#include <array>
#include <boost/make_shared.hpp>
#include <cstddef>

#include "Loggers.h"
#include "Recording.h"
#include "ShownText.h"
#include "StationAlerts.h"

namespace Station {

using Oxa::Core::BinaryFileStream;
using Oxa::Core::BinaryPipe;
using Oxa::Core::BufferedBinaryOutputStream;
using Oxa::Core::DataOutputStream;
using Oxa::Core::Elapse;
using Oxa::Core::Error;
using Oxa::Core::IMutex;
using Oxa::Core::IOError;
using Oxa::Core::TaskDirective;
using Oxa::Core::Thread;

namespace {

const char* const sTHREAD = "Recorder";
const char* const sPLACE = "Recording";
const char* const sNOT_MADE = "the file can't be made, or somebody else has it open";
const char* const sNO_THREAD = "the system gives it no thread";
const char* const sFAILED = "its thread failed";
const char* const sMISSING = "not all samples found their way into it";

constexpr std::size_t uBLOCK = 512 * uRECORD_SIZE;
constexpr unsigned long long ullFILE_BUFFER = 8 * uBLOCK;

// From the end of a thread on nobody takes anything out of its pipe.
struct ClosingPipe {
  BinaryPipe& m_pipe;
  ~ClosingPipe() { m_pipe.Close(); }
};

std::string WhyEnded(Thread& thread) {
  if (!thread.IsState(Thread::eTHREAD_ERROR)) return std::string();
  const boost::shared_ptr<Error> spError = thread.GetLastError();
  return spError ? spError->what() : sFAILED;
}

}  // namespace

int RecorderTask::Run(TaskDirective&) {
  Oxa::Core::System::Instance()->SetCurrentThreadName(sTHREAD);
  const ClosingPipe closing{m_pipe};
  KeepAll();
  return 0;
}

// One sample is worth waiting for; those that have come meanwhile are taken with it. To wake this thread costs the
// one that measures more than the sample itself, so it rests before it waits again: of samples that come thick and
// fast only one in a millisecond has to.
void RecorderTask::KeepAll() {
  BufferedBinaryOutputStream buffer(m_file, ullFILE_BUFFER);
  std::array<unsigned char, uBLOCK> block;
  unsigned long long kept = 0;
  while (m_pipe.Read(block.data(), uRECORD_SIZE) == static_cast<long long>(uRECORD_SIZE)) {
    const auto more = std::min<unsigned long long>(m_pipe.AvailableBytes(), uBLOCK - uRECORD_SIZE);
    m_pipe.Read(block.data() + uRECORD_SIZE, static_cast<long long>(more));
    buffer.Write(block.data(), uRECORD_SIZE + more);
    kept += 1 + more / uRECORD_SIZE;
    if (m_pipe.AvailableBytes() != 0) continue;
    buffer.Flush();
    m_ullFlushed = kept;
    OxaSleep(Elapse(1, Elapse::MilliSeconds), false);
  }
  DataOutputStream values(buffer);
  WriteEndMark(values, kept);
  values.Flush();
  m_ullFlushed = kept;
}

Recorder::Recorder(const std::string& file, const Plan& plan)
    : m_pipe(ullRECORDER_RING, IMutex::sINFINITE, Elapse(0)) {
  for (const Series& series : plan.m_series) {
    m_senders.push_back(std::make_unique<SampleSender>(m_pipe, series.m_sName));
  }
  try {
    Open(file, plan);
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_INFO(sPLACE, Shown(file)))
}

Recorder::~Recorder() { Finish(); }

void Recorder::Open(const std::string& file, const Plan& plan) {
  if (!m_file.Open(file, BinaryFileStream::WRITE_MODE, BinaryFileStream::eCREATE_ALWAYS))
    return OXA_RAISE_ERROR(sRECORDER_LOGGER, RecordingImpossible(file, sNOT_MADE));
  WriteHead(file, plan);
  StartThread(file);
}

void Recorder::WriteHead(const std::string& file, const Plan& plan) {
  try {
    BufferedBinaryOutputStream buffer(m_file, ullFILE_BUFFER);
    DataOutputStream head(buffer);
    WriteRecordingHead(head, plan);
    head.Flush();
  } catch (const IOError& error) {
    OXA_RAISE_ERROR(sRECORDER_LOGGER, RecordingImpossible(file, error.what()));
  }
}

void Recorder::StartThread(const std::string& file) {
  const auto spTask = boost::make_shared<RecorderTask>(m_pipe, m_file);
  const boost::shared_ptr<Thread> spThread = Thread::Create(sTHREAD);
  if (!spThread->Start(spTask))
    return OXA_RAISE_ERROR(sRECORDER_LOGGER, RecordingImpossible(file, sNO_THREAD));
  m_spTask = spTask;
  m_spThread = spThread;
}

void Recorder::Keep(const Sample& sample) {
  if (m_spTask && !m_senders[sample.m_uSeries]->Send(sample)) m_bMissing = true;
}

std::string Recorder::Finish() {
  if (!m_spThread) return std::string();
  m_pipe.Close();
  m_spThread->WaitForState(Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR);
  std::string failure = WhyEnded(*m_spThread);
  m_spThread.reset();
  m_file.Close();
  if (!failure.empty()) return failure;
  return m_bMissing ? sMISSING : std::string();
}

}  // namespace Station

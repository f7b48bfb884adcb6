// Keeps the samples of a run in a file, on a thread of its own.
//
//   Keep, on the threads that measure --typed values--> pipe --> thread "Recorder" --blocks--> buffer --> file
#ifndef STATION_RECORDER_H
#define STATION_RECORDER_H

#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/io/BinaryFileStream.h>
#include <Infrastructure/OxaCore/io/BinaryPipe.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <memory>
#include <string>
#include <vector>

#include "Plan.h"
#include "Sample.h"
#include "SampleSender.h"

namespace Station {

/// The task of the thread: takes whole samples out of the pipe and writes them to the file.
///
/// Whatever the pipe holds is flushed before it waits for more, so that only the samples of a millisecond or two are
/// lost when the process is killed.
class RecorderTask : public Oxa::Core::Task {
 public:
  /// Both references must outlive the task.
  RecorderTask(Oxa::Core::BinaryPipe& pipe, Oxa::Core::BinaryFileStream& file) : m_pipe(pipe), m_file(file) {}

  /// Until the pipe is closed and empty; then it writes the end mark. Gives 0. What the file raises leaves it, and
  /// becomes the last error of the thread; the pipe is closed then.
  int Run(Oxa::Core::TaskDirective& directive) override;

  /// Samples that the file holds for certain: flushed. Any thread may ask.
  unsigned long long GetFlushed() const { return m_ullFlushed; }

 private:
  void KeepAll();

  Oxa::Core::BinaryPipe& m_pipe;
  Oxa::Core::BinaryFileStream& m_file;
  std::atomic<unsigned long long> m_ullFlushed{0};
};

/// Keep and GetFlushed are for any thread, though for one at a time per series; all else is for the thread that
/// made it.
class Recorder {
 public:
  /// Makes or empties the file, writes the head, and starts the thread. Raises RecordingImpossible, after which
  /// Keep does nothing.
  Recorder(const std::string& file, const Plan& plan);
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;
  ~Recorder();

  /// Hands the sample, of a series of the plan, to the thread; never waits. See SampleSender for what there is no
  /// room for.
  void Keep(const Sample& sample);

  /// Ends the recording, and waits for what is still on its way. Gives why it isn't whole; empty if it is, and from
  /// the second call on.
  std::string Finish();

  unsigned long long GetFlushed() const { return m_spTask ? m_spTask->GetFlushed() : 0; }

 private:
  void Open(const std::string& file, const Plan& plan);
  void WriteHead(const std::string& file, const Plan& plan);
  void StartThread(const std::string& file);

  Oxa::Core::BinaryPipe m_pipe;
  Oxa::Core::BinaryFileStream m_file;
  std::vector<std::unique_ptr<SampleSender>> m_senders;  // one per series
  boost::shared_ptr<RecorderTask> m_spTask;              // none: nothing is recorded
  boost::shared_ptr<Oxa::Core::Thread> m_spThread;       // none: not at work
  std::atomic<bool> m_bMissing{false};                   // a sample found no room
};

}  // namespace Station

#endif

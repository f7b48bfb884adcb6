// The process of a module, as the runner sees it.
#ifndef OXATEST_PROCESS_H
#define OXATEST_PROCESS_H

#include <string>
#include <vector>

#include <sys/types.h>

namespace OxaTest {

/// Another process of this program, with what it starts: none of that outlives this object, whether it has stayed in
/// the group or not. The process ends with the runner, too, if that is killed. CatchSignals and AdoptOrphans come
/// first.
class Process {
 public:
  /// Starts it with the number of its end of the pipe behind "--child-pipe=", and `arguments`. `output` becomes its
  /// standard output and error.
  Process(std::vector<std::string> arguments, int output);
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;
  ~Process();

  /// Empty if it runs; else why it couldn't be started.
  const std::string& Complaint() const { return m_sComplaint; }

  /// The end of the pipe to read from; it doesn't block. -1 when that has been read to its end.
  int Pipe() const { return m_iPipe; }

  /// Appends what is in the pipe now, or a megabyte of it. Whether the pipe was emptied.
  bool Read(std::string& bytes);

  /// Whether it has ended. It isn't waited for.
  bool HasEnded() const;

  /// Asks the whole group to end.
  void Ask() const;
  /// Ends the whole group.
  void Kill() const;

  /// Ends what is left of the group and of what has left it, waits and gives the status that waitpid tells. Only once.
  int Collect();

 private:
  void Start(const std::vector<std::string>& arguments, int output, int pipe);

  pid_t m_id = -1;
  int m_iPipe = -1;
  std::string m_sComplaint;
};

/// "ended by signal 11 (Segmentation fault)" or "ended with exit status 3".
std::string TextOfStatus(int status);

}  // namespace OxaTest

#endif

#include "Runner.h"

#include "Message.h"
#include "Process.h"
#include "Session.h"
#include "Signals.h"
#include "Workplace.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include <poll.h>

namespace OxaTest {

namespace {

const char* const sNO_WORKPLACE = "no folder can be made for its log and output: ";
const char* const sNO_PROCESS = "no process can be started for it: ";
const char* const sINTERRUPTED = "interrupted";
const char* const sNONSENSE = "ended since a test wrote into what tells the runner how it goes";

using Clock = std::chrono::steady_clock;

const std::chrono::seconds GRACE(2);  // between asking and killing
const int iTICK = 100;                // milliseconds between looks at the size of the output

std::string TookTooLong(double seconds) {
  char text[64];
  std::snprintf(text, sizeof text, "ended since it took more than %g s", seconds);
  return text;
}

int MillisecondsUntil(Clock::time_point moment) {
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(moment - Clock::now()).count();
  return left < 0 ? 0 : left > 1000000 ? 1000000 : static_cast<int>(left) + 1;
}

// One child from its first message to its end.
class Watch {
 public:
  Watch(Process& process, Session& session, Workplace& workplace, double timeout)
      : m_process(process), m_session(session), m_workplace(workplace), m_dTimeout(timeout) {
    Extend();
  }

  // Gives why the process came to its end.
  Session::EEnding Follow() {
    while (!m_process.HasEnded()) {
      if (InterruptingSignal() != 0) return Stop(Session::eWAS_INTERRUPTED);
      if (m_dTimeout > 0 && Clock::now() >= m_limit) return Stop(Session::eTOOK_TOO_LONG);
      if (m_bDamaged) return Stop(Session::eTOLD_NONSENSE);
      Wait(m_dTimeout > 0 ? MillisecondsUntil(m_limit) : iTICK);
      TakeMessages();
    }
    return Session::eBY_ITSELF;
  }

  // What it told before its end. False if that can't be understood.
  bool TakeRest() {
    while (m_process.Pipe() >= 0 && TakeMessages()) continue;
    return !m_bDamaged;
  }

 private:
  // Each step has the whole time. More than some years is no limit.
  void Extend() {
    const double seconds = std::fmin(m_dTimeout, 1e9);
    m_limit =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  }

  void Wait(int milliseconds) {
    pollfd handles[] = {{WakeHandle(), POLLIN, 0}, {m_process.Pipe(), POLLIN, 0}};
    ::poll(handles, 2, std::min(milliseconds, iTICK));
    ClearWake();
  }

  // Whether anything came. What is given back of the output belongs to no message that is still to be taken: the size
  // is older than the look that found no more of them.
  bool TakeMessages() {
    const std::uint64_t size = m_workplace.OutputSize();
    const std::string::size_type before = m_sBytes.size();
    const bool emptied = m_process.Read(m_sBytes);
    const bool any = m_sBytes.size() > before;
    DecodeAll();
    if (emptied) m_workplace.GiveBack(size);
    return any;
  }

  // An announcement is no step: a test could make one for ever.
  void DecodeAll() {
    std::string::size_type at = 0;
    Message message;
    EDecoded decoded = eNOT_WHOLE;
    while (!m_bDamaged && (decoded = Decode(m_sBytes, at, message)) == eMESSAGE) {
      m_session.Take(message);
      if (message.m_eKind != Message::eANNOUNCED) Extend();
    }
    m_bDamaged = m_bDamaged || decoded == eDAMAGED;
    m_sBytes.erase(0, m_bDamaged ? m_sBytes.size() : at);
  }

  Session::EEnding Stop(Session::EEnding ending) {
    m_process.Ask();
    const Clock::time_point end = Clock::now() + GRACE;
    while (!m_process.HasEnded() && Clock::now() < end) {
      Wait(MillisecondsUntil(end));
      TakeMessages();
    }
    m_process.Kill();
    return ending;
  }

  Process& m_process;
  Session& m_session;
  Workplace& m_workplace;
  const double m_dTimeout;
  Clock::time_point m_limit;
  std::string m_sBytes;  // of the message that hasn't come whole
  bool m_bDamaged = false;
};

std::vector<std::string> ArgumentsFor(const std::string& module, const Options& options,
                                      const std::string& folder) {
  std::vector<std::string> arguments = options.m_switches;
  arguments.push_back("--child-folder=" + (options.m_sReports.empty() ? folder : options.m_sReports));
  arguments.emplace_back("--");
  arguments.push_back(module);
  return arguments;
}

// The message that tells of the last test may come when a process has been asked to end: it counts.
void RunProcess(Process& process, Session& session, Workplace& workplace, double timeout) {
  Watch watch(process, session, workplace, timeout);
  Session::EEnding ending = watch.Follow();
  const int status = process.Collect();
  if (!watch.TakeRest() && ending == Session::eBY_ITSELF) ending = Session::eTOLD_NONSENSE;
  const std::string how = ending == Session::eTOOK_TOO_LONG     ? TookTooLong(timeout)
                          : ending == Session::eTOLD_NONSENSE   ? sNONSENSE
                          : ending == Session::eWAS_INTERRUPTED ? sINTERRUPTED
                                                                : TextOfStatus(status);
  session.End(ending, status == 0, how);
}

}  // namespace

ModuleRecord RunModule(const std::string& module, const Options& options, Display& display) {
  ModuleRecord record;
  record.m_sModule = module;
  record.m_begin = std::time(nullptr);
  Workplace workplace;
  if (!workplace.Complaint().empty()) {
    record.m_sTrouble = sNO_WORKPLACE + workplace.Complaint();
    display.ModuleEnds(record);
    return record;
  }
  Process process(ArgumentsFor(module, options, workplace.Folder()), workplace.Output());
  if (!process.Complaint().empty()) {
    record.m_sTrouble = sNO_PROCESS + process.Complaint();
    display.ModuleEnds(record);
    return record;
  }
  Session session(record, workplace, display, options);
  RunProcess(process, session, workplace, options.m_dTimeout);
  return record;
}

}  // namespace OxaTest

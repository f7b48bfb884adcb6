// Threads that do everything at once to one default log service: nothing is lost, called after its time, or left
// standing in a circle. To be run under the sanitizers.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Log/DefaultLogService.h"
#include "Log/LogFakes.h"
#include "Log/LogFolder.h"
#include "Support/Eventually.h"

namespace {

using namespace Oxa::Core;
using LogTests::Entry;

constexpr int iTHREADS = 8;
#ifdef OXACORE_SOAK
constexpr int iROUNDS = 600000;
#else
constexpr int iROUNDS = 15000;
#endif

template <class Work>
void OnAllThreads(const Work& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < iTHREADS; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
}

class CountingHandler : public IOxaLogHandler {
 public:
  void OnLoggersChanged() override { ++m_iChanges; }
  void HandleLogEntry(const OxaLogEntry&) override { ++m_iEntries; }
  std::atomic<long> m_iChanges{0};
  std::atomic<long> m_iEntries{0};
};

// Asks back from inside its calls, fails now and then, and knows when it is dead.
class RestlessHandler : public IOxaLogHandler {
 public:
  RestlessHandler(DefaultLogService& service, unsigned int seed) : m_service(service), m_uSteps(seed) {}
  ~RestlessHandler() override { m_bAlive = false; }

  void OnLoggersChanged() override {
    EXPECT_TRUE(m_bAlive);
    m_service.Exists("Stress.Path");
    if (++m_uSteps % 61 == 0) throw std::runtime_error("restless");
  }
  void HandleLogEntry(const OxaLogEntry&) override {
    EXPECT_TRUE(m_bAlive);
    const unsigned int step = ++m_uSteps;
    if (step % 3 == 0) m_service.GetSeverityFilters("Stress.Path");
    if (step % 7 == 0) m_service.GetNumHandlers();
    if (step % 41 == 0) throw 42;
    if (step % 29 == 0) m_service.UnregisterHandler(this);
  }

 private:
  DefaultLogService& m_service;
  std::atomic<unsigned int> m_uSteps;
  std::atomic<bool> m_bAlive{true};
};

// A thread's own share of things, which it registers and takes back at random.
class Worker {
 public:
  Worker(DefaultLogService& service, int number)
      : m_service(service), m_random(static_cast<unsigned int>(number) + 1) {
    for (int i = 0; i < 4; ++i)
      m_loggers.emplace_back("Stress." + std::to_string(number) + "." + std::to_string(i));
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  ~Worker() {
    DropHandler();
    for (LogFakes::FakeLogger& logger : m_loggers) m_service.UnregisterLogger(&logger);
  }

  int Entries() const { return m_iEntries; }

  void Step() {
    switch (m_random() % 10) {
      case 0:
        return m_service.RegisterLogger(&AnyLogger());
      case 1:
        return m_service.UnregisterLogger(&AnyLogger());
      case 2:
        return m_service.SetSeverityFilters(AnyLogger().GetPath(), m_random() & 0x7E);
      case 3:
        return m_service.SetSeverityFilters("Stress.New." + std::to_string(m_random() % 20000),
                                            m_random() & 0x7E);
      case 4:
        return TakeHandler();
      case 5:
        return DropHandler();
      case 6:
        return m_service.EnumLoggers("Stress", m_names);
      default:
        ++m_iEntries;
        return m_service.WriteLogEntry(Entry("stress"));
    }
  }

 private:
  LogFakes::FakeLogger& AnyLogger() { return m_loggers[m_random() % m_loggers.size()]; }

  void TakeHandler() {
    if (!m_spHandler)
      m_spHandler =
          std::make_unique<RestlessHandler>(m_service, static_cast<unsigned int>(m_random() % 1000));
    m_service.RegisterHandler(m_spHandler.get());
  }

  // It is destroyed at once: whoever called it still would be seen.
  void DropHandler() {
    if (!m_spHandler) return;
    m_service.UnregisterHandler(m_spHandler.get());
    m_spHandler.reset();
  }

  DefaultLogService& m_service;
  std::mt19937 m_random;
  std::vector<LogFakes::FakeLogger> m_loggers;
  std::unique_ptr<RestlessHandler> m_spHandler;
  std::list<std::string> m_names;
  int m_iEntries = 0;
};

TEST(DefaultLogServiceStress, EverythingAtOnceReachesTheHandlerThatStays) {
  const LogTests::LogFolder folder;
  DefaultLogService service;
  service.GetSeverityFilters("Stress.Path");
  CountingHandler staying;
  service.RegisterHandler(&staying);
  std::atomic<long> entries{0};
  OnAllThreads([&](int number) {
    Worker worker(service, number);
    for (int i = 0; i < iROUNDS; ++i) worker.Step();
    entries += worker.Entries();
  });
  EXPECT_EQ(entries, staying.m_iEntries);
  EXPECT_GT(staying.m_iChanges, 0);
  EXPECT_EQ(std::vector<IOxaLogHandler*>{&staying}, service.GetHandlers());
  EXPECT_FALSE(service.HasRetained());
  EXPECT_EQ(std::string::npos, folder.Entries().find("stress"));
}

// Keeps the numbers that it was given, and throws at some of them: those count as not taken.
class PickyHandler : public IOxaLogHandler {
 public:
  void OnLoggersChanged() override {}
  void HandleLogEntry(const OxaLogEntry& entry) override {
    if (entry.m_sMessage.back() == '7') throw std::runtime_error("a seven");
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_taken.insert(entry.m_sMessage);
  }
  std::mutex m_mutex;
  std::set<std::string> m_taken;
};

bool IsInFile(const std::string& file, const std::string& message) {
  return file.find("<Message>" + message + "</Message>") != std::string::npos;
}

TEST(DefaultLogServiceStress, EveryEntryIsTakenByAHandlerOrStandsInTheFile) {
  const LogTests::LogFolder folder;
  DefaultLogService service;
  PickyHandler picky;
  OnAllThreads([&](int number) {
    for (int i = 0; i < 250; ++i) {
      if (number == 0) service.RegisterHandler(&picky);
      if (number == 1) service.UnregisterHandler(&picky);
      service.WriteLogEntry(Entry("n" + std::to_string(number * 1000 + i)));
    }
  });
  service.UnregisterHandler(&picky);
  const std::string file = folder.Entries();
  for (int number = 0; number < iTHREADS; ++number) {
    for (int i = 0; i < 250; ++i) {
      const std::string message = "n" + std::to_string(number * 1000 + i);
      EXPECT_NE(picky.m_taken.count(message) != 0, IsInFile(file, message)) << message;
    }
  }
}

class FailingHandler : public IOxaLogHandler {
 public:
  void OnLoggersChanged() override {}
  void HandleLogEntry(const OxaLogEntry&) override { throw std::runtime_error("no"); }
};

TEST(DefaultLogServiceStress, HandlerThatThrowsIsDroppedThoughEveryThreadLogs) {
  const LogTests::LogFolder folder;
  DefaultLogService service;
  CountingHandler staying;
  service.RegisterHandler(&staying);
  std::atomic<bool> stop{false};
  std::thread judge([&] {
    for (int i = 0; i < 20; ++i) {
      FailingHandler thrower;
      service.RegisterHandler(&thrower);
      EXPECT_TRUE(TestSupport::Eventually([&] { return service.GetHandlers().size() == 1; }));
      service.UnregisterHandler(&thrower);
    }
    stop = true;
  });
  OnAllThreads([&](int) {
    while (!stop) service.WriteLogEntry(Entry("on and on"));
  });
  judge.join();
  EXPECT_EQ(1, service.GetNumHandlers());
}

// Takes entries on any thread, and throws now and then instead.
class Taker : public LogFakes::FakeService {
 public:
  void WriteLogEntry(const OxaLogEntry& entry) override {
    if (++m_uCalls % 17 == 0) throw std::runtime_error("now and then");
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_taken.insert(entry.m_sMessage);
  }
  std::atomic<unsigned int> m_uCalls{0};
  std::mutex m_mutex;
  std::multiset<std::string> m_taken;
};

// What the taker doesn't take comes with the next flush.
void TryToFlush(DefaultLogService& service, Taker& taker) {
  try {
    service.FlushRetained(taker);
  } catch (const std::runtime_error&) {
  }
}

TEST(DefaultLogServiceStress, FlushesAmongWritersLoseAndDoubleNothing) {
  const LogTests::LogFolder folder;
  DefaultLogService service;
  Taker sink;
  OnAllThreads([&](int number) {
    for (int i = 0; i < 120; ++i) {
      service.WriteLogEntry(Entry(std::to_string(number * 1000 + i)));
      if (i % 8 == number) TryToFlush(service, sink);
    }
  });
  while (service.HasRetained()) TryToFlush(service, sink);
  EXPECT_EQ(static_cast<std::size_t>(iTHREADS * 120), sink.m_taken.size());
  EXPECT_EQ(sink.m_taken.size(), std::set<std::string>(sink.m_taken.begin(), sink.m_taken.end()).size());
}

}  // namespace

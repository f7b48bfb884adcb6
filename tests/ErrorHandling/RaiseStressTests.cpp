// Eight threads raise, forward, keep, settle and handle errors while listeners come and go: each error that is
// told as raised must be told as handled exactly once.

#include <Infrastructure/OxaCore/AlertListener.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Oxa::Core {

namespace {

constexpr int g_THREADS = 8;
constexpr long g_ERRORS_EACH = 25000;
#ifdef OXACORE_SOAK
constexpr std::chrono::hours g_LIMIT(1);
#else
constexpr std::chrono::seconds g_LIMIT(5);
#endif

const char* const g_SERIAL = "Serial";

/// Carries its number to the listeners.
class Numbered : public ErrorClass<Numbered, HardwareError> {
 public:
  explicit Numbered(long serial) : ErrorClass(AlertMessage("Number %1%", serial)) {
    SetData(g_SERIAL, std::to_string(serial));
  }
};

class Settled : public ErrorClass<Settled, Numbered> {
 public:
  explicit Settled(long serial) : ErrorClass(serial) {}
};

/// Hears everything, and keeps count per number.
class Counter : public AlertListener {
 public:
  Counter() : m_raised(g_THREADS * g_ERRORS_EACH), m_handled(g_THREADS * g_ERRORS_EACH) {}

  void ErrorRaised(Error& error) override { Count(error, m_raised, m_lRaised); }
  void ErrorHandled(Error& error) override { Count(error, m_handled, m_lHandled); }
  void WarningRaised(Warning& warning) override {
    ++m_lWarnings;
    ADD_FAILURE() << warning.GetData(AlertInfo::sMESSAGE);
  }

  using Counts = std::vector<std::atomic<int>>;
  Counts m_raised;
  Counts m_handled;
  std::atomic<long> m_lRaised{0};
  std::atomic<long> m_lHandled{0};
  std::atomic<long> m_lWarnings{0};

 private:
  static void Count(Error& error, Counts& counts, std::atomic<long>& total) {
    ++total;
    if (!error.DataExists(g_SERIAL)) return;
    ++counts[std::stoul(error.GetData(g_SERIAL))];
  }
};

/// Comes and goes; outlives the run, since a broadcast under way may still call it after its removal.
class Passing : public AlertListener {
 public:
  void ErrorRaised(Error& error) override { m_lHeard += error.GetData(AlertInfo::sMESSAGE).empty() ? 0 : 1; }
  void ErrorHandled(Error&) override { ++m_lHeard; }
  std::atomic<long> m_lHeard{0};
};

class Settler : public ErrorHandler {
 public:
  bool Handle(Error&) override { return ++m_lSettled != 0; }
  std::atomic<long> m_lSettled{0};
};

void ForwardThrough(int levels, long serial) {
  try {
    if (levels > 0) return ForwardThrough(levels - 1, serial);
    OXA_RAISE_ERROR("Test.Stress", Numbered(serial));
  }
  OXA_FORWARD_ERRORS_WITH_INFO(OXA_VARIABLE(levels))
}

void ForwardForeign() {
  try {
    throw std::runtime_error("foreign");
  }
  OXA_FORWARD_ERRORS
}

class Raiser {
 public:
  Raiser(int thread, std::chrono::steady_clock::time_point end)
      : m_lNext(thread * g_ERRORS_EACH),
        m_lLast(m_lNext + g_ERRORS_EACH),
        m_end(end),
        m_random(static_cast<unsigned>(thread)) {}

  void Run() {
    while (m_lNext < m_lLast && std::chrono::steady_clock::now() < m_end) RaiseOne(m_lNext++);
  }

  long m_lForeign = 0;
  long m_lInPlace = 0;
  long m_lCaught = 0;
  long m_lNext;

 private:
  void RaiseOne(long serial) {
    switch (m_random() % 7) {
      case 0:
        return Caught([&] { OXA_RAISE_ERROR("Test.Stress", Numbered(serial)); });
      case 1:
        return Caught([&] { ForwardThrough(static_cast<int>(m_random() % 5), serial); });
      case 2:
        return KeptAndThrownAgain(serial);
      case 3:
        return Cloned(serial);
      case 4:
        return AcrossThreads(serial);
      case 5:
        return InPlace(serial);
      default:
        return DuringAnother(serial);
    }
  }

  template <class Work>
  void Caught(Work work) {
    try {
      work();
      ADD_FAILURE() << "the raise returned";
    } catch (Numbered&) {
      ++m_lCaught;
    }
  }

  void KeptAndThrownAgain(long serial) {
    std::exception_ptr kept;
    try {
      OXA_RAISE_ERROR("Test.Stress", Numbered(serial));
    } catch (...) {
      kept = std::current_exception();
    }
    Caught([&] { std::rethrow_exception(kept); });
  }

  void Cloned(long serial) {
    boost::shared_ptr<Error> clone;
    try {
      OXA_RAISE_ERROR("Test.Stress", Numbered(serial));
    } catch (Error& error) {
      clone = error.Clone();
    }
    m_lCaught += dynamic_cast<Numbered*>(clone.get()) != nullptr ? 1 : 0;
  }

  void AcrossThreads(long serial) {
    if (serial % 16 != 0) return Caught([&] { OXA_RAISE_ERROR("Test.Stress", Numbered(serial)); });
    std::exception_ptr handedOver;
    std::thread other([&] {
      try {
        OXA_RAISE_ERROR("Test.Stress", Numbered(serial));
      } catch (...) {
        handedOver = std::current_exception();
      }
    });
    other.join();
    Caught([&] { std::rethrow_exception(handedOver); });
  }

  void InPlace(long serial) {
    OXA_RAISE_ERROR_IN_PLACE("Test.Stress", Settled(serial));
    ++m_lInPlace;
  }

  void DuringAnother(long serial) {
    try {
      OXA_RAISE_ERROR("Test.Stress", Numbered(serial));
    } catch (Error& error) {
      ++m_lCaught;
      try {
        ForwardForeign();
      } catch (StdException& inner) {
        ++m_lForeign;
        EXPECT_EQ("Caught std::exception - foreign", std::string(inner.what()));
      }
      EXPECT_EQ("Number " + std::to_string(serial), std::string(error.what()));
    }
  }

  const long m_lLast;
  const std::chrono::steady_clock::time_point m_end;
  std::mt19937 m_random;
};

void ComeAndGo(std::vector<Passing>& listeners, const std::atomic<bool>& stop, unsigned seed) {
  std::mt19937 random(seed);
  AlertManager& manager = *AlertManager::Instance();
  while (!stop) {
    Passing& listener = listeners[random() % listeners.size()];
    if (random() % 2 == 0) {
      manager.AddAlertListener(listener);
    } else {
      manager.RemoveAlertListener(listener);
    }
    if (random() % 4 == 0) std::this_thread::yield();
  }
}

TEST(RaiseStress, EveryRaisedErrorIsHandledOnce) {
  AlertManager& manager = *AlertManager::Instance();
  const auto counter = std::make_unique<Counter>();
  std::vector<Passing> passing(12);
  const boost::shared_ptr<Settler> settler(new Settler);
  manager.AddAlertListener(*counter);
  manager.AddErrorHandler(typeid(Settled).name(), settler);

  std::atomic<bool> stop{false};
  std::vector<std::thread> churn;
  for (unsigned i = 0; i < 2; ++i) churn.emplace_back([&, i] { ComeAndGo(passing, stop, 100 + i); });
  std::vector<std::unique_ptr<Raiser>> raisers;
  std::vector<std::thread> running;
  const auto end = std::chrono::steady_clock::now() + g_LIMIT;
  for (int i = 0; i < g_THREADS; ++i) {
    raisers.push_back(std::make_unique<Raiser>(i, end));
    running.emplace_back(&Raiser::Run, raisers.back().get());
  }
  for (std::thread& thread : running) thread.join();
  stop = true;
  for (std::thread& thread : churn) thread.join();
  for (Passing& listener : passing) manager.RemoveAlertListener(listener);
  manager.RemoveErrorHandler(typeid(Settled).name(), settler);
  manager.RemoveAlertListener(*counter);

  long numbered = 0, foreign = 0, inPlace = 0, caught = 0, heard = 0, wrong = 0;
  for (int i = 0; i < g_THREADS; ++i) {
    const Raiser& raiser = *raisers[static_cast<std::size_t>(i)];
    const long first = i * g_ERRORS_EACH;
    for (long serial = first; serial < first + g_ERRORS_EACH; ++serial) {
      const int expected = serial < raiser.m_lNext ? 1 : 0;
      wrong += counter->m_raised[static_cast<std::size_t>(serial)] == expected ? 0 : 1;
      wrong += counter->m_handled[static_cast<std::size_t>(serial)] == expected ? 0 : 1;
    }
    numbered += raiser.m_lNext - first;
    foreign += raiser.m_lForeign;
    inPlace += raiser.m_lInPlace;
    caught += raiser.m_lCaught;
  }
  for (const Passing& listener : passing) heard += listener.m_lHeard;
  EXPECT_EQ(0, wrong) << "numbers that were not told once as raised and once as handled";
  EXPECT_EQ(numbered, caught + inPlace);
  EXPECT_EQ(numbered + foreign, counter->m_lRaised);
  EXPECT_EQ(numbered + foreign, counter->m_lHandled);
  EXPECT_EQ(inPlace, settler->m_lSettled);
  EXPECT_GT(inPlace, 0);
  EXPECT_GT(foreign, 0);
  EXPECT_GT(heard, 0);
  EXPECT_EQ(0, counter->m_lWarnings);
#ifdef OXACORE_SOAK
  EXPECT_EQ(g_THREADS * g_ERRORS_EACH, numbered);
#endif
  RecordProperty("errors", std::to_string(numbered + foreign));
  std::printf("%ld numbered errors, %ld of them settled in place, %ld foreign; %ld heard in passing\n",
              numbered, inPlace, foreign, heard);
}

}  // namespace

}  // namespace Oxa::Core

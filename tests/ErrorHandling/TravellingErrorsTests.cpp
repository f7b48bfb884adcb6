// Errors that are raised on one thread and die on another, more of them pending than a thread may have alive.
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "Support/AlertCounter.h"

namespace {

using namespace Oxa::Core;
using TestSupport::AlertCounter;

#if defined(OXACORE_SOAK)
constexpr std::chrono::seconds s_length{60};
#else
constexpr std::chrono::seconds s_length{2};
#endif

class Belt {
 public:
  void Put(std::exception_ptr error) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_errors.push_back(std::move(error));
    m_changed.notify_one();
  }
  // Null when the belt is closed and empty.
  std::exception_ptr Take() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_bClosed || !m_errors.empty(); });
    if (m_errors.empty()) return nullptr;
    std::exception_ptr error = std::move(m_errors.front());
    m_errors.pop_front();
    return error;
  }
  void Close() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bClosed = true;
    m_changed.notify_all();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::exception_ptr> m_errors;
  bool m_bClosed = false;
};

void Produce(Belt& belt, const std::atomic<bool>& stop) {
  while (!stop) {
    try {
      OXA_RAISE_ERROR("Test.Belt", LogicError("travelling"));
    } catch (...) {
      belt.Put(std::current_exception());
    }
  }
}

void Consume(Belt& belt, std::atomic<long>& consumed) {
  while (std::exception_ptr error = belt.Take()) {
    try {
      std::rethrow_exception(error);
    } catch (Error&) {
      ++consumed;
    }
  }
}

TEST(TravellingErrors, AreEachRaisedOnceAndHandledOnce) {
  AlertCounter counter;
  Belt belt;
  std::atomic<bool> stop{false};
  std::atomic<long> consumed{0};
  // Where more raises are pending than may be alive on a thread, the halt writes each time.
  testing::internal::CaptureStderr();
  std::vector<std::thread> producers;
  std::vector<std::thread> consumers;
  for (int i = 0; i < 2; ++i) producers.emplace_back([&] { Produce(belt, stop); });
  for (int i = 0; i < 2; ++i) consumers.emplace_back([&] { Consume(belt, consumed); });
  std::this_thread::sleep_for(s_length);
  stop = true;
  for (std::thread& thread : producers) thread.join();
  belt.Close();
  for (std::thread& thread : consumers) thread.join();
  testing::internal::GetCapturedStderr();
  EXPECT_GT(consumed, 100);
  EXPECT_GT(counter.m_lRaised, 100);
  EXPECT_EQ(counter.m_lRaised, counter.m_lHandled);
}

}  // namespace

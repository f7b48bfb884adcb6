#include "AutoTest/Module/TestThreads.h"

#include <Infrastructure/OxaCore/AutoTest.h>

namespace Oxa::Core {

// The object is whole before the first thread begins, so that its destructor waits also where one can't be had.
TestThreads::TestThreads(int count, const std::function<void(int)>& action) : TestThreads() {
  for (int index = 0; index < count; ++index)
    m_threads.emplace_back([this, action, index] { Run(action, index); });
}

void TestThreads::Run(const std::function<void(int)>& action, int index) {
  try {
    action(index);
  } catch (Error& error) {
    NoteFailure(error.GetData(AlertInfo::sMESSAGE));
  } catch (const std::exception& error) {
    NoteFailure(error.what());
  }
}

void TestThreads::NoteFailure(const std::string& text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_sFailure = text;
}

void TestThreads::Wait() {
  for (std::thread& thread : m_threads)
    if (thread.joinable()) thread.join();
}

void TestThreads::Join() {
  Wait();
  OXA_TEST_ASSERT_MSG(m_sFailure.empty(), "a thread of the test failed: " + m_sFailure);
}

bool OnAnotherThread(const std::function<bool()>& question) {
  bool answer = false;
  TestThreads(1, [&](int) { answer = question(); }).Join();
  return answer;
}

}  // namespace Oxa::Core

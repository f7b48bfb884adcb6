#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/ThreadPool.h>
#include <Infrastructure/OxaCore/Time.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <iostream>

using namespace Oxa::Core;

std::atomic<int> s_iSum{0};
std::atomic<int> s_iDone{0};

void Add(int sample) {
  s_iSum += sample;
  ++s_iDone;
}

int main() {
  InitializeOxaCore();
  ThreadPool<int> pool("Pool", 2);  // two threads share the work
  const auto add = boost::make_shared<GlobalCallbackArg<int>>(&Add);
  for (int i = 1; i <= 100; ++i) pool.Enqueue(add, i);
  pool.Start();
  while (s_iDone < 100) OxaSleep(1, Elapse::MilliSeconds, false);  // the end of the pool drops what waits
  std::cout << "the pool has added 1 to 100: " << s_iSum << '\n';
  ShutdownOxaCore();
}

#include "Places.h"

#include <Infrastructure/OxaCore/Callback.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/Singleton.h>
#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/ThreadPool.h>

#include <cxxabi.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <boost/make_shared.hpp>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <thread>
#include <vector>

using namespace Oxa::Core;

namespace Deaths {

namespace {

std::atomic<Way> s_way{nullptr};
std::atomic<int> s_iMissing{0};
Way s_late = nullptr;  // plain: it is called when all else is gone
bool s_bInDestructor = false;

void TakeIt() { s_way.load()(); }

// All of them die together.
void TakeItTogether() {
  --s_iMissing;
  while (s_iMissing > 0) std::this_thread::yield();
  TakeIt();
}

void TakeItTogetherTranslated() {
  MSWindows::InstallSEHErrorTranslator();
  TakeItTogether();
}

struct CleanUp {
  ~CleanUp() { s_iMissing = -1; }
};

// Nothing leaves it. What is cleaned up on the way makes the compiler say so in its tables: a fault passes functions
// that don't, since to those it may be unheard-of that an instruction throws.
void TakeItBehindAWall() noexcept {
  const CleanUp cleanUp;
  TakeItTogether();
}

class Dying : public Task {
 public:
  explicit Dying(Way way) : m_way(way) {}
  int Run(TaskDirective&) override {
    m_way();
    return 0;
  }

 private:
  const Way m_way;
};

void OnLibraryThreads(Way way, int threads) {
  std::vector<boost::shared_ptr<Thread>> all;
  for (int count = 0; count < threads; ++count) {
    all.push_back(Thread::Create("Dying"));
    all.back()->Start(boost::make_shared<Dying>(way), Elapse(0));
  }
  for (const auto& thread : all) thread->WaitForState(Thread::eTHREAD_COMPLETED | Thread::eTHREAD_ERROR);
}

void OnStdThreads(Way way, int threads) {
  std::vector<std::thread> all;
  for (int count = 0; count < threads; ++count) all.emplace_back(way);
  for (std::thread& thread : all) thread.join();
}

void* RunSmall(void* way) {
  reinterpret_cast<Way>(way)();
  return nullptr;
}

void OnSmallThreads(Way way, int threads) {
  constexpr std::size_t uSTACK = 64U << 10U;
  pthread_attr_t attributes;
  ::pthread_attr_init(&attributes);
  ::pthread_attr_setstacksize(&attributes, uSTACK);
  std::vector<pthread_t> all(static_cast<std::size_t>(threads));
  for (pthread_t& thread : all)
    ::pthread_create(&thread, &attributes, &RunSmall, reinterpret_cast<void*>(way));
  for (const pthread_t thread : all) ::pthread_join(thread, nullptr);
}

void InMain(int) { TakeIt(); }
void OnThread(int threads) { OnLibraryThreads(&TakeItTogether, threads); }
void BehindAWall(int threads) { OnLibraryThreads(&TakeItBehindAWall, threads); }
void OnStdThread(int threads) { OnStdThreads(&TakeItTogether, threads); }
void OnTranslatedThread(int threads) { OnStdThreads(&TakeItTogetherTranslated, threads); }
void OnSmallThread(int threads) { OnSmallThreads(&TakeItTogether, threads); }
void OnSmallTranslatedThread(int threads) { OnSmallThreads(&TakeItTogetherTranslated, threads); }

void InAPool(int threads) {
  struct Item : CallbackArg<int> {
    void operator()(int) override { TakeItTogether(); }
  };
  ThreadPool<int> pool("Dying", threads);
  pool.Start();
  for (int count = 0; count < threads; ++count) pool.Enqueue(boost::make_shared<Item>(), count);
  while (s_iMissing > 0) std::this_thread::yield();
}

void InASignalHandler(int) {
  struct sigaction action = {};
  action.sa_handler = [](int) { TakeIt(); };
  ::sigaction(SIGUSR1, &action, nullptr);
  ::raise(SIGUSR1);
}

// The child's end becomes the host's own.
void InAChild(int) {
  const pid_t child = ::fork();
  if (child == 0) {
    TakeIt();
    ::_exit(7);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (WIFSIGNALED(status)) {
    ::signal(WTERMSIG(status), SIG_DFL);
    ::raise(WTERMSIG(status));
  }
  ::_exit(WEXITSTATUS(status));
}

void AtExit(int) { std::atexit(&TakeIt); }

void InAStaticDestructor(int) { s_bInDestructor = true; }

// What is to be destroyed when the library goes. Nothing may leave it: that would be caught, and dropped.
class Last : public ISingletonRegistryEntry {
 public:
  void Destroy() noexcept override { TakeIt(); }
};

// The host doesn't shut the library down: its unload routine does.
void WhileUnloading(int) { SingletonRegistry::Register(new Last); }

void AfterTheUnload(int) { s_late = s_way; }

struct Destructor {
  ~Destructor() {
    if (s_bInDestructor) TakeIt();
  }
};
const Destructor s_destructor;

// What is registered before the library is even built, and as nobody's, runs when it is gone.
void DieLate(void*) {
  if (s_late != nullptr) s_late();
}
void RegisterLate(int, char**, char**) { abi::__cxa_atexit(&DieLate, nullptr, nullptr); }
[[gnu::section(".preinit_array"), gnu::used]] void (*const s_registerLate)(int, char**,
                                                                           char**) = &RegisterLate;

struct NamedPlace {
  const char* m_pName;
  void (*m_pGo)(int threads);
  bool m_bInitialised;
};

constexpr NamedPlace sPLACES[] = {
    {"main", &InMain, true},
    {"bare", &InMain, false},
    {"thread", &OnThread, true},
    {"wall", &BehindAWall, true},
    {"std-thread", &OnStdThread, true},
    {"translated", &OnTranslatedThread, true},
    {"small", &OnSmallThread, true},
    {"small-translated", &OnSmallTranslatedThread, true},
    {"pool", &InAPool, true},
    {"handler", &InASignalHandler, true},
    {"child", &InAChild, true},
    {"atexit", &AtExit, true},
    {"static-destructor", &InAStaticDestructor, true},
    {"unload", &WhileUnloading, true},
    {"after-unload", &AfterTheUnload, true},
};

const NamedPlace* Find(const char* place) {
  for (const NamedPlace& candidate : sPLACES)
    if (std::strcmp(candidate.m_pName, place) == 0) return &candidate;
  return nullptr;
}

}  // namespace

void DieEarly(const char* place, Way way) {
  if (std::strcmp(place, "static-constructor") == 0) way();
}

bool DieAt(const char* place, Way way, int threads) {
  const NamedPlace* const found = Find(place);
  if (found == nullptr) return false;
  s_way = way;
  s_iMissing = threads;
  found->m_pGo(threads);
  return true;
}

bool IsInitialised(const char* place) {
  const NamedPlace* const found = Find(place);
  return found != nullptr && found->m_bInitialised;
}

}  // namespace Deaths

// Loads the library, or a plug-in on it, at run time.
//   cycles PLUGIN COUNT LIBRARY  loads, uses and unloads both over and over
//   late PLUGIN              raises from an object that was built before the library was loaded
//   late-atoms PLUGIN        asks for atoms from there, after it asked for some behind the shut-down
//   unload PLUGIN            raises, unloads, and ends
//   terminate-loaded LIBRARY     ends by std::terminate, with a handler of its own and the library loaded
//   terminate-unloaded LIBRARY   the same after the library was unloaded again
#include <dlfcn.h>
#include <malloc.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <string>

namespace {

using RaiseFunction = int (*)(const char*);
using WarnFunction = void (*)(const char*);
using AtomFunction = const char* (*)(const char*);

// The word and whether it is one atom only.
void PrintAtom(const char* when, AtomFunction atom) {
  const char* const word = atom("word");
  std::printf("%s atom: %s, %s\n", when, word, word == atom("word") ? "once" : "twice");
}

// Built before anything is loaded, so it dies after the library's static objects.
struct OldObject {
  RaiseFunction m_raise = nullptr;
  WarnFunction m_warn = nullptr;
  AtomFunction m_atom = nullptr;
  ~OldObject() {
    if (m_raise != nullptr) std::printf("late raise threw: %d\n", m_raise("a late <error>"));
    if (m_warn != nullptr) m_warn("a late warning");
    if (m_atom != nullptr) PrintAtom("late", m_atom);
    std::fflush(stdout);
  }
};
OldObject s_oldObject;

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "%s: %s\n", what, ::dlerror());
  std::exit(2);
}

void* Load(const char* name) {
  void* const library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) Fail("load");
  return library;
}

template <class Function>
Function Find(void* library, const char* name) {
  void* const symbol = ::dlsym(library, name);
  if (symbol == nullptr) Fail(name);
  Function function;
  static_assert(sizeof function == sizeof symbol);
  std::memcpy(&function, &symbol, sizeof function);
  return function;
}

long ResidentKiB() {
  std::ifstream file("/proc/self/statm");
  long total = 0;
  long resident = 0;
  file >> total >> resident;
  return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

// What is allocated and not freed.
long HeapBytes() { return static_cast<long>(::mallinfo2().uordblks); }

// Of the kind that nobody but a program itself raises.
int HandledSignals() {
  int count = 0;
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
    struct sigaction action;
    count += ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_DFL;
  }
  return count;
}

// UnitDictionary::StandardUnits, whose dictionary the unloading has to give back.
const char* const sSTANDARD_UNITS = "_ZN3Oxa4Core14UnitDictionary13StandardUnitsEv";

bool IsLoaded(const char* name) { return ::dlopen(name, RTLD_NOW | RTLD_NOLOAD) != nullptr; }

// The names of the library are found through the plug-in that leans on it.
int Cycle(const char* plugin, int count, const char* library) {
  const int handled = HandledSignals();
  long atTenth = 0;
  long heapAtTenth = 0;
  for (int i = 0; i < count; ++i) {
    void* const both = Load(plugin);
    Find<void (*)()>(both, "InitializeOxaCore")();
    Find<const void* (*)()>(both, sSTANDARD_UNITS)();
    if (!Find<bool (*)()>(both, "UseTools")()) Fail("tools");
    // Every other turn leaves the shut-down to the unloading, every fourth one what was made behind it.
    if (i % 2 == 0) Find<void (*)()>(both, "ShutdownOxaCore")();
    if (i % 4 == 0) Find<bool (*)()>(both, "UseTools")();
    if (::dlclose(both) != 0) Fail("unload");
    if (IsLoaded(plugin) || IsLoaded(library)) Fail("still loaded");
    if (HandledSignals() != handled) Fail("a handler of signals is still there");
    if (i == 10) atTenth = ResidentKiB();
    if (i == 10) heapAtTenth = HeapBytes();
  }
  std::printf("cycles %d\ngrown by %ld KiB\nheap grown by %ld bytes\n", count, ResidentKiB() - atTenth,
              HeapBytes() - heapAtTenth);
  return 0;
}

[[noreturn]] void OwnHandler() {
  std::puts("the host's own handler");
  std::fflush(stdout);
  ::_exit(7);
}

[[noreturn]] void Terminate(const char* name, bool unload) {
  std::set_terminate(&OwnHandler);
  void* const library = Load(name);
  if (unload && ::dlclose(library) != 0) Fail("unload");
  std::terminate();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const std::string scenario = argv[1];
  if (scenario == "cycles") return argc < 5 ? 2 : Cycle(argv[2], std::atoi(argv[3]), argv[4]);
  if (scenario.rfind("terminate-", 0) == 0) Terminate(argv[2], scenario == "terminate-unloaded");
  void* const plugin = Load(argv[2]);
  const auto raise = Find<RaiseFunction>(plugin, "RaiseFromPlugin");
  std::printf("early raise threw: %d\n", raise("early"));
  if (scenario == "late-atoms") {
    const auto atom = Find<AtomFunction>(plugin, "AtomFromPlugin");
    PrintAtom("early", atom);
    Find<void (*)()>(plugin, "ShutdownOxaCore")();
    PrintAtom("later", atom);
    s_oldObject.m_atom = atom;
  } else if (scenario == "late") {
    s_oldObject.m_raise = raise;
    s_oldObject.m_warn = Find<WarnFunction>(plugin, "WarnFromPlugin");
  } else if (::dlclose(plugin) != 0) {
    Fail("unload");
  }
  return 0;
}

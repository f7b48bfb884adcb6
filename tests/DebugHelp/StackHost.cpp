// Loads a module, runs one of its functions, and prints the call stack of the error that is raised in its depths:
//   StackHost MODULE WHAT NUMBER [STEP...]
// Steps come before the run, or behind it.

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "StackHostSteps.h"

namespace {

using namespace Oxa::Core;
using MSWindows::DebugHelp;
using Run = void (*)(const char*, int, void (*)());

class Listener : public AlertListener {
 public:
  void WarningRaised(Warning& warning) override {
    std::cout << "warning " << warning.GetData(AlertInfo::sLOG_NAME) << ": "
              << warning.GetData(AlertInfo::sMESSAGE) << "\n";
  }
};

std::string s_sModule;

Run Load(const char* module) {
  s_sModule = module;
  void* const handle = ::dlopen(module, RTLD_NOW);
  if (handle == nullptr) {
    std::cerr << ::dlerror();
    std::exit(2);
  }
  return reinterpret_cast<Run>(::dlsym(handle, "RunVictim"));
}

void Raise() { OXA_RAISE_ERROR("Stack.Host", LogicError("Raised in the depths")); }  // at: raise

void Print(const boost::shared_ptr<std::vector<CodeContext>>& frames) {
  if (!frames) std::cout << "no stack\n";
  if (!frames) return;
  for (const CodeContext& frame : *frames) {
    const std::string file = frame.Get(CodeContext::sFILE);
    std::cout << file.substr(file.find_last_of('/') + 1) << ":" << frame.Get(CodeContext::sLINE) << " "
              << frame.Get(CodeContext::sFUNCTION) << " [" << frame.Get("Module") << "]";
    for (const auto& [name, value] : frame.GetVariables()) std::cout << " " << name << "=" << value;
    std::cout << "\n";
  }
  std::cout << frames->size() << " frames\n";
}

int s_iMaxFrames = 100;
void (*s_callback)() = &Raise;

// For stacks that no exception could leave.
void Walk() { Print(DebugHelp::Instance()->CreateCallStack(s_iMaxFrames)); }  // at: walk

void RunAndPrint(Run run, const char* what, int number) {
  try {
    run(what, number, s_callback);  // at: run
  } catch (Error& error) {
    Print(error.GetCallStack());
  }
}

std::string Content(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Stacks by debug data with bytes changed at random: whatever comes out, the process is well.
void Damage(Run run, const std::string& file, int rounds) {
  const std::string whole = Content(file);
  std::mt19937 random(20);
  std::size_t frames = 0;
  for (int round = 0; round < rounds; ++round) {
    std::string damaged = whole;
    for (int change = 0; change < 40; ++change)
      damaged[64 + random() % (damaged.size() - 64)] = static_cast<char>(random());
    std::ofstream(file + ".new", std::ios::binary) << damaged;
    std::rename((file + ".new").c_str(), file.c_str());
    DebugHelp::Instance()->Initialize();
    try {
      run("descend", 5, &Raise);
    } catch (Error& error) {
      frames += error.GetCallStack()->size();
    }
  }
  std::cout << "survived, " << (frames > 0 ? "with" : "without") << " frames\n";
  std::cout.flush();
  ::_exit(0);  // what faults have cut short is given up on purpose, and no leak to be told of
}

void RaiseOnThreads(Run run, int threads) {
  std::atomic<int> whole{0};
  std::vector<std::thread> all;
  for (int i = 0; i < threads; ++i)
    all.emplace_back([&, i] {
      for (int round = 0; round < 20; ++round) {
        try {
          run("descend", i, &Raise);
        } catch (Error& error) {
          const auto frames = error.GetCallStack();
          if (frames && frames->size() >= static_cast<std::size_t>(i) + 3) ++whole;
        }
      }
    });
  for (std::thread& thread : all) thread.join();
  std::cout << "whole stacks: " << whole << "\n";
}

// In the place of the module that was loaded before, if the system likes.
Run LoadInstead(const char* module) {
  void* const before = ::dlopen(s_sModule.c_str(), RTLD_NOW | RTLD_NOLOAD);
  ::dlclose(before);
  ::dlclose(before);
  return Load(module);
}

// Where the module of a function begins.
void PrintBase(void* function) {
  Dl_info info;
  if (::dladdr(function, &info) != 0) std::cout << "base " << info.dli_fbase << "\n";
}

void RaiseInChild(Run run) {
  std::cout.flush();
  const pid_t child = ::fork();
  if (child == 0) {
    RunAndPrint(run, "templated", 1);
    std::cout.flush();
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
}

// Whether all frames of a raise at one and the same place tell of this thread and this process.
void TellWhose(Run run, const char* who) {
  const CodeContext here("", 0, "", "", "");
  try {
    run("templated", 1, &Raise);
  } catch (Error& error) {
    bool own = error.GetCallStack()->size() > 1;
    for (const CodeContext& frame : *error.GetCallStack())
      own = own && frame.Get(CodeContext::sTHREAD_ID) == here.Get(CodeContext::sTHREAD_ID) &&
            frame.Get(CodeContext::sTHREAD) == here.Get(CodeContext::sTHREAD) &&
            frame.Get(CodeContext::sPROCESS_ID) == std::to_string(::getpid());
    std::cout << who << (own ? " sees itself, " : " sees another, ") << here.Get(CodeContext::sTHREAD)
              << '\n';
    std::cout.flush();
  }
}

void RaiseUnderTwoNames(Run run) {
  System::Instance()->SetCurrentThreadName("first");
  TellWhose(run, "before");
  System::Instance()->SetCurrentThreadName("second");
  TellWhose(run, "behind");
}

void RaiseAtOnePlace(Run run) {
  TellWhose(run, "main");
  std::thread([run] { TellWhose(run, "other"); }).join();
  TellWhose(run, "main again");
  std::thread(&RaiseUnderTwoNames, run).join();
  const pid_t child = ::fork();
  if (child == 0) {
    TellWhose(run, "child");
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void CallbackOfHost() {
  std::thread other([] {
    try {
      Raise();
    } catch (Error& error) {
      std::cout << (error.GetCallStack() ? "other has a stack\n" : "other has no stack\n");
    }
  });
  try {
    Raise();
  } catch (Error& error) {
    Print(error.GetCallStack());
  }
  // It may have to wait for the loader; it must not keep this thread waiting, nor be waited for here.
  other.detach();
}

void TakeStep(const std::string& step, char** argv, Run& run) {
  if (step == "initialize") InitializeOxaCore();
  if (step == "twice") RunAndPrint(run, argv[2], std::atoi(argv[3]));
  if (step.rfind("replace=", 0) == 0) std::rename(step.substr(8).c_str(), argv[1]);
  if (step.rfind("damage=", 0) == 0) Damage(run, step.substr(7), std::atoi(argv[3]));
  if (step.rfind("threads=", 0) == 0) RaiseOnThreads(run, std::atoi(step.substr(8).c_str()));
  if (step == "fork") RaiseInChild(run);
  if (step.rfind("walk=", 0) == 0) s_callback = &Walk, s_iMaxFrames = std::atoi(step.substr(5).c_str());
  if (step.rfind("change=", 0) == 0) StackHost::Change(step.substr(7));
  if (step == "base") PrintBase(reinterpret_cast<void*>(run));
  if (step.rfind("load=", 0) == 0) run = LoadInstead(step.substr(5).c_str());
  if (step == "log") StackHost::ShowLog();
  if (step == "first-use-short") StackHost::FirstUseShortOfMemory();
  if (step == "anew-short") StackHost::BeginAnewShortOfMemory();
  if (step == "trap") StackHost::SetDenormalTrap();
  if (step == "whose") RaiseAtOnePlace(run);
  if (step == "unavailable") std::cout << "unavailable " << DebugHelp::IsUnavailable() << "\n";
}

void PrintXML(Run run, const char* what) {
  try {
    run(what, 0, &Raise);
  } catch (Error& error) {
    XMLWriter writer(XMLFormatter::CreateCompact());
    std::ostringstream text;
    error.ToXML(writer, text, "");
    std::cout << text.str() << "\n";
  }
}

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  Listener listener;
  AlertManager::Instance()->AddAlertListener(listener);
  const std::vector<std::string> steps(argv + 4, argv + argc);
  for (const std::string& step : steps)
    if (step.rfind("folder=", 0) == 0) System::Instance()->SetProcessPath(step.substr(7));
  Run run = Load(argv[1]);
  if (run == nullptr) return 2;
  for (const std::string& step : steps) TakeStep(step, argv, run);
  if (argv[2][0] != '-') RunAndPrint(run, argv[2], std::atoi(argv[3]));
  if (StackHost::HasDenormalTrap()) std::cout << "the trap is on\n";
  for (const std::string& step : steps)
    if (step == "xml") PrintXML(run, argv[2]);
  AlertManager::Instance()->RemoveAlertListener(listener);
  ShutdownOxaCore();
  return 0;
}

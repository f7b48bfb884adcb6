#include "Child.h"

#include "Channel.h"
#include "Reporter.h"
#include "Selection.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/AutoTest.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/SystemLibrary.h>

#include <algorithm>
#include <boost/shared_ptr.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include <dlfcn.h>
#include <link.h>

namespace OxaTest {

using namespace Oxa::Core;

namespace {

const char* const sFUNCTION = "GetModuleTestSuite";
const char* const sNOT_LOADED = "can't be loaded";
const char* const sOTHER_COPY = "brings along another copy of OxaCore than the one that oxatest runs with";
const char* const sNO_FUNCTION = "has no function GetModuleTestSuite";
const char* const sNO_TREE = "GetModuleTestSuite gives no suite";
const char* const sTHROWN = "GetModuleTestSuite throws: ";
const char* const sUNKNOWN_EXCEPTION = "an exception that is neither an Error nor a std::exception";

using TreeFunction = boost::shared_ptr<TestSuite>();

// What the tests raise goes into the log, and what kills the process into reports: there, not beside this program.
void PrepareProcess(const std::string& folder) {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // what a test said stays said when it crashes
  if (System* const system = System::Instance()) system->SetProcessPath(folder + '/');
  if (AlertManager* const manager = AlertManager::Instance()) manager->SetFatalErrorBasePath(folder + '/');
  AlertManager::SetEndBySignal(true);  // so that the runner sees which one it was
  InitializeOxaCore();
}

// A file of the current folder, too, is given by its name alone.
PathName WhereItLies(const std::string& module) {
  std::error_code none;
  const bool here = module.find('/') == std::string::npos && std::filesystem::exists(module, none);
  return PathName(here ? "./" + module : module);
}

std::string LoaderSays() {
  const char* const text = ::dlerror();
  return text == nullptr ? "" : std::string(": ") + text;
}

// Suites of another copy have classes of their own, which this one doesn't know.
bool HasOtherCopy(SystemLibrary& library) {
  const char* const own = "InitializeOxaCore";
  return library.HasFunction(own) && library.GetFunction<void()>(own) != &InitializeOxaCore;
}

// The loader looks into the libraries of a module as well: one that has no suite would run the library's own.
bool IsOfTheModule(const PathName& module, TreeFunction* function) {
  Dl_info info = {};
  void* home = nullptr;
  if (::dladdr1(reinterpret_cast<void*>(function), &info, &home, RTLD_DL_LINKMAP) == 0) return false;
  std::string name = static_cast<const char*>(module);
  std::replace(name.begin(), name.end(), '\\', '/');  // as the library did
  void* const handle = ::dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  link_map* map = nullptr;
  const bool known = ::dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0;
  ::dlclose(handle);
  return known && map == home;
}

// Null if there is none; that was told then.
TreeFunction* FindFunction(Channel& channel, SystemLibrary* library) {
  std::string complaint;
  if (library == nullptr)
    complaint = sNOT_LOADED + LoaderSays();
  else if (HasOtherCopy(*library))
    complaint = sOTHER_COPY;
  else if (!library->HasFunction(sFUNCTION) ||
           !IsOfTheModule(library->GetPathName(), library->GetFunction<TreeFunction>(sFUNCTION)))
    complaint = sNO_FUNCTION;
  else
    return library->GetFunction<TreeFunction>(sFUNCTION);
  channel.Tell(Message::eBAD_MODULE, {complaint});
  return nullptr;
}

boost::shared_ptr<TestSuite> BuildTree(Channel& channel, TreeFunction* function) {
  std::string complaint = sNO_TREE;
  try {
    if (boost::shared_ptr<TestSuite> tree = function()) return tree;
  } catch (const Error& error) {
    complaint = sTHROWN + error.GetData(AlertInfo::sMESSAGE);
  } catch (const std::exception& exception) {
    complaint = sTHROWN + std::string(exception.what());
  } catch (...) {
    complaint = sTHROWN + std::string(sUNKNOWN_EXCEPTION);
  }
  channel.Tell(Message::eBAD_MODULE, {complaint});
  return boost::shared_ptr<TestSuite>();
}

void TellPlan(Channel& channel, Selection& selection, TestSuite& tree) {
  channel.Tell(Message::eTREE, {tree.GetName()});
  for (const PlannedTest& test : selection.Apply(tree))
    channel.Tell(test.m_bEnabled ? Message::eTEST : Message::eDISABLED_TEST, {test.m_sSuites, test.m_sName});
  channel.Tell(Message::eMATCHED, {selection.Matched()});
}

void RunTree(Channel& channel, TestSuite& tree) {
  channel.Tell(Message::eRUN);
  Reporter reporter(channel);
  tree.AddListener(reporter);
  tree.RunTest();
  channel.Tell(Message::eTREE_DONE);
}

void RunLibrary(Channel& channel, const Options& options) {
  const boost::shared_ptr<SystemLibrary> library =
      SystemLibrary::Load(WhereItLies(options.m_modules.front()));
  TreeFunction* const function = FindFunction(channel, library.get());
  if (function == nullptr) return;
  channel.Tell(Message::eLOADED);
  Selection selection(options);
  for (int i = 0; i < options.m_iRepeat; ++i) {
    const boost::shared_ptr<TestSuite> tree = BuildTree(channel, function);
    if (!tree) return;
    TellPlan(channel, selection, *tree);
    if (options.m_bList) break;
    RunTree(channel, *tree);
  }
  channel.Tell(Message::eDONE);
}

// What still waits for the log's thread at the shut-down would be gone.
void WriteLog() {
  if (LogManager* const manager = LogManager::Instance()) manager->SetBufferingMode(false);
}

}  // namespace

int RunChild(const Options& options) {
  Channel channel(options.m_iPipe);
  PrepareProcess(options.m_sFolder);
  channel.Tell(Message::eSTARTED);
  RunLibrary(channel, options);
  WriteLog();
  return 0;
}

}  // namespace OxaTest

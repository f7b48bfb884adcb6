#include "AutoTest/Module/TEST_ErrorHandling.h"

#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/PathName.h>

#include <algorithm>
#include <thread>

#include "AutoTest/Module/AlertTape.h"
#include "AutoTest/Module/Streamed.h"
#include "AutoTest/Module/TestAlerts.h"
#include "AutoTest/Module/TestMethods.h"
#include "Core/Immortal.h"
#include "ErrorHandling/LiveRaises.h"

namespace Oxa::Core {

namespace {

using namespace ModuleTests;

const char* const sLOG_NAME = "Oxa.Core.Test.ErrorHandling";
const char* const sERROR = "an error of the self-test";
const char* const sSLICED = "a SlicedError of the self-test";
const char* const sSLICED_CLASS = "SlicedError";  // also in the warning
const char* const sWARNING = "a warning of the self-test";
const char* const sINVALID_PATH = "C:|||junk|||temp\\test";

using Texts = std::vector<std::string>;

template <class Category>
bool HasCategory() {
  const Category error("text");
  return error.GetData(AlertInfo::sCATEGORY) == Category::sCATEGORY &&
         error.GetSeverity() == AlertInfo::eERROR;
}

std::string MessageOf(const AlertInfo& alert) { return alert.GetData(AlertInfo::sMESSAGE); }

void Forward(int levels) {
  try {
    if (levels == 0) OXA_RAISE_ERROR(sLOG_NAME, BasicError(sERROR));
    if (levels > 0) Forward(levels - 1);
  }
  OXA_FORWARD_ERRORS
}

void CheckClone() {
  const AlertTape tape(sERROR);
  boost::shared_ptr<Error> kept;
  try {
    OXA_RAISE_ERROR(sLOG_NAME, CriticalError(sERROR));
  } catch (Error& error) {
    kept = error.Clone();
    kept->SetData("TestKey", "TestValue");
    OXA_TEST_ASSERT(error.GetData("TestKey") == "TestValue");  // they share it
  }
  OXA_TEST_ASSERT(kept && typeid(*kept) == typeid(CriticalError));
  OXA_TEST_EQUALS(1, static_cast<long>(tape.GetHeard().size()));
  kept.reset();  // the last that holds the error
  OXA_TEST_ASSERT(tape.GetHeard().back() == std::string("handled ") + sERROR);
}

bool IsSlicedOnThrow() {
  try {
    OXA_RAISE_ERROR(sLOG_NAME, SlicedError(sSLICED));
  } catch (const SlicedError&) {
    return false;
  } catch (const Error&) {
    return true;
  }
  return false;
}

// Whether a warning about slicing was told, or the host hears of no more of them.
bool IsSlicingTold(int told) {
  const AlertTape tape(sSLICED_CLASS);
  OXA_RAISE_WARNING(sLOG_NAME, ErrorSlicedOnThrow(sSLICED_CLASS));
  return told == (tape.GetHeard().empty() ? 0 : 1);
}

void CheckSlicedError() {
  Texts heard;
  {
    const AlertTape tape(sSLICED_CLASS);
    OXA_TEST_ASSERT(IsSlicedOnThrow());
    heard = tape.GetHeard();
  }
  const auto warnings = std::stable_partition(
      heard.begin(), heard.end(), [](const std::string& text) { return text.rfind("warned ", 0) != 0; });
  const auto told = static_cast<int>(std::distance(warnings, heard.end()));
  heard.erase(warnings, heard.end());
  OXA_TEST_ASSERT(heard == (Texts{std::string("raised ") + sSLICED, std::string("handled ") + sSLICED}));
  OXA_TEST_ASSERT(IsSlicingTold(told));
}

unsigned long CountRaised() {
  std::set<WarningRecord, SSortWarnings> records;
  AlertManager::Instance()->GetRaisedWarningRecords(records);
  for (const WarningRecord& record : records) {
    if (record.GetClass() == "class Oxa::Core::ModuleTests::BasicWarning") return record.GetRaisedCount();
  }
  return 0;
}

// A record of its own: those of the alert manager are the host's.
class LimitedRecord : public WarningRecord {
 public:
  bool Raise() { return ShouldWarningBeRaised(); }
};

void CheckWarningLimit() {
  LimitedRecord record;
  OXA_TEST_ASSERT(record.GetMaxWarnings() == AlertRecord::GetInfiniteWarnings());
  record.SetMaxWarnings(1);
  OXA_TEST_ASSERT(record.Raise() && !record.Raise() && !record.Raise());
  OXA_TEST_EQUALS(1, static_cast<long>(record.GetMaxWarnings()));
  OXA_TEST_EQUALS(1, static_cast<long>(record.GetWarningCount()));
  OXA_TEST_EQUALS(2, static_cast<long>(record.GetSilencedCount()));
  record.ResetWarningCount();
  OXA_TEST_ASSERT(record.Raise());
}

// A listener that nobody tells anything; it is only asked what it is interested in.
class ChoosyListener : public AlertListener {
 public:
  void SetMask(std::uint32_t mask) { m_severityMask = mask; }
  void Filter(const std::string& key, const std::string& value) { m_dataFilter[key].insert(value); }

  // The warning, the error and the critical one, as bits from the first on.
  long Interests() const {
    BasicWarning warning(sWARNING);
    BasicError error(sERROR);
    CriticalError critical(sERROR);
    return (IsInterestedIn(warning) ? 1 : 0) + (IsInterestedIn(error) ? 2 : 0) +
           (IsInterestedIn(critical) ? 4 : 0);
  }
};

void CheckDataFilter() {
  ChoosyListener listener;
  listener.Filter("TestKey", "TestValue");
  listener.Filter("TestKey", "Another");
  BasicError error(sERROR);
  OXA_TEST_ASSERT(!listener.IsInterestedIn(error));
  error.SetData("TestKey", "TestValue");
  OXA_TEST_ASSERT(listener.IsInterestedIn(error));
  error.SetData("TestKey", "Something else");
  OXA_TEST_ASSERT(!listener.IsInterestedIn(error));
  error.SetData("TestKey", "Another");
  listener.Filter("SecondKey", "SecondValue");
  OXA_TEST_ASSERT(!listener.IsInterestedIn(error));
  error.SetData("SecondKey", "SecondValue");
  OXA_TEST_ASSERT(listener.IsInterestedIn(error));
}

// Handlers and the path of fatal reports are the process's, not the thread's: one self-test at a time may touch them.
Mutex& TheProcessMutex() {
  static Immortal<Mutex> s_mutex;
  return s_mutex.Get();
}

// The path of fatal reports, as it was before.
class KeptBasePath {
 public:
  explicit KeptBasePath(AlertManager& manager)
      : m_manager(manager), m_sPath(manager.GetFatalErrorBasePath()) {}
  KeptBasePath(const KeptBasePath&) = delete;
  KeptBasePath& operator=(const KeptBasePath&) = delete;
  ~KeptBasePath() {
    if (m_manager.GetFatalErrorBasePath() != m_sPath) m_manager.SetFatalErrorBasePath(m_sPath);
  }

 private:
  AlertManager& m_manager;
  const std::string m_sPath;
};

void RaiseInPlace() { OXA_RAISE_ERROR_IN_PLACE(sLOG_NAME, HandledError(sERROR)); }

// What the two handlers of the class, and the one of its base, tell when the first two answer so.
Texts CallsOfHandlers(bool first, bool second) {
  Texts calls;
  const HandlerEntry<HandledError> one(calls, "first", first);
  const HandlerEntry<HandledError> two(calls, "second", second);
  const HandlerEntry<HandledBase> base(calls, "base", true);
  RaiseInPlace();
  return calls;
}

void CheckWithoutAcceptingHandler() {
  Texts calls;
  const HandlerEntry<HandledError> handler(calls, "only", false);
  OXA_TEST_ASSERT(Raises<HandledError>(RaiseInPlace));
  OXA_TEST_ASSERT(calls == Texts{"only asked"});
}

// What became of an error whose raise raises the same again.
struct Recursion {
  int m_iRaises = 0;
  int m_iLiveRaises = -1;
  bool m_bPlainError = false;
  std::string m_sMessage;
};

void Recurse(Recursion& recursion) {
  RecursiveError::sm_iRecursionCount = 0;
  try {
    OXA_RAISE_ERROR(sLOG_NAME, RecursiveError());
  } catch (const Error& error) {
    recursion.m_bPlainError = typeid(error) == typeid(Error);
    recursion.m_sMessage = MessageOf(error);
  }
  recursion.m_iRaises = RecursiveError::sm_iRecursionCount;
  recursion.m_iLiveRaises = ThreadSpecificErrorRecursionCount::Get();
}

}  // namespace

TEST_ErrorHandling::TEST_ErrorHandling() : TestSuite("Error Handling Tests") {
  AddTestMethods(*this, {{"Test Construction", &TEST_ErrorHandling::Construction},
                         {"Test Errors", &TEST_ErrorHandling::Errors},
                         {"Test Warnings", &TEST_ErrorHandling::Warnings},
                         {"Test Notifications", &TEST_ErrorHandling::AlertNotifications},
                         {"Test In Place Handling", &TEST_ErrorHandling::InPlaceHandling},
                         {"Test Cloning", &TEST_ErrorHandling::Cloning},
                         {"Test Derivation From Parameterized Base", &TEST_ErrorHandling::ParameterizedBase},
                         {"Test Set And Get FatalErrorBasePath", &TEST_ErrorHandling::FatalErrorBasePath},
                         {"Test Error Recursion", &TEST_ErrorHandling::ErrorRecursion}});
}

void TEST_ErrorHandling::Construction(std::string&) {
  OXA_TEST_ASSERT(MessageOf(AlertInfo()) == "No Message");
  OXA_TEST_ASSERT(MessageOf(BasicError("")) == "No Message");
  OXA_TEST_ASSERT(MessageOf(BasicError(sERROR)) == sERROR);
  OXA_TEST_ASSERT(!AlertInfo().DataExists("unset key") && AlertInfo().GetData("unset key").empty());
  OXA_TEST_ASSERT(HasCategory<LogicError>() && HasCategory<IOError>() && HasCategory<OSError>());
  OXA_TEST_ASSERT(HasCategory<HardwareError>() && HasCategory<UnknownError>());
  OXA_TEST_EQUALS(AlertInfo::eCRITICAL, CriticalError(sERROR).GetSeverity());
  OXA_TEST_EQUALS(AlertInfo::eWARNING, BasicWarning(sWARNING).GetSeverity());
  OXA_TEST_ASSERT(
      AlertMessage("%1%,%2%,%3$x,%4%,%5$x,%6%,%7%,%8%", 'a', -15, 15, -31, 31, 1.5, 2.5, "Basic Message") ==
      "a,-15,f,-31,1f," + Streamed(1.5) + ',' + Streamed(2.5) + ",Basic Message");
}

void TEST_ErrorHandling::Errors(std::string&) {
  const AlertTape tape(sERROR);
  bool caught = false;
  try {
    Forward(5);
  } catch (const BasicError& error) {
    caught = true;
    OXA_TEST_ASSERT(MessageOf(error) == sERROR && std::string(error.what()) == sERROR);
    OXA_TEST_ASSERT(error.GetData(AlertInfo::sLOG_NAME) == sLOG_NAME);
    OXA_TEST_EQUALS(1 + 6, static_cast<long>(error.GetUnwindStack()->size()));
  }
  OXA_TEST_ASSERT(caught);
  OXA_TEST_ASSERT(tape.GetHeard() ==
                  (Texts{std::string("raised ") + sERROR, std::string("handled ") + sERROR}));
}

void TEST_ErrorHandling::Warnings(std::string&) {
  const unsigned long before = CountRaised();
  const AlertTape tape(sWARNING);
  OXA_RAISE_WARNING(sLOG_NAME, BasicWarning(sWARNING));
  OXA_TEST_ASSERT(tape.GetHeard() == Texts{std::string("warned ") + sWARNING});
  OXA_TEST_ASSERT(CountRaised() > before);
  CheckWarningLimit();
}

void TEST_ErrorHandling::AlertNotifications(std::string&) {
  ChoosyListener listener;
  OXA_TEST_EQUALS(7, listener.Interests());
  for (const std::uint32_t mask : {6U, 1U, 2U, 4U}) {
    listener.SetMask(mask);
    OXA_TEST_EQUALS(static_cast<long>(mask), listener.Interests());
  }
  CheckDataFilter();
}

void TEST_ErrorHandling::InPlaceHandling(std::string&) {
  const Lock lock(TheProcessMutex());
  OXA_TEST_ASSERT(CallsOfHandlers(true, true) == (Texts{"first asked", "second by prior"}));
  OXA_TEST_ASSERT(CallsOfHandlers(false, true) == (Texts{"first asked", "second asked", "first by latter"}));
  OXA_TEST_ASSERT(CallsOfHandlers(false, false) == (Texts{"first asked", "second asked", "base asked",
                                                          "first by latter", "second by latter"}));
  CheckWithoutAcceptingHandler();
  OXA_TEST_ASSERT(Raises<HandledError>(RaiseInPlace));  // nobody is left to ask
}

void TEST_ErrorHandling::Cloning(std::string&) {
  CheckClone();
  CheckSlicedError();
}

void TEST_ErrorHandling::ParameterizedBase(std::string&) {
  const DerivedNumberError error(17, "a part");
  OXA_TEST_ASSERT(MessageOf(error) == "Number 17 of a part");
  OXA_TEST_ASSERT(error.GetData(AlertInfo::sCATEGORY) == HardwareError::sCATEGORY);
  OXA_TEST_ASSERT(Raises<NumberError>([] { OXA_RAISE_ERROR(sLOG_NAME, DerivedNumberError(1, sERROR)); }));
  const std::string& classes = error.GetData(Error::sINHERITANCE);
  const std::string links =
      std::string("=>") + typeid(NumberError).name() + "=>" + typeid(DerivedNumberError).name();
  OXA_TEST_ASSERT(classes.find(links) == classes.size() - links.size());
}

// The path is the host's: it is set to what it is already, and to that again if it changes.
void TEST_ErrorHandling::FatalErrorBasePath(std::string&) {
  const Lock lock(TheProcessMutex());
  AlertManager& manager = *AlertManager::Instance();
  const KeptBasePath kept(manager);
  const std::string validPath = manager.GetFatalErrorBasePath();
  OXA_TEST_ASSERT(!validPath.empty() && std::string("/\\").find(validPath.back()) != std::string::npos);
  const bool canBeSet = PathName(validPath).IsValid();  // at first it is a folder of any name
  OXA_TEST_ASSERT(manager.SetFatalErrorBasePath(validPath) == canBeSet);
  OXA_TEST_ASSERT(validPath == manager.GetFatalErrorBasePath());

  const AlertTape tape(sINVALID_PATH);
  OXA_TEST_ASSERT(!manager.SetFatalErrorBasePath(sINVALID_PATH));
  OXA_TEST_ASSERT(validPath == manager.GetFatalErrorBasePath());
}

// Raises that halt a recursion forget all that are still alive on their thread. Those of the host stay.
void TEST_ErrorHandling::ErrorRecursion(std::string&) {
  Recursion recursion;
  if (ThreadSpecificErrorRecursionCount::Get() == 0) {
    Recurse(recursion);
  } else {
    std::thread(Recurse, std::ref(recursion)).join();
  }
  OXA_TEST_EQUALS(g_iMAX_ERROR_RECURSION_DEPTH, recursion.m_iRaises);
  OXA_TEST_EQUALS(0, recursion.m_iLiveRaises);
  OXA_TEST_ASSERT(recursion.m_bPlainError);
  OXA_TEST_ASSERT(recursion.m_sMessage == "recursion 0");
}

}  // namespace Oxa::Core

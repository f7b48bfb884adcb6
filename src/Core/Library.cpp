// Birth and death of the library on one page: every object that it builds while it loads, in order. They die
// in reverse order, behind the unload routine that the last line registers. What must be readable even after
// that is an ImmortalText, an Immortal, or constant-initialised where it stands.
//
// Nothing that the globals do in their constructors may raise an error: the texts of Error come after them.

#include <Infrastructure/OxaCore/AlertInfo.h>
#include <Infrastructure/OxaCore/AlertManager.h>
#include <Infrastructure/OxaCore/CodeContext.h>
#include <Infrastructure/OxaCore/CommonErrors.h>
#include <Infrastructure/OxaCore/Dictionary.h>
#include <Infrastructure/OxaCore/Encryption.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/Globals.h>
#include <Infrastructure/OxaCore/Lock.h>
#include <Infrastructure/OxaCore/LogManager.h>
#include <Infrastructure/OxaCore/Memory.h>
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/ModuleVersionInfo.h>
#include <Infrastructure/OxaCore/Singleton.h>
#include <Infrastructure/OxaCore/System.h>
#include <Infrastructure/OxaCore/Thread.h>
#include <Infrastructure/OxaCore/Time.h>
#include <Infrastructure/OxaCore/UnitDictionary.h>
#include <Infrastructure/OxaCore/UnitizedValue.h>
#include <Infrastructure/OxaCore/WrappingFileStream.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <atomic>
#include <boost/shared_ptr.hpp>
#include <cstddef>
#include <cstdlib>
#include <list>
#include <new>
#include <string>

#include "Core/Immortal.h"
#include "Core/LibraryGlobals.h"
#include "Core/Life.h"
#include "Encryption/AcquisitionMutex.h"
#include "ErrorHandling/MicrosoftDebugHelpLife.h"
#include "Notifications/TeardownMutex.h"
#include "Time/LocalTime.h"
#include "Units/StandardUnits.h"
#include "Utilities/DictionaryLife.h"
#include "XML/XMLParseMutex.h"

#include "Platform/Storage.h"

namespace Oxa::Core {

namespace {

// Room for at most SIZE objects that are built while the library loads and stay to the very end.
template <class T, std::size_t SIZE>
class Row {
 public:
  template <class... Arguments>
  T& Add(const Arguments&... arguments) {
    if (m_uCount == SIZE) std::abort();  // one more than the room was made for
    return *::new (static_cast<void*>(m_storage[m_uCount++])) T(arguments...);
  }

  void Destroy() {
    while (m_uCount > 0) std::launder(reinterpret_cast<T*>(m_storage[--m_uCount]))->~T();
  }

 private:
  alignas(T) unsigned char m_storage[SIZE][sizeof(T)] = {};
  std::size_t m_uCount = 0;
};

Row<std::string, 96> s_texts;
Row<boost::shared_ptr<UnitDictionary>, 1> s_dictionaries;
Row<UnitizedValue<double>, 14> s_quantities;

// Nobody can call in any more; this gives back what is held on the heap before the library goes.
void DestroyRows() {
  ReleaseDictionary();
  ReleaseStandardUnits();
  s_quantities.Destroy();
  s_dictionaries.Destroy();
  s_texts.Destroy();
}

}  // namespace

const std::string& ImmortalText(const char* text) { return s_texts.Add(text); }

namespace {

[[maybe_unused]] const bool s_bBegun = (Platform::CallAtVeryEnd(&DestroyRows), BeginLife(), true);

}  // namespace

// Keys of contexts and alerts.
const std::string& g_sNO_TEXT = ImmortalText("");

namespace {

Immortal<AlertData> s_noTable;

}  // namespace

const AlertData& CodeContext::sEMPTY_TABLE = s_noTable.Get();
const std::string& CodeContext::sFILE = ImmortalText("File");
const std::string& CodeContext::sLINE = ImmortalText("Line");
const std::string& CodeContext::sBUILD_TIME = ImmortalText("CompileTime");
const std::string& CodeContext::sFUNCTION = ImmortalText("FunctionName");
const std::string& CodeContext::sSIGNATURE = ImmortalText("FunctionSignature");
const std::string& CodeContext::sPROCESS = ImmortalText("ProcessName");
const std::string& CodeContext::sPROCESS_ID = ImmortalText("ProcessID");
const std::string& CodeContext::sTHREAD = ImmortalText("ThreadName");
const std::string& CodeContext::sTHREAD_ID = ImmortalText("ThreadID");
const std::string& CodeContext::sHOST = ImmortalText("HostName");
const std::string& CodeContext::sOPERATING_SYSTEM = ImmortalText("OperatingSystem");

const std::string& AlertInfo::sMESSAGE = ImmortalText("Message");
const std::string& AlertInfo::sSEVERITY = ImmortalText("Severity");
const std::string& AlertInfo::sCATEGORY = ImmortalText("Category");
const std::string& AlertInfo::sLOG_NAME = ImmortalText("LogName");
const std::string& AlertInfo::sTIME_STAMP = ImmortalText("TimeStamp");
const std::string& AlertInfo::sTYPE_NAME = ImmortalText("TypeName");

// What call stacks are read with: made by the first that is asked for, and given back by the unload routine.
namespace {

Immortal<Mutex> s_debugHelpMutex;
Immortal<boost::shared_ptr<MSWindows::DebugHelp>> s_debugHelp;

}  // namespace

}  // namespace Oxa::Core

Oxa::Core::Mutex& MSWindows::DebugHelp::s_mutex = Oxa::Core::s_debugHelpMutex.Get();
boost::shared_ptr<MSWindows::DebugHelp>& MSWindows::DebugHelp::s_spInstance = Oxa::Core::s_debugHelp.Get();

// From here on machine faults are dealt with.
MSWindows::SEHAdapter MSWindows::SEHAdapter::sm_Instance;

namespace Oxa::Core {

// What XML writing needs.
namespace {

Immortal<XMLAttributeMap<std::string>> s_noAttributes;

}  // namespace

const XMLAttributeMap<std::string>& XMLWriter::sEMPTY_MAP = s_noAttributes.Get();

// What dying listeners and sources take, and the registry of singletons: both outlive everything, the static
// objects of hosts included.
Immortal<Mutex> g_teardownMutex;

// What serialises the parses of XML: texts are parsed to the very end.
Immortal<Mutex> g_xmlParseMutex;

namespace {

Immortal<Mutex> s_registryMutex;
Immortal<std::list<ISingletonRegistryEntry*>> s_registry;

}  // namespace

Mutex& SingletonRegistry::m_mutex = s_registryMutex.Get();
std::list<ISingletonRegistryEntry*>& SingletonRegistry::m_registry = s_registry.Get();

// Threads, time and memory.
namespace {

[[maybe_unused]] const TimeZoneInfo s_zoneOfLoad;
Immortal<Mutex> s_stackSizeMutex;  // threads are made and started to the very end

}  // namespace

Mutex& Thread::s_mutex = s_stackSizeMutex.Get();

Time Time::s_unixEpochBase(1, 1, 1970, Elapse(0, Elapse::Seconds));
const Memory::MemoryLeakDetectOnOff Memory::DisableLeak(1);
const Memory::MemoryLeakDetectOnOff Memory::EnableLeak(0);

// The standard units: made when they are first asked for. Their users hold references, and may be threads that run on
// while the globals die: they are given up at the very end.
namespace {

Immortal<Mutex> s_standardUnitsMutex;
Immortal<boost::shared_ptr<UnitDictionary>> s_standardUnits;

}  // namespace

Mutex& UnitDictionary::sm_standardUnitsMutex = s_standardUnitsMutex.Get();
boost::shared_ptr<UnitDictionary>& UnitDictionary::sm_spStandardUnits = s_standardUnits.Get();

// The dictionary of atoms, which its first user makes, and makes anew after a shut-down, to the very end.
Immortal<Mutex> g_dictionaryMutex;
template <>
std::atomic<bool> Singleton<Dictionary>::m_bInstantiated{false};

// The globals.
namespace {

Immortal<ManagedGlobals> s_globals;

// Builds the globals and lets the container die. Not in a child that was forked off: a thread that exists in the
// parent only may hold its locks.
class Globals {
 public:
  Globals() {
    SetLibraryGlobals(&s_globals.Get());
    s_globals.Get().Add<System>("System");
    s_globals.Get().Add<AlertManager>("AlertManager");
    s_globals.Get().Add<LogManager>("LogManager");
  }
  Globals(const Globals&) = delete;
  Globals& operator=(const Globals&) = delete;
  ~Globals() {
    SetLibraryGlobals(nullptr);
    if (LoadedByThisProcess()) s_globals.Get().~ManagedGlobals();
  }
};

Globals s_theGlobals;

}  // namespace

// Categories and data keys of errors.
const std::string& Error::sINHERITANCE = ImmortalText("Inheritance");

const std::string& LogicError::sCATEGORY = ImmortalText("Logic");
const std::string& IOError::sCATEGORY = ImmortalText("I/O");
const std::string& OSError::sCATEGORY = ImmortalText("OperatingSystem");
const std::string& HardwareError::sCATEGORY = ImmortalText("Hardware");
const std::string& UnknownError::sCATEGORY = ImmortalText("Unknown");

const std::string& InvalidParameter::sPARAM_NAME = ImmortalText("ParamName");
const std::string& InvalidParameter::sPARAM_VALUE = ImmortalText("ParamValue");

// Keys of what a module says of itself.
const std::string& ModuleVersionInfo::sPATH_NAME = ImmortalText("PathName");
const std::string& ModuleVersionInfo::sFILE_NAME = ImmortalText("FileName");
const std::string& ModuleVersionInfo::sCOMMENTS = ImmortalText("Comments");
const std::string& ModuleVersionInfo::sCOMPANY_NAME = ImmortalText("CompanyName");
const std::string& ModuleVersionInfo::sFILE_DESCRIPTION = ImmortalText("FileDescription");
const std::string& ModuleVersionInfo::sFILE_VERSION = ImmortalText("FileVersion");
const std::string& ModuleVersionInfo::sINTERNAL_NAME = ImmortalText("InternalName");
const std::string& ModuleVersionInfo::sLEGAL_COPYRIGHT = ImmortalText("LegalCopyright");
const std::string& ModuleVersionInfo::sLEGAL_TRADEMARKS = ImmortalText("LegalTrademarks");
const std::string& ModuleVersionInfo::sORIGINAL_FILENAME = ImmortalText("OriginalFilename");
const std::string& ModuleVersionInfo::sPRODUCT_NAME = ImmortalText("ProductName");
const std::string& ModuleVersionInfo::sPRODUCT_VERSION = ImmortalText("ProductVersion");
const std::string& ModuleVersionInfo::sSPECIAL_BUILD = ImmortalText("SpecialBuild");

// What the last failed acquisition of an encryptor complained of.
Immortal<Mutex> g_acquisitionMutex;
std::string& Encryptor::sm_sLastAcquisitionError = s_texts.Add("");

// Where logs of hosts complain.
const std::string& WrappingFileStream::s_logPath = ImmortalText("OxaCore.WrappingFileStream");

// The global dictionary of units, and quantities without a unit. Static objects of hosts use them from their
// constructors on and, where they are older than the library, in their destructors after the globals have died.
boost::shared_ptr<UnitDictionary>& UnitizedValueBase::sm_spGlobalDictionary = s_dictionaries.Add();
UnitizedValueBase::Initializer UnitizedValueBase::sm_Initializer;

const UnitizedValue<double>& uv1 = s_quantities.Add(1.0);
const UnitizedValue<double>& uv2 = s_quantities.Add(2.0);
const UnitizedValue<double>& uvE = s_quantities.Add(2.718281828459045235);
const UnitizedValue<double>& uvPI = s_quantities.Add(3.141592653589793238);
const UnitizedValue<double>& uv2_PI = s_quantities.Add(6.283185307179586477);
const UnitizedValue<double>& uvSQRT_2 = s_quantities.Add(1.414213562373095049);
const UnitizedValue<double>& uvSQRT_2_PI = s_quantities.Add(2.506628274631000502);
const UnitizedValue<double>& uvNEGATIVE_1 = s_quantities.Add(-1.0);
const UnitizedValue<double>& uvNEGATIVE_2 = s_quantities.Add(-2.0);
const UnitizedValue<double>& uvNEGATIVE_E = s_quantities.Add(-2.718281828459045235);
const UnitizedValue<double>& uvNEGATIVE_PI = s_quantities.Add(-3.141592653589793238);
const UnitizedValue<double>& uvNEGATIVE_2_PI = s_quantities.Add(-6.283185307179586477);
const UnitizedValue<double>& uvNEGATIVE_SQRT_2 = s_quantities.Add(-1.414213562373095049);
const UnitizedValue<double>& uvNEGATIVE_SQRT_2_PI = s_quantities.Add(-2.506628274631000502);

namespace {

// From here on everything is there that a walk over a stack needs.
[[maybe_unused]] const bool s_bStacksBegun = (MSWindows::DebugHelpLife::Begin(), true);

// Last of all, so that the unload routine runs first.
[[maybe_unused]] const bool s_bUnloadHooked = Platform::CallAtUnload(&UnloadRoutine);

}  // namespace

}  // namespace Oxa::Core

// Kinds and places, and what follows from them. Special rows stand in Troubles.cpp.
#include <signal.h>

#include <algorithm>
#include <cstddef>

#include "Facts.h"
#include "Row.h"

namespace Deaths {

namespace {

const char* const sNO_MESSAGE = "No Message";

constexpr int iMINUS_ONE = 255;
constexpr int iWENT_ON = 7;

const Kind sKINDS[] = {
    {"null-write", ERoad::eFAULT, SIGSEGV, "Illegal write to virtual address 0 from 0x", "DieByNullWrite"},
    {"null-read", ERoad::eFAULT, SIGSEGV, "Illegal read from virtual address 0 from 0x", "DieByNullRead"},
    {"null-call", ERoad::eFAULT, SIGSEGV, "Illegal read from virtual address 0 from 0", "DieByNullCall", 2},
    {"wild-pointer", ERoad::eFAULT, SIGSEGV, "Illegal write to virtual address 0x123456789000 from 0x",
     "DieByWildPointer"},
    {"non-canonical", ERoad::eFAULT, SIGSEGV, "Illegal read from virtual address ",
     "DieByNonCanonicalAddress"},
    {"constant-write", ERoad::eFAULT, SIGSEGV, "Illegal write to virtual address 0x",
     "DieByWritingAConstant"},
    {"int-divide", ERoad::eFAULT, SIGFPE, "Integer divide by zero attempted at 0x", "DieByIntDivide"},
    {"int-overflow", ERoad::eFAULT, SIGFPE, "Integer ", "DieByIntOverflow"},
    {"illegal-instruction", ERoad::eFAULT, SIGILL, "Attempted to execute an illegal instruction from 0x",
     "DieByIllegalInstruction"},
    {"privileged-instruction", ERoad::eFAULT, SIGSEGV,
     "Attempted to execute instruction not allowed in current machine mode from 0x",
     "DieByPrivilegedInstruction"},
    {"misalignment", ERoad::eFAULT, SIGBUS, "Attempted to access misaligned data from 0x",
     "DieByMisalignment"},
    {"bus-error", ERoad::eFAULT, SIGBUS, "Attempted to access unreachable page from 0x", "DieByBusError"},
    {"data-jump", ERoad::eFAULT, SIGSEGV, "Illegal read from virtual address 0x", "DieByJumpIntoData", 2},
    {"float-divide", ERoad::eFAULT, SIGFPE, "Floating point divide by zero attempted at 0x",
     "DieByFloatDivide"},
    {"float-invalid", ERoad::eFAULT, SIGFPE, "Invalid floating point operation attempted at 0x",
     "DieByFloatInvalid"},
    {"float-overflow", ERoad::eFAULT, SIGFPE, "Exceeded maximum exponent for float operation at 0x",
     "DieByFloatOverflow"},
    {"float-underflow", ERoad::eFAULT, SIGFPE, "Result below minimum exponent for float operation at 0x",
     "DieByFloatUnderflow"},
    {"float-denormal", ERoad::eFAULT, SIGFPE, "One of the operands in a floating-point operation from 0x",
     "DieByFloatDenormal"},
    {"float-inexact", ERoad::eFAULT, SIGFPE, sNO_MESSAGE,
     ""},  // has no class: the translator raises another error
    {"stack-overflow", ERoad::eOVERFLOW, SIGSEGV, "Stack overflow detected at 0x", "DieByStackOverflow"},
    {"trashed-return", ERoad::eBROKEN_STACK, SIGSEGV, "", "DieByTrashedReturn"},
    {"return-to-nowhere", ERoad::eBROKEN_STACK, SIGSEGV, "", ""},
    {"return-to-null", ERoad::eBROKEN_STACK, SIGSEGV, "", ""},
    {"corrupted-stack", ERoad::eBROKEN_STACK, SIGSEGV, "", "DieOnACorruptedStack"},
    {"looping-stack", ERoad::eBROKEN_STACK, SIGSEGV, "", "DieOnAStackThatLoops"},
    {"wild-stack", ERoad::eWILD_STACK, SIGSEGV, "", "DieOnAWildStack"},
    {"malloc", ERoad::eLOCKED_ALLOCATOR, SIGSEGV, sNO_MESSAGE, "DieInMalloc", 4},
    {"malloc-locked", ERoad::eLOCKED_ALLOCATOR, SIGSEGV, sNO_MESSAGE, "DieInMallocWithTheLock", 4},
    {"free-wild", ERoad::eALLOCATOR, SIGSEGV, sNO_MESSAGE, "DieByFreeingAWildPointer", 4},
    {"free-stack", ERoad::eSIGNAL, SIGABRT, "", ""},
    {"free-twice", ERoad::eSIGNAL, SIGABRT, "", ""},
    {"out-of-memory", ERoad::eNO_MEMORY, SIGABRT, "", "DieOutOfMemory", 2},
    {"error", ERoad::eERROR, SIGABRT, "nobody &lt;catches&gt; this", "DieByAnError"},
    {"std-exception", ERoad::eEXCEPTION, SIGABRT, sNO_MESSAGE, "DieByAStdException"},
    {"number", ERoad::eEXCEPTION, SIGABRT, sNO_MESSAGE, "DieByANumber"},
    {"terminate", ERoad::eNO_EXCEPTION, SIGABRT, sNO_MESSAGE, "DieByTerminate"},
    {"pure-call", ERoad::eNO_EXCEPTION, SIGABRT, sNO_MESSAGE, "DieByAPureCall"},
    {"noexcept", ERoad::eWALLED_ERROR, SIGABRT, "nobody &lt;catches&gt; this", "DieByAnError"},
    {"noexcept-fault", ERoad::eWALLED_FAULT, SIGSEGV, "Illegal write to virtual address 0 from 0x",
     "DieByNullWrite"},
    {"unwinding", ERoad::eTERMINATE, SIGABRT, "", ""},
    {"abort", ERoad::eSIGNAL, SIGABRT, "", ""},
    {"assertion", ERoad::eSIGNAL, SIGABRT, "", ""},
    {"term-sent", ERoad::eSIGNAL, SIGTERM, "", ""},
    {"segv-sent", ERoad::eSIGNAL, SIGSEGV, "", ""},
    {"fpe-sent", ERoad::eSIGNAL, SIGFPE, "", ""},
};

const Place sPLACES[] = {
    {"main"},
    {"bare"},
    {"static-constructor"},
    {"static-destructor"},
    {"atexit"},
    {"handler"},
    {"child"},
    {"thread", true, EOutcome::eSURVIVES},
    {"wall"},
    {"pool", true, EOutcome::eSURVIVES},
    {"translated"},
    {"std-thread", false},
    {"small", false},
    {"small-translated"},
    {"unload", true, EOutcome::eUNLOADING},
    {"after-unload", false, EOutcome::eUNLOADED},
};

void ExpectNoFiles(Row& row) {
  row.m_reports = NONE;
  row.m_dumps = NONE;
  row.m_eWhere = EWhere::eNOWHERE;
  row.m_sMessage.clear();
  row.m_sTop.clear();
}

// No listener hears and no whole report is written any more, but the dump is.
void ExpectDumpInTheWorkingFolder(Row& row) {
  row.m_reports = ANY;
  row.m_sMessage.clear();
  row.m_bInReport = false;
  row.m_eWhere = EWhere::eWORKING;
}

bool IsTranslated(ERoad road) {
  return road == ERoad::eFAULT || road == ERoad::eOVERFLOW || road == ERoad::eWALLED_FAULT;
}

bool IsThrown(ERoad road) {
  return road == ERoad::eERROR || road == ERoad::eEXCEPTION || road == ERoad::eNO_MEMORY;
}

bool IsKilledByTheSystem(const Kind& kind, const Place& place) {
  if (kind.m_eRoad == ERoad::eSIGNAL) return true;
  const bool needsAnotherStack = kind.m_eRoad == ERoad::eOVERFLOW || kind.m_eRoad == ERoad::eWILD_STACK;
  return place.m_eOutcome == EOutcome::eUNLOADED || (needsAnotherStack && !place.m_bTranslated);
}

// A raise returns when the library is about to go, and the program goes on.
bool IsRaisedInVain(const Kind& kind, const Place& place) {
  const bool raised = kind.m_eRoad == ERoad::eERROR || kind.m_eRoad == ERoad::eWALLED_ERROR;
  return raised && (place.m_eOutcome == EOutcome::eUNLOADING || place.m_eOutcome == EOutcome::eUNLOADED);
}

bool IsSurvived(const Kind& kind, const Place& place) {
  if (IsRaisedInVain(kind, place)) return true;
  const bool caught =
      kind.m_eRoad == ERoad::eFAULT || kind.m_eRoad == ERoad::eOVERFLOW || IsThrown(kind.m_eRoad);
  return caught && place.m_eOutcome == EOutcome::eSURVIVES;
}

// Whether one end of several is right: nobody can know what is read from what was trashed, and whether a fault passes
// a noexcept function is up to the compiler of that function.
bool IsOpen(const Kind& kind, const Place& place) {
  const bool open = kind.m_eRoad == ERoad::eBROKEN_STACK || kind.m_eRoad == ERoad::eWALLED_FAULT;
  return open && place.m_eOutcome == EOutcome::eSURVIVES;
}

std::string MessageOf(const Kind& kind, const Place& place) {
  if (IsTranslated(kind.m_eRoad) && !place.m_bTranslated) return sNO_MESSAGE;
  return kind.m_sMessage;
}

bool MakesSense(const Kind& kind, const Place& place) {
  // A process without memory doesn't go on.
  return kind.m_eRoad != ERoad::eNO_MEMORY || place.m_eOutcome != EOutcome::eSURVIVES;
}

}  // namespace

const Kind& KindOf(const std::string& name) {
  return *std::find_if(std::begin(sKINDS), std::end(sKINDS),
                       [&](const Kind& kind) { return kind.m_sName == name; });
}

const Place& PlaceOf(const std::string& name) {
  return *std::find_if(std::begin(sPLACES), std::end(sPLACES),
                       [&](const Place& place) { return place.m_sName == name; });
}

Row RowOf(const Kind& kind, const Place& place) {
  Row row;
  row.m_sKind = kind.m_sName;
  row.m_sPlace = place.m_sName;
  row.m_statuses = {iMINUS_ONE};
  row.m_sMessage = MessageOf(kind, place);
  row.m_sTop = kind.m_sTop;
  row.m_iTopWithin = kind.m_iTopWithin;
  row.m_bInReport = !row.m_sMessage.empty() && row.m_sMessage != sNO_MESSAGE;
  if (kind.m_eRoad == ERoad::eNO_MEMORY) row.m_reports = ANY;
  if (kind.m_eRoad == ERoad::eLOCKED_ALLOCATOR) {
    row.m_bSlow = true;
    row.m_sMessage.clear();
  }
  if (kind.m_eRoad == ERoad::eNO_EXCEPTION) row.m_dumps = NONE;
  if (IsSurvived(kind, place)) {
    row.m_statuses = {iWENT_ON};
    ExpectNoFiles(row);
  } else if (IsKilledByTheSystem(kind, place)) {
    row.m_statuses = {-kind.m_iSignal};
    ExpectNoFiles(row);
  } else if (IsOpen(kind, place)) {
    row.m_statuses.insert(iWENT_ON);
    row.m_reports = row.m_dumps = ANY;
  } else if (place.m_eOutcome == EOutcome::eUNLOADING) {
    ExpectDumpInTheWorkingFolder(row);
  }
  return row;
}

std::vector<Row> PlainRows() {
  std::vector<Row> rows;
  for (const Kind& kind : sKINDS)
    for (const Place& place : sPLACES)
      if (MakesSense(kind, place)) rows.push_back(RowOf(kind, place));
  return rows;
}

// Each kind once, each place two or three times.
std::vector<Row> DiagonalRows() {
  std::vector<Row> rows;
  constexpr std::size_t uPLACES = std::size(sPLACES);
  for (std::size_t kind = 0; kind < std::size(sKINDS); ++kind) {
    const Place& place = sPLACES[(kind * 5 + 3) % uPLACES];
    rows.push_back(RowOf(sKINDS[kind], MakesSense(sKINDS[kind], place) ? place : sPLACES[0]));
  }
  return rows;
}

}  // namespace Deaths

// What is known of a kind of death and of a place, before the two meet.
#ifndef OXACORE_TESTS_DEATHS_FACTS_H
#define OXACORE_TESTS_DEATHS_FACTS_H

#include <string>
#include <vector>

#include "Row.h"

namespace Deaths {

enum class ERoad {
  eFAULT,             ///< of the machine: becomes an error where there is a translator
  eOVERFLOW,          ///< of the stack: takes another stack to tell of it
  eBROKEN_STACK,      ///< a fault whose callers can't be found
  eWILD_STACK,        ///< a fault without a stack at all
  eALLOCATOR,         ///< a fault in the allocator: nothing can be raised there
  eLOCKED_ALLOCATOR,  ///< one that nothing can be allocated after
  eWALLED_FAULT,      ///< a fault that may not leave its function
  eERROR,             ///< of the library's family
  eWALLED_ERROR,      ///< one that may not leave its function
  eEXCEPTION,         ///< of another one
  eNO_MEMORY,         ///< an exception, when there is nothing to report it with
  eTERMINATE,         ///< the runtime gives up, whoever would catch
  eNO_EXCEPTION,      ///< the same without an exception in hand, so that there is nothing to dump
  eSIGNAL             ///< somebody sent it: no fault
};

struct Kind {
  std::string m_sName;
  ERoad m_eRoad;
  int m_iSignal;           ///< that ends the process where the library doesn't
  std::string m_sMessage;  ///< of the error in the report
  std::string m_sTop;
  int m_iTopWithin = 1;
};

enum class EOutcome {
  eDIES,
  eSURVIVES,   ///< the library's own thread keeps the error, and the process goes on
  eUNLOADING,  ///< the library is about to go
  eUNLOADED    ///< it is gone
};

struct Place {
  std::string m_sName;
  bool m_bTranslated = true;
  EOutcome m_eOutcome = EOutcome::eDIES;
};

const Kind& KindOf(const std::string& name);
const Place& PlaceOf(const std::string& name);
Row RowOf(const Kind& kind, const Place& place);

/// Every kind at every place.
std::vector<Row> PlainRows();
/// Each kind at one place, another one for each.
std::vector<Row> DiagonalRows();

/// Those with a trouble, several threads, other policies. Slow ones are included.
std::vector<Row> SpecialRows();

}  // namespace Deaths

#endif

#include "ErrorHandling/PlaceTables.h"

#include <boost/make_shared.hpp>
#include <cstdint>
#include <cstring>
#include <utility>

#include "Core/Immortal.h"
#include "ErrorHandling/AlertTraffic.h"
#include "ErrorHandling/FunctionName.h"
#include "ErrorHandling/Hooks.h"
#include "ErrorHandling/KeptSets.h"
#include "Platform/Faults.h"

namespace Oxa::Core {

namespace {

const char* const sUNKNOWN_LINE = "Unknown";
constexpr std::size_t uBUCKETS = 8;

void StoreUnlessEmpty(AlertData& table, const std::string& key, const std::string& value) {
  if (!value.empty()) table[key] = value;
}

void Describe(AlertData& table, const std::string& file, int line, const std::string& buildTime,
              const std::string& function, const std::string& signature) {
  table[CodeContext::sFILE] = file;
  table[CodeContext::sLINE] = line < 0 ? sUNKNOWN_LINE : std::to_string(line);
  StoreUnlessEmpty(table, CodeContext::sBUILD_TIME, buildTime);
  StoreUnlessEmpty(table, CodeContext::sFUNCTION, function);
  StoreUnlessEmpty(table, CodeContext::sSIGNATURE, signature);
  // System may be gone by then, and nothing here may touch it.
  const AlertInFlight flight;
  if (flight.MayProceed()) TheHooks().addCircumstances(table);
}

const std::string& TextIn(const AlertData& table, const std::string& key) {
  const auto entry = table.find(key);
  return entry == table.end() ? g_sNO_TEXT : entry->second;
}

// A table with what has to be the same for it to serve again.
class KeptTable {
 public:
  KeptTable(const CodePlace& place, const CircumstancesMark& mark, PlaceTable table)
      : m_place(place),
        m_mark(mark),
        m_spTable(std::move(table)),
        m_rFile(TextIn(*m_spTable, CodeContext::sFILE)),
        m_rBuildTime(TextIn(*m_spTable, CodeContext::sBUILD_TIME)),
        m_rSignature(TextIn(*m_spTable, CodeContext::sSIGNATURE)) {}

  bool Serves(const CodePlace& place, const CircumstancesMark& mark) const {
    return m_place.m_pSignature == place.m_pSignature && m_place.m_iLine == place.m_iLine && m_mark == mark &&
           IsText(m_rFile, place.m_pFile) && IsText(m_rBuildTime, place.m_pBuildTime) &&
           IsText(m_rSignature, place.m_pSignature);
  }

  const PlaceTable& Get() const { return m_spTable; }

 private:
  // Both come from literals: one pass, where the operator would measure one of them first.
  static bool IsText(const std::string& kept, const char* text) {
    return std::strcmp(kept.c_str(), text) == 0;
  }

  const CodePlace m_place;
  const CircumstancesMark m_mark;
  const PlaceTable m_spTable;
  const std::string& m_rFile;
  const std::string& m_rBuildTime;
  const std::string& m_rSignature;
};

using KeptPointer = boost::shared_ptr<const KeptTable>;

KeptSets<KeptTable, 5> s_tables;

std::uint64_t KeyOf(const CodePlace& place, const CircumstancesMark& mark) {
  const auto address = reinterpret_cast<std::uintptr_t>(place.m_pSignature);
  return address + 31 * static_cast<std::uint64_t>(place.m_iLine) + mark.m_ulThread;
}

PlaceTable Describe(const CodePlace& place, bool& whole) {
  return DescribePlace(place.m_pFile, place.m_iLine, place.m_pBuildTime, FunctionName(place.m_pSignature),
                       place.m_pSignature, whole);
}

}  // namespace

PlaceTable DescribePlace(const std::string& file, int line, const std::string& buildTime,
                         const std::string& function, const std::string& signature, bool& whole) {
  whole = false;
  boost::shared_ptr<AlertData> table;
  try {
    table = boost::make_shared<AlertData>(uBUCKETS);
    Describe(*table, file, line, buildTime, function, signature);
    whole = true;
  } catch (...) {
    Platform::LetCancellationPass();
    // A place is told as far as memory allows; the failure that it is told for matters more.
  }
  return table;
}

PlaceTable TableOf(const CodePlace& place) {
  bool whole = false;
  const AlertInFlight flight;
  const CircumstancesMark mark = flight.MayProceed() ? TheHooks().markCircumstances() : CircumstancesMark();
  if (!mark.IsThere()) return Describe(place, whole);
  const std::uint64_t key = KeyOf(place, mark);
  PlaceTable table = s_tables.Find<PlaceTable>(
      key, [&](const KeptPointer& kept) { return kept->Serves(place, mark) ? kept->Get() : PlaceTable(); });
  if (table) return table;
  table = Describe(place, whole);
  if (!whole) return table;
  s_tables.Keep(
      key, [&](const KeptPointer& kept) { return kept->Serves(place, mark); },
      [&] { return boost::make_shared<const KeptTable>(place, mark, table); });
  return table;
}

void ForgetPlaceTables() noexcept { s_tables.Forget(); }

}  // namespace Oxa::Core

// Deaths with more than one thing wrong, by several threads, or with other settings.
#include <signal.h>

#include <map>

#include "Facts.h"

namespace Deaths {

namespace {

using Rows = std::vector<Row>;

Row With(Row row, const std::string& argument) {
  row.m_more.push_back(argument);
  return row;
}

Row Plain(const char* kind, const char* place) { return RowOf(KindOf(kind), PlaceOf(place)); }

// A fault that becomes an error, one that doesn't, an error.
Rows Thrice() {
  return {Plain("null-write", "main"), Plain("null-write", "std-thread"), Plain("error", "main")};
}

template <class Change>
void Add(Rows& rows, const Rows& from, const char* argument, Change change) {
  for (const Row& row : from) {
    Row changed = With(row, argument);
    change(changed);
    rows.push_back(changed);
  }
}

void AsEver(Row&) {}

// The end comes, by itself or by the watch, and what was written before the trouble is there.
void WithDump(Row& row) {
  row.m_reports = ANY;
  row.m_sMessage.clear();
  row.m_bWhole = false;
}

void Whatever(Row& row) {
  WithDump(row);
  row.m_dumps = ANY;
}

void Slow(Row& row) { row.m_bSlow = true; }

void SlowWithDump(Row& row) {
  Slow(row);
  WithDump(row);
}

void AddWitnesses(Rows& rows) {
  for (const char* trouble : {"witness-fault", "witness-error", "witness-number", "hearer-error", "log-error",
                              "log-fault", "exit-fault", "exit-terminate"})
    Add(rows, Thrice(), (std::string("trouble=") + trouble).c_str(), AsEver);
  Add(rows, Thrice(), "trouble=witness-terminate", AsEver);
  Add(rows, Thrice(), "trouble=witness-overflow", AsEver);
  Add(rows, Thrice(), "trouble=hearer-fault", [](Row& row) { row.m_sMessage.clear(); });
  Add(rows, Thrice(), "trouble=log-terminate", [](Row& row) {
    row.m_sTop.clear();      // two threads die, and either may be first
    row.m_iMostFolders = 2;  // the second one when the library is unloading already
    Slow(row);
    Whatever(row);
  });
  Add(rows, Thrice(), "trouble=witness-exit", [](Row& row) { row.m_statuses = {3}; });
  Add(rows, Thrice(), "trouble=witness-malloc", Slow);
  Add(rows, Thrice(), "trouble=witness-hang", Slow);
  Add(rows, Thrice(), "trouble=exit-hang", Slow);
  Add(rows, Thrice(), "trouble=log-hang", SlowWithDump);
  Add(rows, Thrice(), "trouble=log-malloc", [](Row& row) {
    SlowWithDump(row);
    row.m_sTop.clear();
  });
}

// Deaths that take none of these locks before they are deaths: a raise would wait for ever, like all else.
void AddLocks(Rows& rows) {
  const Rows dying = {Plain("null-write", "std-thread"), Plain("number", "main")};
  for (const char* trouble : {"output-held", "loader-held", "walk-held"})
    Add(rows, dying, (std::string("trouble=") + trouble).c_str(), SlowWithDump);
  Add(rows, {Plain("null-write", "std-thread"), Plain("terminate", "std-thread")}, "trouble=heap-held",
      SlowWithDump);
}

void AddWithheld(Rows& rows) {
  Add(rows, Thrice(), "around=no-trace", AsEver);
  Add(rows, Thrice(), "around=no-look", AsEver);
  Add(rows, {Plain("null-write", "main"), Plain("error", "main")}, "around=no-threads", AsEver);
  Add(rows, Thrice(), "around=no-proc", [](Row& row) {
    row.m_sTop.clear();
    row.m_bInReport = false;
  });
  for (const char* room : {"around=full-disk", "around=one-page", "around=small-files"})
    Add(rows, Thrice(), room, [](Row& row) {
      Whatever(row);
      row.m_bAllOrNothing = true;
      row.m_sTop.clear();
    });
  Add(rows, Thrice(), "around=no-handles", [](Row& row) {
    Whatever(row);
    row.m_eWhere = EWhere::eNOWHERE;
  });
  for (const char* program : {"around=replaced", "around=removed"})
    Add(rows, Thrice(), program, [](Row& row) {
      row.m_sTop.clear();
      row.m_bInReport = false;
    });
  Add(rows, Thrice(), "around=no-symbols", [](Row& row) {
    row.m_dumps = NONE;
    row.m_bInReport = false;
  });
  Add(rows, {Plain("null-write", "main"), Plain("int-divide", "std-thread")}, "around=blocked", [](Row& row) {
    row.m_statuses = {row.m_sKind == "null-write" ? -SIGSEGV : -SIGFPE};
    row.m_reports = row.m_dumps = NONE;
    row.m_eWhere = EWhere::eNOWHERE;
  });
}

void AddFolders(Rows& rows) {
  for (Row row : Thrice()) {
    row.m_eFolders = EFolders::eBASE_IMPOSSIBLE;
    row.m_eWhere = EWhere::ePROGRAM;
    rows.push_back(row);
    row = With(row, "around=no-privileges");
    row.m_eFolders = EFolders::eBASE_READ_ONLY;
    rows.push_back(row);
    row.m_eFolders = EFolders::eWORKING_ONLY;
    row.m_eWhere = EWhere::eWORKING;
    rows.push_back(row);
    row.m_eFolders = EFolders::eALL_READ_ONLY;
    row.m_eWhere = EWhere::eNOWHERE;
    row.m_reports = row.m_dumps = NONE;
    rows.push_back(row);
  }
}

void AddThreads(Rows& rows) {
  for (const char* place : {"std-thread", "translated", "small", "small-translated", "wall"})
    for (const char* kind : {"null-write", "int-divide", "malloc-locked", "error", "number", "terminate"}) {
      rows.push_back(With(Plain(kind, place), "threads=8"));
      if (kind == std::string("error") || kind == std::string("null-write")) {
        Row many = With(With(Plain(kind, place), "threads=8"), "reports=8");
        many.m_reports = many.m_dumps = SOME;
        rows.push_back(many);
      }
    }
}

void AddSettings(Rows& rows) {
  for (const char* kind : {"null-write", "error", "malloc-locked", "stack-overflow", "number"})
    for (const char* place : {"main", "std-thread", "translated"}) {
      const Row row = Plain(kind, place);
      for (const char* policy : {"policy=0", "policy=2", "policy=3", "policy=17"})
        rows.push_back(With(row, policy));
      Add(rows, {row}, "end=signal", [&](Row& changed) { changed.m_statuses = {-KindOf(kind).m_iSignal}; });
      Add(rows, {row}, "reports=0", [](Row& changed) {
        if (changed.m_dumps.m_iMost == 0) return;
        changed.m_reports = changed.m_dumps = NONE;
        changed.m_eWhere = EWhere::eNOWHERE;
      });
    }
  for (const char* kind : {"int-divide", "illegal-instruction", "bus-error", "std-exception", "terminate"})
    Add(rows, {Plain(kind, "main")}, "end=signal",
        [&](Row& changed) { changed.m_statuses = {-KindOf(kind).m_iSignal}; });
  Add(rows, {With(Plain("error", "main"), "reports=2")}, "trouble=witness-terminate", [](Row& row) {
    row.m_reports = {2, 2};
    row.m_dumps = {2, 2};
  });
  Add(rows, {With(Plain("null-write", "main"), "end=signal")}, "trouble=witness-hang", [](Row& row) {
    row.m_statuses = {-SIGSEGV};
    row.m_bSlow = true;
  });
}

// Three slow ones are enough where time is short.
bool BelongsToTheShortForm(const Row& row) {
  if (!row.m_bSlow) return true;
  if (row.m_more.size() != 1) return false;
  return (row.m_sPlace == "main" && row.m_sKind == "error" && row.m_more[0] == "trouble=witness-hang") ||
         (row.m_sKind == "null-write" && row.m_more[0] == "trouble=heap-held");
}

// What is special about a row, whatever it dies of. Deaths of several threads differ by their place.
std::string Speciality(const Row& row) {
  std::string text = std::to_string(static_cast<int>(row.m_eFolders));
  for (const std::string& more : row.m_more) text += " " + more + (more == "threads=8" ? row.m_sPlace : "");
  return text;
}

// One row of each speciality: a fault, an error, another fault, by turns.
Rows OneOfEach(const Rows& rows) {
  std::map<std::string, Rows> groups;
  for (const Row& row : rows)
    if (BelongsToTheShortForm(row)) groups[Speciality(row)].push_back(row);
  Rows some;
  std::size_t turn = 0;
  for (const auto& [speciality, group] : groups) some.push_back(group[turn++ % group.size()]);
  return some;
}

}  // namespace

std::vector<Row> SpecialRows() {
  Rows rows;
  AddWitnesses(rows);
  AddLocks(rows);
  AddWithheld(rows);
  AddFolders(rows);
  AddThreads(rows);
  AddSettings(rows);
  return rows;
}

std::vector<Row> AllRows() {
  Rows rows = SpecialRows();
  for (const Row& row : PlainRows()) rows.push_back(row);
  return rows;
}

std::vector<Row> ShortRows() {
  Rows rows = OneOfEach(SpecialRows());
  bool slow = false;
  for (const Row& row : DiagonalRows()) {
    if (!row.m_bSlow || !slow) rows.push_back(row);
    slow = slow || row.m_bSlow;
  }
  constexpr std::size_t uHUNDRED = 100;
  for (const Row& row : PlainRows())
    if (rows.size() < uHUNDRED && row.m_sPlace == "main" && !row.m_bSlow) rows.push_back(row);
  return rows;
}

}  // namespace Deaths

// Has hosts die, several at a time, and tells how it went.
//   DeathDriver HOST short           a hundred deaths
//   DeathDriver HOST full [COUNT]    so many (1000), each row of the table at least once; a debugger looks at the dumps
//   DeathDriver HOST only KIND PLACE [ARGUMENT...]   one, with what it leaves shown; "*" stands for all
// A table comes last. The status is 0 if every death was as it should be.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Debugger.h"
#include "Row.h"
#include "Run.h"
#include "Verdict.h"

using namespace Deaths;

namespace {

// Deaths at a time: those that work, and beside them those that only wait for the watch.
constexpr std::size_t uFAST = 3;
constexpr std::size_t uSLOW = 8;
constexpr std::size_t uBATCH = 40;  // dumps for one debugger

std::string Describe(const Row& row) {
  std::string text = row.m_sKind + ", " + row.m_sPlace;
  for (const std::string& more : row.m_more) text += ", " + more;
  if (row.m_eFolders != EFolders::eALL)
    text += ", folders " + std::to_string(static_cast<int>(row.m_eFolders));
  return text;
}

struct Line {
  int m_iRuns = 0;
  int m_iEnded = 0;
  int m_iHung = 0;
  int m_iFolders = 0;
  int m_iReports = 0;
  int m_iGoodReports = 0;
  int m_iDumps = 0;
  int m_iGoodDumps = 0;
  int m_iWrong = 0;
  double m_dSlowest = 0;

  void Add(const Run& run, const Verdict& verdict) {
    ++m_iRuns;
    verdict.m_bEnded ? ++m_iEnded : ++m_iHung;
    m_iFolders += verdict.m_iFolders;
    m_iReports += verdict.m_iReports;
    m_iGoodReports += verdict.m_iGoodReports;
    m_iDumps += verdict.m_iDumps;
    m_iGoodDumps += verdict.m_iGoodDumps;
    m_iWrong += verdict.m_complaints.empty() ? 0 : 1;
    m_dSlowest = std::max(m_dSlowest, run.Seconds());
  }

  void Print(const std::string& name) const {
    std::printf("%-62s %5d %5d %5d %7d %5d/%-5d %5d/%-5d %6.2f %6d\n", name.c_str(), m_iRuns, m_iEnded,
                m_iHung, m_iFolders, m_iGoodReports, m_iReports, m_iGoodDumps, m_iDumps, m_dSlowest,
                m_iWrong);
  }
};

class Driver {
 public:
  Driver(std::string host, bool debug) : m_sHost(std::move(host)), m_bDebug(debug) {}

  void Die(const std::vector<Row>& rows) {
    for (const Row& row : rows) (row.m_bSlow ? m_slow : m_fast).push_back(row);
    while (!m_fast.empty() || !m_slow.empty() || !m_running.empty()) {
      StartSome(m_slow, uSLOW, true);
      StartSome(m_fast, uFAST, false);
      Collect();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    Debug();
  }

  bool Print() const {
    std::printf("\n%-62s %5s %5s %5s %7s %11s %11s %6s %6s\n", "kind, place", "runs", "ended", "hung",
                "folders", "XML/reports", "good/dumps", "slowest", "wrong");
    for (const auto& [name, line] : m_lines) line.Print(name);
    m_sum.Print("all");
    if (m_iImpossible > 0) std::printf("%d more can't be had on this machine\n", m_iImpossible);
    return m_sum.m_iWrong == 0 && m_sum.m_iRuns > 0;
  }

 private:
  using Runs = std::list<std::unique_ptr<Run>>;

  struct Debugged {
    std::unique_ptr<Run> m_run;
    Verdict m_verdict;
    std::vector<std::vector<std::string>> m_tops;
  };

  void StartSome(std::list<Row>& rows, std::size_t most, bool slow) {
    const auto alike = [&](const std::unique_ptr<Run>& run) { return run->What().m_bSlow == slow; };
    auto running = static_cast<std::size_t>(std::count_if(m_running.begin(), m_running.end(), alike));
    for (; !rows.empty() && running < most; ++running) {
      m_running.push_back(std::make_unique<Run>(rows.front(), m_sHost));
      rows.pop_front();
    }
  }

  void Collect() {
    for (auto run = m_running.begin(); run != m_running.end();) {
      if (!(*run)->IsOver()) {
        ++run;
        continue;
      }
      Finish(std::move(*run));
      run = m_running.erase(run);
    }
  }

  void Finish(std::unique_ptr<Run> run) {
    const Verdict verdict = Judge(*run);
    if (!verdict.m_bPossible) {
      ++m_iImpossible;
      return;
    }
    if (!m_bDebug || run->Dumps().empty()) return Conclude(*run, verdict);
    m_toDebug.push_back({std::move(run), verdict, {}});
  }

  // When nobody dies any more: it takes the machine for itself.
  void Debug() {
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
      for (std::size_t batch = next++; batch * uBATCH < m_toDebug.size(); batch = next++) DebugBatch(batch);
    };
    std::thread other(work);
    work();
    other.join();
    for (Debugged& debugged : m_toDebug) {
      AddDebugger(debugged.m_verdict, *debugged.m_run, debugged.m_tops);
      Conclude(*debugged.m_run, debugged.m_verdict);
    }
    m_toDebug.clear();
  }

  void DebugBatch(std::size_t batch) {
    const auto begin = m_toDebug.begin() + static_cast<std::ptrdiff_t>(batch * uBATCH);
    const auto end =
        m_toDebug.begin() + static_cast<std::ptrdiff_t>(std::min((batch + 1) * uBATCH, m_toDebug.size()));
    std::vector<std::filesystem::path> dumps;
    for (auto debugged = begin; debugged != end; ++debugged)
      for (const auto& dump : debugged->m_run->Dumps()) dumps.push_back(dump);
    const auto tops = TopFunctions(dumps);
    auto next = tops.begin();
    for (auto debugged = begin; debugged != end; ++debugged) {
      const auto behind = next + static_cast<std::ptrdiff_t>(debugged->m_run->Dumps().size());
      debugged->m_tops.assign(next, behind);
      next = behind;
    }
  }

  void Conclude(const Run& run, const Verdict& verdict) {
    const std::string name = Describe(run.What());
    m_lines[name].Add(run, verdict);
    m_sum.Add(run, verdict);
    if (verdict.m_complaints.empty()) return;
    std::cout << name << ':';
    for (const std::string& complaint : verdict.m_complaints) std::cout << ' ' << complaint << ';';
    std::cout << '\n';
    // Enough to see what it was about.
    if (!m_bDebug) std::cout << run.Error().substr(0, 1500) << std::endl;
  }

  const std::string m_sHost;
  const bool m_bDebug;
  std::list<Row> m_fast;
  std::list<Row> m_slow;
  Runs m_running;
  std::vector<Debugged> m_toDebug;
  std::map<std::string, Line> m_lines;
  Line m_sum;
  int m_iImpossible = 0;
};

// Rows again from the first until there are enough.
std::vector<Row> AtLeast(std::size_t count, const std::vector<Row>& rows) {
  std::vector<Row> all = rows;
  for (std::size_t index = 0; all.size() < count; ++index)
    if (!rows[index % rows.size()].m_bSlow) all.push_back(rows[index % rows.size()]);
  return all;
}

bool Matches(const Row& row, char** wanted, int count) {
  const auto is = [&](int index, const std::string& text) {
    return index >= count || std::strcmp(wanted[index], "*") == 0 || text == wanted[index];
  };
  if (!is(0, row.m_sKind) || !is(1, row.m_sPlace)) return false;
  for (int index = 2; index < count; ++index)
    if (std::find(row.m_more.begin(), row.m_more.end(), wanted[index]) == row.m_more.end()) return false;
  return true;
}

std::vector<Row> Only(char** wanted, int count) {
  std::vector<Row> rows;
  for (const Row& row : AllRows())
    if (Matches(row, wanted, count)) rows.push_back(row);
  return rows;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 99;
  const std::string form = arguments[2];
  const bool full = form == "full";
  if (full && Debugger().empty())
    std::puts("There is no lldb here: dumps are only looked at by this program.");
  Driver driver(arguments[1], full && !Debugger().empty());
  if (full)
    driver.Die(AtLeast(count > 3 ? static_cast<std::size_t>(std::atoi(arguments[3])) : 1000, AllRows()));
  else
    driver.Die(form == "only" ? Only(arguments + 3, count - 3) : ShortRows());
  return driver.Print() ? 0 : 1;
}

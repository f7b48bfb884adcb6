#include "Verdict.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>

#include "DumpFile.h"

namespace Deaths {

namespace {

namespace fs = std::filesystem;

constexpr int iCANNOT = 77;

class Judgement {
 public:
  explicit Judgement(const Run& run) : m_run(run), m_row(run.What()) {}

  Verdict Make() {
    m_verdict.m_bPossible = m_run.Status() != iCANNOT;
    m_verdict.m_bEnded = !m_run.Hung();
    if (!m_verdict.m_bPossible) return m_verdict;
    LookAtTheEnd();
    LookAtFolders();
    LookAtReports();
    LookAtDumps();
    return m_verdict;
  }

 private:
  void Complain(const std::string& complaint) { m_verdict.m_complaints.push_back(complaint); }

  void LookAtTheEnd() {
    if (m_run.Hung()) return Complain("hung");
    if (m_row.m_statuses.count(m_run.Status()) == 0) Complain("status " + std::to_string(m_run.Status()));
  }

  void LookAtFolders() {
    static const std::regex FIRST("FatalError_\\d{6,8}_\\d{3,6}");
    static const std::regex SECOND("FatalError_\\d{1,2}-[A-Z][a-z]{2}-\\d{4}_\\d{1,2}-\\d{1,2}-\\d{1,2}");
    const auto folders = m_run.FatalFolders();
    m_verdict.m_iFolders = static_cast<int>(folders.size());
    if (m_verdict.m_iFolders > m_row.m_iMostFolders) Complain(std::to_string(folders.size()) + " folders");
    const EWhere where = m_run.Where();
    if (where != m_row.m_eWhere && m_row.m_reports.m_iLeast + m_row.m_dumps.m_iLeast > 0)
      Complain("files in the wrong place, " + std::to_string(static_cast<int>(where)));
    for (const fs::path& folder : folders)
      if (!std::regex_match(folder.filename().string(), where == EWhere::ePROGRAM ? SECOND : FIRST))
        Complain("a folder " + folder.filename().string());
  }

  void LookAtReports() {
    const auto reports = m_run.Reports();
    m_verdict.m_iReports = static_cast<int>(reports.size());
    if (!m_row.m_reports.Holds(m_verdict.m_iReports))
      Complain(std::to_string(m_verdict.m_iReports) + " reports");
    for (const fs::path& report : reports)
      if (IsWhole(report)) ++m_verdict.m_iGoodReports;
    if (!reports.empty() && m_row.m_bWhole) LookAtReport(reports[0]);
  }

  // A report has no element around all; it gets one to be parsed.
  bool IsWhole(const fs::path& report) {
    const std::string text = ReadAll(report);
    const std::size_t end = text.find("?>");
    const fs::path wrapped = report.string() + ".wrapped";
    std::ofstream(wrapped) << "<All>" << (end == std::string::npos ? text : text.substr(end + 2)) << "</All>";
    const std::string command = "xmllint --noout --nonet " + wrapped.string() + " 2>/dev/null";
    const bool whole = !text.empty() && std::system(command.c_str()) == 0;
    if (!whole && (m_row.m_bWhole || (m_row.m_bAllOrNothing && !text.empty())))
      Complain(report.filename().string() + " isn't whole");
    return whole;
  }

  void LookAtReport(const fs::path& report) {
    const std::string text = WithoutLayout(ReadAll(report));
    Expect(text, "<DeathKind>" + m_row.m_sKind + "</DeathKind>");
    Expect(text, "<Circumstance>Fatal unhandled error</Circumstance>");
    if (!m_row.m_sMessage.empty()) Expect(text, "<Message>" + m_row.m_sMessage);
    if (m_row.m_bInReport && !m_row.m_sTop.empty()) LookAtCallStack(text);
  }

  // Long texts stand on lines of their own.
  static std::string WithoutLayout(const std::string& text) {
    static const std::regex LAYOUT("\\s*\n\\s*");
    return std::regex_replace(text, LAYOUT, "");
  }

  void Expect(const std::string& text, const std::string& part) {
    if (text.find(part) == std::string::npos) Complain("no " + part + " in the report");
  }

  // The first function that a reader sees is the one that failed.
  void LookAtCallStack(const std::string& text) {
    static const std::regex FUNCTION("<FunctionName>([^<]*)</FunctionName>");
    const std::size_t stack = text.find("<CallStack>");
    std::smatch function;
    const std::string rest = stack == std::string::npos ? "" : text.substr(stack);
    if (!std::regex_search(rest, function, FUNCTION)) return Complain("no call stack in the report");
    if (function[1].str().find(m_row.m_sTop) == std::string::npos)
      Complain(function[1].str() + " on top of the report's call stack");
  }

  void LookAtDumps() {
    const auto dumps = m_run.Dumps();
    m_verdict.m_iDumps = static_cast<int>(dumps.size());
    if (!m_row.m_dumps.Holds(m_verdict.m_iDumps)) Complain(std::to_string(m_verdict.m_iDumps) + " dumps");
    for (const fs::path& dump : dumps) {
      const std::string top = FunctionOnTop(dump);
      const bool readable = top.empty() || top[0] != '!';
      if (!readable && m_row.m_bWhole) Complain("dump: " + top.substr(1));
      const bool matters = m_row.m_bWhole && !m_row.m_sTop.empty() && m_row.m_iTopWithin == 1;
      if (readable && matters && dump == dumps[0] && top != m_row.m_sTop)
        Complain((top.empty() ? "nothing" : top) + " on top of the dump");
      else if (readable)
        ++m_verdict.m_iGoodDumps;
    }
  }

  static std::string ReadAll(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }

  const Run& m_run;
  const Row& m_row;
  Verdict m_verdict;
};

bool IsOnTop(const Row& row, const std::vector<std::string>& functions) {
  if (row.m_sTop.empty()) return !functions.empty();
  const auto end =
      functions.begin() +
      std::min<std::ptrdiff_t>(row.m_iTopWithin, std::distance(functions.begin(), functions.end()));
  return std::find(functions.begin(), end, row.m_sTop) != end;
}

std::string Joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : " < ") + (text.empty() ? "?" : text);
  return all;
}

}  // namespace

Verdict Judge(const Run& run) { return Judgement(run).Make(); }

void AddDebugger(Verdict& verdict, const Run& run, const std::vector<std::vector<std::string>>& tops) {
  const Row& row = run.What();
  verdict.m_iGoodDumps = 0;
  for (std::size_t index = 0; index < tops.size(); ++index) {
    const bool good = index == 0 ? IsOnTop(row, tops[index]) : !tops[index].empty();
    if (good) ++verdict.m_iGoodDumps;
    if (!good && row.m_bWhole)
      verdict.m_complaints.push_back(tops[index].empty() ? "the debugger doesn't open the dump"
                                                         : "the debugger has on top " + Joined(tops[index]));
  }
}

}  // namespace Deaths

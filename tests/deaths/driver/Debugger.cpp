#include "Debugger.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>

namespace Deaths {

namespace {

namespace fs = std::filesystem;

const char* const sMARK = "(lldb) target create -c ";

std::string ReadAll(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// A dump that it doesn't open keeps it from no other.
const char* const sOPTIONS =
    " --no-lldbinit -O 'settings set interpreter.stop-command-source-on-error false' -b -s ";
const char* const sFORMAT =
    R"(settings set frame-format "frame #${frame.index}: ${frame.pc}{ ${function.name-without-args}}\n")";

void WriteCommands(const fs::path& script, const std::vector<fs::path>& dumps) {
  std::ofstream commands(script);
  commands << sFORMAT << '\n';
  for (const fs::path& dump : dumps)
    commands << "target create -c " << dump.string() << "\nthread backtrace -c 6\ntarget delete --all\n";
}

// Of names such as "::DieByNullWrite()" or "Deaths::(anonymous namespace)::InMain(int)": without all around.
std::string Leaf(const std::string& function) {
  static const std::regex LEAF("([A-Za-z_][A-Za-z_0-9]*)(?:\\([^()]*\\))?$");
  std::smatch leaf;
  return std::regex_search(function, leaf, LEAF) ? leaf[1].str() : function;
}

// "  * frame #0: 0x000056480a0e4d6 ::DieByNullWrite()"
std::vector<std::string> Functions(const std::string& text) {
  static const std::regex FRAME("frame #\\d+: 0x[0-9a-f]+(?: ([^\n]+))?");
  std::vector<std::string> functions;
  for (std::sregex_iterator frame(text.begin(), text.end(), FRAME), end; frame != end; ++frame)
    functions.push_back(Leaf((*frame)[1]));
  return functions;
}

}  // namespace

std::string Debugger() {
  for (const char* name : {"lldb", "lldb-14"})
    if (std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0) return name;
  return "";
}

std::vector<std::vector<std::string>> TopFunctions(const std::vector<fs::path>& dumps) {
  std::vector<std::vector<std::string>> all(dumps.size());
  if (dumps.empty()) return all;
  const fs::path script = dumps[0].string() + ".commands";
  const fs::path result = dumps[0].string() + ".frames";
  WriteCommands(script, dumps);
  const std::string command =
      "timeout 120 " + Debugger() + sOPTIONS + script.string() + " >" + result.string() + " 2>&1 </dev/null";
  // Its status tells of the last command only.
  if (std::system(command.c_str()) < 0) return all;
  const std::string text = ReadAll(result);
  std::size_t begin = text.find(sMARK);
  for (std::size_t index = 0; index < dumps.size() && begin != std::string::npos; ++index) {
    const std::size_t next = text.find(sMARK, begin + 1);
    all[index] = Functions(text.substr(begin, next == std::string::npos ? next : next - begin));
    begin = next;
  }
  return all;
}

}  // namespace Deaths

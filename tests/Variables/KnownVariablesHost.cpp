// Runs a module of KnownVariables.cpp and writes down what its frames look like from inside, for the comparison with
// what a debugger sees. Called with the module and the file to write.
#include <fstream>
#include <iostream>

#include "KnownFrames.h"

namespace {

std::ofstream* s_pFile = nullptr;

// One line each, with what would break it written as an escape.
std::string InOneLine(const std::string& text) {
  std::string line;
  for (const char c : text)
    if (c == '\t' || c == '\n')
      line += c == '\t' ? "\\t" : "\\n";
    else
      line += c;
  return line;
}

}  // namespace

// A debugger stops here and looks at the same frame.
extern "C" __attribute__((noinline, used, visibility("default"))) void HasLooked(const char* function) {
  asm volatile("" : : "g"(function) : "memory");
}

namespace {

void Look(const char* function) {
  const OxaTest::KnownFrame frame = OxaTest::LookAt(function);
  for (const auto& [name, value] : frame.m_values) {
    const auto type = frame.m_types.find(name);
    *s_pFile << function << '\t' << name << '\t' << (type == frame.m_types.end() ? "" : type->second) << '\t'
             << InOneLine(value) << '\n';
  }
  HasLooked(function);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::ofstream file(argv[2]);
  s_pFile = &file;
  if (!OxaTest::RunKnown(argv[1], &Look)) {
    std::cerr << "no such module: " << argv[1] << std::endl;
    return 1;
  }
  return file.flush() ? 0 : 1;
}

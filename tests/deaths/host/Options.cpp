#include "Options.h"

#include <cstdlib>
#include <cstring>

namespace Deaths {

namespace {

int s_iCount = 0;
char** s_pArguments = nullptr;

const char* Argument(int index) { return index < s_iCount ? s_pArguments[index] : ""; }

}  // namespace

void KeepOptions(int count, char** arguments) {
  s_iCount = count;
  s_pArguments = arguments;
}

char** Arguments() { return s_pArguments; }
const char* Kind() { return Argument(1); }
const char* Place() { return Argument(2); }

const char* Option(const char* name) {
  const std::size_t length = std::strlen(name);
  for (int index = 3; index < s_iCount; ++index) {
    const char* const argument = s_pArguments[index];
    if (std::strncmp(argument, name, length) == 0 && argument[length] == '=') return argument + length + 1;
  }
  return nullptr;
}

int NumberOption(const char* name, int otherwise) {
  const char* const value = Option(name);
  return value == nullptr ? otherwise : std::atoi(value);
}

bool IsOption(const char* name, const char* value) {
  const char* const given = Option(name);
  return given != nullptr && std::strcmp(given, value) == 0;
}

}  // namespace Deaths

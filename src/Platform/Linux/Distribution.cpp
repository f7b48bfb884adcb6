#include "Platform/Linux/Distribution.h"

#include <stdio.h>
#include <string.h>

#include <memory>

namespace Oxa::Core::Platform {

namespace {

constexpr char sKEY[] = "PRETTY_NAME=";

// The value of a shell assignment, without its quotes and escapes.
std::string Unquote(const char* value) {
  std::string text;
  char quote = 0;
  for (const char* at = value; *at != 0 && *at != '\n'; ++at) {
    if (quote == 0 && (*at == '"' || *at == '\'')) {
      quote = *at;
    } else if (*at == quote) {
      quote = 0;
    } else {
      if (*at == '\\' && quote != '\'' && at[1] != 0 && at[1] != '\n') ++at;
      text += *at;
    }
  }
  return text;
}

std::string ReadName(FILE* file) {
  char line[1024];
  while (fgets(line, sizeof line, file) != nullptr)
    if (strncmp(line, sKEY, strlen(sKEY)) == 0) return Unquote(line + strlen(sKEY));
  return std::string();
}

}  // namespace

bool ReadDistribution(const char* file, std::string& name) {
  const std::unique_ptr<FILE, int (*)(FILE*)> stream(fopen(file, "re"), &fclose);
  if (stream) name = ReadName(stream.get());
  return stream != nullptr;
}

}  // namespace Oxa::Core::Platform

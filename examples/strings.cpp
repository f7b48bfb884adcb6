#include <Infrastructure/OxaCore/Dictionary.h>
#include <Infrastructure/OxaCore/OxaCore.h>
#include <Infrastructure/OxaCore/StringTools.h>

#include <iostream>
#include <string>
#include <vector>

using namespace Oxa::Core;

int main() {
  InitializeOxaCore();
  std::vector<std::string> parts;
  if (StringTools::Split("fast -> 0x10 ms", "->", parts) == 2)
    std::cout << StringTools::UpCase(StringTools::TrimWS(parts[0])) << ": " << StringTools::ToInt(parts[1])
              << '\n';
  std::cout << StringTools::LineBreaks("a text that is broken at its blanks", 16) << '\n';

  // A list as one text, and back, whatever its items hold.
  std::string text;
  StringTools::Array2Str({"left;right", "", "C:\\data"}, ';', text);
  StringTools::Str2Array(text, ';', parts);
  std::cout << text << " holds " << parts.size() << ", the first is " << parts[0] << '\n';

  // Atoms: one pointer for each text, so that equal texts have equal pointers.
  const char* const voltage = GetOxaAtom("Voltage");
  std::cout << "the same atom: " << (GetOxaAtom(std::string("Volt") + "age") == voltage) << '\n';
  ShutdownOxaCore();
}

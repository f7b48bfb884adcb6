#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>
#include <Infrastructure/OxaCore/OxaCore.h>

#include <cstdlib>
#include <iostream>
#include <thread>

using namespace Oxa::Core;

// Null where nobody has set that variable; and nobody has.
char FirstLetter() { return *std::getenv("ACME_PROBE_NAME"); }

void TellProbe(const char* thread) {
  try {
    std::cout << FirstLetter() << '\n';
  } catch (const Error& error) {  // an AccessViolation
    std::cout << thread << ": " << error.what() << ", says " << error.GetData(AlertInfo::sLOG_NAME)
              << std::endl;
  }
}

int main() {
  InitializeOxaCore();
  TellProbe("main");  // has the translator, as every Thread of the library has
  std::thread own([] {
    MSWindows::InstallSEHErrorTranslator();  // a thread of the host's own asks for it
    TellProbe("own");
  });
  own.join();
  ShutdownOxaCore();
}

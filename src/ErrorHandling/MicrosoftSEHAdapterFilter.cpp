#include <Infrastructure/OxaCore/MicrosoftSEHAdapter.h>

#include <exception>

// The report, and the end.
long OxaUnhandledExceptionFilter(_EXCEPTION_POINTERS*) {
  std::get_terminate()();
  return 0;
}

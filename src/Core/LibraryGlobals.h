// The library's own globals: System, CurrentErrors, AlertManager, from load to unload.
#ifndef OXACORE_CORE_LIBRARYGLOBALS_H
#define OXACORE_CORE_LIBRARYGLOBALS_H

#include <Infrastructure/OxaCore/Globals.h>

#include <string>

namespace Oxa::Core {

/// The one container of the library's globals; null before it is built and after it has died.
ManagedGlobals* LibraryGlobals() noexcept;
void SetLibraryGlobals(ManagedGlobals* globals) noexcept;

/// The library's global of that name and type, or null.
template <class T>
T* FindLibraryGlobal(const std::string& name) {
  ManagedGlobals* const globals = LibraryGlobals();
  return globals != nullptr ? globals->Get<T>(name) : nullptr;
}

}  // namespace Oxa::Core

#endif

// A dynamic library that is loaded while the program runs, and its functions by name.
//
// Thread safety: any thread may load libraries and look functions up, in one object as well. What a function is called
// with is between the caller and the library.
// Failures: a library that can't be loaded is a null pointer. Only GetFunction raises.
//
//   boost::shared_ptr<SystemLibrary> library = SystemLibrary::Load(PathName("/opt/acme/libprobe.so"));
//   if (library && library->HasFunction("ProbeCount")) {
//     int channels = library->GetFunction<int()>("ProbeCount")();
//   }
#ifndef INFRASTRUCTURE_OXACORE_SYSTEMLIBRARY_H
#define INFRASTRUCTURE_OXACORE_SYSTEMLIBRARY_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/PathName.h>
#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <type_traits>

namespace Oxa::Core {

/// Keeps a library loaded as long as it lives. What came out of the library (functions, data, objects whose classes
/// it defines) may not be touched after that.
class OXACORE_API SystemLibrary {
 public:
  /// Loads the library, with all that it needs, and runs what it does on loading. A name without a folder is looked
  /// for where the system looks for libraries. One that is loaded already is only counted once more. Null if that
  /// fails, and for the empty name. What leaves the library's own start as an exception ends the process.
  static boost::shared_ptr<SystemLibrary> Load(const PathName& path);

  SystemLibrary(const SystemLibrary&) = delete;
  SystemLibrary& operator=(const SystemLibrary&) = delete;

  /// Gives the library back. It goes when nobody else in the process has it.
  ~SystemLibrary();

  /// Whether the library, or one that it was linked with, has a function of that name. Names are those in the file:
  /// a function of C++ that isn't declared extern "C" bears its decorated name.
  bool HasFunction(const std::string& name);

  /// The function of that name; `Function` is its type, as in GetFunction<int(const char*)>("Open"), or that of a
  /// pointer to it. Nothing checks that it is the right one.
  /// Raises NoSuchFunction under "Oxa.Core.SystemLibrary" if HasFunction is false; null if that raise returns.
  template <class Function>
  std::add_pointer_t<std::remove_pointer_t<Function>> GetFunction(const std::string& name) {
    return reinterpret_cast<std::add_pointer_t<std::remove_pointer_t<Function>>>(GetFunctionImpl(name, true));
  }

  /// What the system knows the library by. Good as long as this object lives, and still owned by it.
  HINSTANCE GetModuleHandleA() const;

  /// The name that it was loaded by, unchanged.
  const PathName& GetPathName() const;

 private:
  SystemLibrary(const PathName& path, HINSTANCE module);
  void* GetFunctionImpl(const std::string& name, bool mustExist);

  const PathName m_path;
  HINSTANCE m_hModule;
};

}  // namespace Oxa::Core

#endif

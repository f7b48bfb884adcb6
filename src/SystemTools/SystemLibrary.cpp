#include <Infrastructure/OxaCore/SystemLibrary.h>

#include <Infrastructure/OxaCore/CommonErrors.h>

#include "Platform/Libraries.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.SystemLibrary";

// The library is given back even if there is no memory for what would do so later.
class OpenLibrary {
 public:
  explicit OpenLibrary(HINSTANCE library) : m_hLibrary(library) {}
  OpenLibrary(const OpenLibrary&) = delete;
  OpenLibrary& operator=(const OpenLibrary&) = delete;
  ~OpenLibrary() {
    if (m_hLibrary != nullptr) Platform::CloseLibrary(m_hLibrary);
  }
  HINSTANCE Get() const { return m_hLibrary; }
  void HandOver() { m_hLibrary = nullptr; }

 private:
  HINSTANCE m_hLibrary;
};

}  // namespace

SystemLibrary::SystemLibrary(const PathName& path, HINSTANCE module) : m_path(path), m_hModule(module) {}

SystemLibrary::~SystemLibrary() { Platform::CloseLibrary(m_hModule); }

boost::shared_ptr<SystemLibrary> SystemLibrary::Load(const PathName& path) {
  OpenLibrary library(Platform::OpenLibrary(path));
  if (library.Get() == nullptr) return boost::shared_ptr<SystemLibrary>();
  auto* const loaded = new SystemLibrary(path, library.Get());
  library.HandOver();
  return boost::shared_ptr<SystemLibrary>(loaded);
}

void* SystemLibrary::GetFunctionImpl(const std::string& name, bool mustExist) {
  void* const function = Platform::FindFunction(m_hModule, name.c_str());
  if (function == nullptr && mustExist) OXA_RAISE_ERROR(sLOG_NAME, NoSuchFunction(name, m_path));
  return function;
}

bool SystemLibrary::HasFunction(const std::string& name) { return GetFunctionImpl(name, false) != nullptr; }

HINSTANCE SystemLibrary::GetModuleHandleA() const { return m_hModule; }

const PathName& SystemLibrary::GetPathName() const { return m_path; }

}  // namespace Oxa::Core

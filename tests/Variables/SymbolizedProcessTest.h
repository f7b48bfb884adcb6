// This process as its stacks are read by, for tests of what lies beneath a walk.
#ifndef OXACORE_TESTS_VARIABLES_SYMBOLIZEDPROCESSTEST_H
#define OXACORE_TESTS_VARIABLES_SYMBOLIZEDPROCESSTEST_H

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Platform/Linux/SymbolizedProcess.h"

namespace Oxa::Core::Platform {

/// Skips where libdw isn't there.
class SymbolizedProcessTest : public testing::Test {
 protected:
  void SetUp() override {
    m_library = ::dlopen("libdw.so.1", RTLD_LAZY | RTLD_LOCAL);
    if (m_library == nullptr) GTEST_SKIP() << "libdw isn't there";
    FindFunctions(m_dw, m_library);
    m_dw.elf_version(EV_CURRENT);
    m_process = std::make_unique<SymbolizedProcess>(
        m_dw, "", [](const char* signature) { return std::string(signature); }, m_faulted);
    m_process->Refresh();
  }

  void TearDown() override {
    m_process.reset();
    if (m_library != nullptr) ::dlclose(m_library);
  }

  SymbolizedProcess& GetProcess() { return *m_process; }

 private:
  void* m_library = nullptr;
  Dw m_dw;
  FaultedModules m_faulted;
  std::unique_ptr<SymbolizedProcess> m_process;
};

}  // namespace Oxa::Core::Platform

#endif

// The running process as its stacks are read by: its modules, and what has been learnt of instructions.
#ifndef OXACORE_PLATFORM_LINUX_SYMBOLIZEDPROCESS_H
#define OXACORE_PLATFORM_LINUX_SYMBOLIZEDPROCESS_H

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Linux/DwFunctions.h"
#include "Platform/Linux/StackWalkRules.h"
#include "Platform/Linux/SymbolizedModule.h"
#include "Platform/Linux/SymbolizedPlace.h"

namespace Oxa::Core::Platform {

/// What is known of one instruction.
struct AddressFacts {
  bool m_bHasRules = false;
  StackWalkRules m_rules;
  SymbolizedPlace m_place;  ///< without a module: in none
};

/// How many modules the loader has added and removed: unchanged, the same modules are there.
struct LoaderCounts {
  unsigned long long m_ullAdded = 0;
  unsigned long long m_ullRemoved = 0;

  bool operator==(const LoaderCounts& other) const {
    return m_ullAdded == other.m_ullAdded && m_ullRemoved == other.m_ullRemoved;
  }
};

/// What faults have been in. What was being read then is never given back, so that there must not be many.
struct FaultedModules {
  static constexpr int iMOST = 8;

  const SymbolizedModule* m_pModules[iMOST] = {};  ///< never freed; null: it wasn't in debug data
  int m_iCount = 0;

  bool Has(const LoadedModule& module) const;
};

/// Everything here may throw std::bad_alloc.
class SymbolizedProcess {
 public:
  /// Marks the module whose debug data is being read.
  class Reading {
   public:
    Reading(SymbolizedProcess& process, const SymbolizedModule* module) : m_process(process) {
      m_process.m_pRead = module;
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() { m_process.m_pRead = nullptr; }

   private:
    SymbolizedProcess& m_process;
  };

  /// `form` is what signatures of functions are shown by. The debug data of `faulted` modules isn't read.
  SymbolizedProcess(const Dw& dw, const char* searchPath, std::string (*form)(const char* signature),
                    const FaultedModules& faulted);
  SymbolizedProcess(const SymbolizedProcess&) = delete;
  SymbolizedProcess& operator=(const SymbolizedProcess&) = delete;
  ~SymbolizedProcess();

  /// Looks whether modules have come or gone. What was given out before is gone then. Where it throws, the next one
  /// looks anew.
  void Refresh();

  /// Good until the next Refresh.
  const AddressFacts& GetFacts(std::uint64_t address);

  /// What a fault was in; null: in nobody's debug data.
  const SymbolizedModule* GetRead() const { return m_pRead; }

  /// Whether `address` lies among the instructions of a module.
  bool IsCode(std::uint64_t address) const {
    const SymbolizedModule* const module = FindModule(address);
    return module != nullptr && module->HasCode(address);
  }

 private:
  SymbolizedModule* FindModule(std::uint64_t address) const;
  void ReadModules(const LoaderCounts& counts);
  void TakeModules(std::vector<LoadedModule>& loaded);

  const Dw& m_dw;
  const std::vector<std::string> m_folders;
  std::string (*const m_form)(const char* signature);
  const FaultedModules& m_faulted;
  const SymbolizedModule* m_pRead = nullptr;
  LoaderCounts m_counts;  // when the modules were read
  std::vector<std::unique_ptr<SymbolizedModule>> m_modules;
  std::unordered_map<std::uint64_t, AddressFacts> m_facts;
};

}  // namespace Oxa::Core::Platform

#endif

#include "Platform/Linux/SymbolizedProcess.h"

#include <link.h>

#include <new>
#include <utility>

#include "Platform/Linux/DwDebugFiles.h"
#include "Platform/Linux/Variables.h"

namespace Oxa::Core::Platform {

namespace {

constexpr std::size_t uMAX_FACTS = 8192;

int TakeCounts(dl_phdr_info* info, std::size_t /*size*/, void* counts) {
  *static_cast<LoaderCounts*>(counts) = LoaderCounts{info->dlpi_adds, info->dlpi_subs};
  return 1;
}

LoaderCounts CurrentCounts() {
  LoaderCounts counts;
  ::dl_iterate_phdr(&TakeCounts, &counts);
  return counts;
}

struct Loaded {
  std::vector<LoadedModule> m_modules;
  bool m_bComplete = true;
};

// Nothing may be thrown through the loader.
int TakeModule(dl_phdr_info* info, std::size_t /*size*/, void* argument) {
  Loaded& loaded = *static_cast<Loaded*>(argument);
  try {
    loaded.m_modules.push_back(Describe(*info));
    return 0;
  } catch (...) {
    loaded.m_bComplete = false;
    return 1;
  }
}

}  // namespace

bool FaultedModules::Has(const LoadedModule& module) const {
  for (const SymbolizedModule* const faulted : m_pModules)
    if (faulted != nullptr && faulted->GetLoaded().IsSameAs(module)) return true;
  return false;
}

SymbolizedProcess::SymbolizedProcess(const Dw& dw, const char* searchPath,
                                     std::string (*form)(const char* signature),
                                     const FaultedModules& faulted)
    : m_dw(dw), m_folders(DebugFiles::Split(searchPath)), m_form(form), m_faulted(faulted) {}

SymbolizedProcess::~SymbolizedProcess() {
  // One that never read anything may go while another is in use.
  if (!m_modules.empty()) ForgetVariables();
}

void SymbolizedProcess::TakeModules(std::vector<LoadedModule>& loaded) {
  std::vector<std::unique_ptr<SymbolizedModule>> modules;
  for (LoadedModule& module : loaded) {
    std::unique_ptr<SymbolizedModule> taken;
    for (std::unique_ptr<SymbolizedModule>& known : m_modules)
      if (known && known->GetLoaded().IsSameAs(module)) taken.swap(known);
    if (!taken) {
      taken = std::make_unique<SymbolizedModule>(m_dw, std::move(module), m_folders);
      if (m_faulted.Has(taken->GetLoaded())) taken->GiveUpDebugData();
    }
    modules.push_back(std::move(taken));
  }
  m_modules.swap(modules);
}

void SymbolizedProcess::Refresh() {
  const LoaderCounts counts = CurrentCounts();
  const bool changed = m_modules.empty() || !(counts == m_counts);
  if (!changed && m_facts.size() < uMAX_FACTS) return;
  m_facts.clear();
  if (changed) ReadModules(counts);
}

// The counts are kept last: a list that couldn't be had as a whole is read again by the next walk.
void SymbolizedProcess::ReadModules(const LoaderCounts& counts) {
  ForgetVariables();
  m_counts = LoaderCounts();
  Loaded loaded;
  ::dl_iterate_phdr(&TakeModule, &loaded);
  if (!loaded.m_bComplete) throw std::bad_alloc();
  TakeModules(loaded.m_modules);
  m_counts = counts;
}

SymbolizedModule* SymbolizedProcess::FindModule(std::uint64_t address) const {
  for (const std::unique_ptr<SymbolizedModule>& module : m_modules)
    if (module->Contains(address)) return module.get();
  return nullptr;
}

const AddressFacts& SymbolizedProcess::GetFacts(std::uint64_t address) {
  const auto known = m_facts.find(address);
  if (known != m_facts.end()) return known->second;
  AddressFacts facts;
  if (SymbolizedModule* const module = FindModule(address)) {
    const Reading reading(*this, module);
    facts.m_place = FindPlace(m_dw, *module, address, m_form);
    const Dwarf_Addr place = address - module->GetLoaded().m_uBias;
    for (Dwarf_CFI* const frames : {module->GetFrames(), module->GetFramesOfDebugData()}) {
      if (!facts.m_bHasRules && frames != nullptr)
        facts.m_bHasRules = facts.m_rules.Read(m_dw, frames, place);
    }
  }
  return m_facts.emplace(address, std::move(facts)).first->second;
}

}  // namespace Oxa::Core::Platform

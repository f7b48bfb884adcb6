#include "Platform/Linux/SymbolizedPlace.h"

#include <cxxabi.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "Platform/Linux/SymbolizedName.h"

namespace Oxa::Core::Platform {

namespace {

const char* const sMAIN = "main";
constexpr std::size_t uMAX_SCOPES = 64;     // in each other
constexpr int iMAX_CHILDREN = 1000000;      // damaged data may go round in circles
constexpr std::size_t uMAX_MANGLED = 4096;  // the demangler needs stack in proportion

using Form = std::string (*)(const char* signature);

/// Fills in one place.
class Finder {
 public:
  Finder(const Dw& dw, SymbolizedPlace& place, Form form) : m_dw(dw), m_place(place), m_form(form) {}

  bool HasLineFunctions() const {
    return m_dw.dwarf_getsrclines != nullptr && m_dw.dwarf_getsrc_die != nullptr &&
           m_dw.dwarf_lineno != nullptr && m_dw.dwarf_linesrc != nullptr;
  }

  void FindLine(PlacedFunction& function) {
    if (!HasLineFunctions()) return;
    Dwarf_Line* const line = m_dw.dwarf_getsrc_die(&m_place.m_unit, m_place.m_address);
    int number = 0;
    if (line == nullptr || m_dw.dwarf_lineno(line, &number) != 0) return;
    const Dwarf_Line* const known = number > 0 ? line : LineBefore(line, number);
    if (known == nullptr) return;
    function.m_pFile = m_dw.dwarf_linesrc(const_cast<Dwarf_Line*>(known), nullptr, nullptr);
    function.m_iLine = number;
  }

  // The entries with the place below `function`, outermost first, itself included.
  std::vector<Dwarf_Die> FindScopes(const Dwarf_Die& function) {
    std::vector<Dwarf_Die> scopes{function};
    Dwarf_Die inner;
    while (scopes.size() < uMAX_SCOPES && FindInner(scopes.back(), inner)) scopes.push_back(inner);
    return scopes;
  }

  // Short debug data has none, and nobody needs to look for them in each walk.
  bool MayHaveVariables(Dwarf_Die& scope) {
    Dwarf_Attribute attribute;
    Dwarf_Die origin;
    if (HasVariables(scope) || m_dw.dwarf_attr == nullptr) return true;
    if (m_dw.dwarf_attr(&scope, DW_AT_abstract_origin, &attribute) == nullptr) return false;
    return m_dw.dwarf_formref_die == nullptr || m_dw.dwarf_formref_die(&attribute, &origin) == nullptr ||
           HasVariables(origin);
  }

  void FindName(Dwarf_Die& entry, PlacedFunction& function) {
    for (const unsigned kind : {DW_AT_linkage_name, DW_AT_MIPS_linkage_name})
      if (Demangle(TextOf(entry, kind), function)) return;
    function.m_sName = QualifiedName(m_dw, entry);
  }

  // What the module's own table of symbols knows.
  void FindNameOfSymbol(std::uint64_t address, PlacedFunction& function) {
    if (m_dw.dwfl_module_addrinfo == nullptr) return;
    GElf_Off offset = 0;
    GElf_Sym symbol;
    const char* const text = m_dw.dwfl_module_addrinfo(m_place.m_pModule->GetModule(), address, &offset,
                                                       &symbol, nullptr, nullptr, nullptr);
    if (text != nullptr && !Demangle(text, function) && function.m_sName.empty()) function.m_sName = text;
  }

  // Where the function that was put into another one was called.
  void FindCall(Dwarf_Die& inlined, PlacedFunction& caller) {
    if (m_dw.dwarf_getsrcfiles == nullptr || m_dw.dwarf_filesrc == nullptr) return;
    Dwarf_Files* files = nullptr;
    std::size_t count = 0;
    Dwarf_Word file = 0;
    Dwarf_Word line = 0;
    if (m_dw.dwarf_getsrcfiles(&m_place.m_unit, &files, &count) != 0) return;
    if (!ReadNumber(inlined, DW_AT_call_file, file) || !ReadNumber(inlined, DW_AT_call_line, line)) return;
    if (file >= count || line == 0 || line > INT_MAX) return;
    caller.m_pFile = m_dw.dwarf_filesrc(files, file, nullptr, nullptr);
    caller.m_iLine = static_cast<int>(line);
  }

 private:
  // Compilers give the line 0 to what stands for no line; the one before it is close enough.
  const Dwarf_Line* LineBefore(const Dwarf_Line* line, int& number) {
    Dwarf_Lines* lines = nullptr;
    std::size_t count = 0;
    if (m_dw.dwarf_onesrcline == nullptr || m_dw.dwarf_getsrclines(&m_place.m_unit, &lines, &count) != 0)
      return nullptr;
    const Dwarf_Line* before = nullptr;
    for (std::size_t i = 0; i < count; ++i) {
      Dwarf_Line* const candidate = m_dw.dwarf_onesrcline(lines, i);
      if (candidate == line) break;
      int found = 0;
      if (m_dw.dwarf_lineno(candidate, &found) != 0 || found <= 0) continue;
      before = candidate;
      number = found;
    }
    return before;
  }

  bool FindInner(Dwarf_Die& parent, Dwarf_Die& found) {
    Dwarf_Die child;
    if (m_dw.dwarf_child(&parent, &child) != 0) return false;
    int left = iMAX_CHILDREN;
    do {
      const int tag = m_dw.dwarf_tag(&child);
      if (tag != DW_TAG_lexical_block && tag != DW_TAG_inlined_subroutine && tag != DW_TAG_try_block &&
          tag != DW_TAG_catch_block)
        continue;
      if (m_dw.dwarf_haspc(&child, m_place.m_address) == 1) {
        found = child;
        return true;
      }
    } while (--left > 0 && m_dw.dwarf_siblingof(&child, &child) == 0);
    return false;
  }

  bool HasVariables(Dwarf_Die& parent) {
    Dwarf_Die child;
    if (m_dw.dwarf_child(&parent, &child) != 0) return false;
    int left = iMAX_CHILDREN;
    do {
      const int tag = m_dw.dwarf_tag(&child);
      if (tag == DW_TAG_variable || tag == DW_TAG_formal_parameter) return true;
    } while (--left > 0 && m_dw.dwarf_siblingof(&child, &child) == 0);
    return false;
  }

  bool ReadNumber(Dwarf_Die& entry, unsigned kind, Dwarf_Word& number) {
    Dwarf_Attribute attribute;
    return m_dw.dwarf_attr != nullptr && m_dw.dwarf_formudata != nullptr &&
           m_dw.dwarf_attr(&entry, kind, &attribute) != nullptr &&
           m_dw.dwarf_formudata(&attribute, &number) == 0;
  }

  const char* TextOf(Dwarf_Die& entry, unsigned kind) {
    Dwarf_Attribute attribute;
    if (m_dw.dwarf_attr_integrate == nullptr || m_dw.dwarf_formstring == nullptr) return nullptr;
    if (m_dw.dwarf_attr_integrate(&entry, kind, &attribute) == nullptr) return nullptr;
    return m_dw.dwarf_formstring(&attribute);
  }

  // False for what isn't decorated.
  bool Demangle(const char* name, PlacedFunction& function) {
    if (name == nullptr || std::strncmp(name, "_Z", 2) != 0 || std::strlen(name) > uMAX_MANGLED) return false;
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> plain(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                       std::free);
    if (status != 0 || plain == nullptr) return false;
    function.m_sName = m_form(plain.get());
    return true;
  }

  const Dw& m_dw;
  SymbolizedPlace& m_place;
  const Form m_form;
};

bool CanFindFunctions(const Dw& dw) {
  return dw.dwarf_child != nullptr && dw.dwarf_siblingof != nullptr && dw.dwarf_tag != nullptr &&
         dw.dwarf_haspc != nullptr;
}

// Cuts the way from a function to a place into frames: at each function that was put into another.
void AddFunctions(const Dw& dw, Finder& finder, SymbolizedPlace& place, std::vector<Dwarf_Die> scopes) {
  const PlacedFunction innermost = place.m_functions.front();
  place.m_functions.clear();
  place.m_bVariables = std::any_of(scopes.begin(), scopes.end(),
                                   [&](Dwarf_Die& scope) { return finder.MayHaveVariables(scope); });
  PlacedFunction function;
  function.m_pFile = innermost.m_pFile;
  function.m_iLine = innermost.m_iLine;
  for (auto scope = scopes.rbegin(); scope != scopes.rend(); ++scope) {
    function.m_scopes.push_back(*scope);
    const bool inlined = dw.dwarf_tag(&*scope) == DW_TAG_inlined_subroutine;
    if (!inlined && scope + 1 != scopes.rend()) continue;
    function.m_bInlined = inlined;
    function.m_bEntry = true;
    function.m_entry = *scope;
    finder.FindName(*scope, function);
    place.m_functions.push_back(function);
    function = PlacedFunction();
    if (inlined) finder.FindCall(*scope, function);
  }
}

}  // namespace

SymbolizedPlace FindPlace(const Dw& dw, SymbolizedModule& module, std::uint64_t address, Form form) {
  SymbolizedPlace place;
  place.m_pModule = &module;
  place.m_functions.resize(1);
  if (!module.HasDebugData()) return place;
  place.m_address = address - module.GetDebugBias();
  if (!module.GetUnits().FindUnit(place.m_address, place.m_unit)) return place;
  Finder finder(dw, place, form);
  finder.FindLine(place.m_functions.front());
  Dwarf_Die function;
  if (CanFindFunctions(dw) && module.GetUnits().FindFunction(place.m_unit, place.m_address, function))
    AddFunctions(dw, finder, place, finder.FindScopes(function));
  PlacedFunction& outermost = place.m_functions.back();
  // Short debug data leaves namespaces out.
  if (outermost.m_pFile != nullptr && outermost.m_sName != sMAIN &&
      outermost.m_sName.find("::") == std::string::npos)
    finder.FindNameOfSymbol(address, outermost);
  return place;
}

}  // namespace Oxa::Core::Platform

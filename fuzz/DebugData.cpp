// Debug data: whatever stands in the sections for lines and variables of a module, its call stacks are shown, or less
// of them; and those of other modules are shown as before.
//
// An input is a list of changes, of four bytes each: which section, where in it (two bytes), and the new byte. The
// module of DebugDataModule.cpp is changed so, loaded, and run.
#include <Infrastructure/OxaCore/MicrosoftDebugHelp.h>
#include <dlfcn.h>
#include <elf.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "FuzzTarget.h"

// What a fault within leaves behind isn't given back, and that is as promised.
extern "C" const char* __asan_default_options() {
  return "detect_leaks=0";
}  // NOLINT(bugprone-reserved-identifier)

namespace {

using namespace Oxa::Core;
using namespace OxaFuzz;

using Frames = boost::shared_ptr<std::vector<CodeContext>>;
using Run = int (*)(void (*)());

constexpr std::size_t uMOST_TEXT = 200000;  // of one frame: far more than any that is whole

struct Section {
  std::size_t m_uOffset;
  std::size_t m_uSize;
};

std::string ModuleAsBuilt() {
  std::ifstream in(DEBUG_DATA_MODULE, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

template <class Record>
Record At(const std::string& file, std::size_t offset) {
  Record record;
  Check(offset + sizeof record <= file.size(), "the module is whole");
  std::memcpy(&record, file.data() + offset, sizeof record);
  return record;
}

// Those with debug data.
std::vector<Section> SectionsOf(const std::string& file) {
  std::vector<Section> sections;
  const auto header = At<Elf64_Ehdr>(file, 0);
  const auto entry = [&](std::size_t index) {
    return At<Elf64_Shdr>(file, header.e_shoff + index * header.e_shentsize);
  };
  const Elf64_Shdr names = entry(header.e_shstrndx);
  for (std::size_t index = 0; index < header.e_shnum; ++index) {
    const Elf64_Shdr section = entry(index);
    const char* const name = file.c_str() + names.sh_offset + section.sh_name;
    if (std::strncmp(name, ".debug_", 7) == 0) sections.push_back({section.sh_offset, section.sh_size});
  }
  return sections;
}

std::string Damaged(const std::uint8_t* data, std::size_t size) {
  static const std::string s_whole = ModuleAsBuilt();
  static const std::vector<Section> s_sections = SectionsOf(s_whole);
  Check(!s_sections.empty(), "the module has debug data");
  std::string file = s_whole;
  for (; size >= 4; data += 4, size -= 4) {
    const Section& section = s_sections[data[0] % s_sections.size()];
    const std::size_t at = (data[1] | static_cast<std::size_t>(data[2]) << 8) % section.m_uSize;
    file[section.m_uOffset + at] = static_cast<char>(data[3]);
  }
  return file;
}

void CheckFrame(const CodeContext& frame) {
  std::size_t size = 0;
  for (const auto& [name, value] : frame.GetVariables()) size += name.size() + value.size();
  Check(size < uMOST_TEXT, "a frame shows no more than can be read", std::to_string(size));
}

void LookAround() {
  const boost::shared_ptr<MSWindows::DebugHelp> help = MSWindows::DebugHelp::Instance();
  if (!help) return;
  const Frames frames = help->CreateCallStack(100);
  Check(frames != nullptr, "a stack is walked whatever a module holds");
  for (const CodeContext& frame : *frames) CheckFrame(frame);
}

// From memory, so that nothing is left on disk.
void RunModule(const std::string& content) {
  const int file = ::memfd_create("damaged", MFD_CLOEXEC);
  Check(file >= 0 && ::write(file, content.data(), content.size()) == static_cast<ssize_t>(content.size()),
        "the module can be written");
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  void* const module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  Check(module != nullptr, "the module can be loaded");
  const Run run = reinterpret_cast<Run>(::dlsym(module, "RunDamaged"));
  Check(run != nullptr, "the module can be run");
  run(&LookAround);
  ::dlclose(module);
  ::close(file);
}

std::string s_sNumber;

void LookForNumber() {
  const Frames frames = MSWindows::DebugHelp::Instance()->CreateCallStack(100);
  for (const CodeContext& frame : *frames) {
    const auto number = frame.GetVariables().find("number");
    if (number != frame.GetVariables().end() && s_sNumber.empty()) s_sNumber = number->second;
  }
}

// The module as it was built is read as if nothing had been.
void CheckWholeModule() {
  static const Run s_run =
      reinterpret_cast<Run>(::dlsym(::dlopen(DEBUG_DATA_MODULE, RTLD_NOW), "RunDamaged"));
  if (!MSWindows::DebugHelp::Instance()) return;
  s_sNumber.clear();
  s_run(&LookForNumber);
  CheckSame("42", s_sNumber, "debug data that is whole is read whatever came before");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StayQuiet();
  RunModule(Damaged(data, size));
  CheckWholeModule();
  return 0;
}

#include "AutoTest/Module/TestFolder.h"

#include <Infrastructure/OxaCore/AutoTest.h>

#include <atomic>
#include <filesystem>
#include <system_error>

#include "Platform/Files.h"
#include "Platform/Machine.h"

namespace Oxa::Core {

namespace {

const char* const sNO_FOLDER = "no folder can be made in that for temporary files";
const char* const sNOWHERE = "/nowhere";
constexpr int iATTEMPTS = 1000;  // what ended processes of the same id left has a name already

std::string NextName(const std::string& parent) {
  static std::atomic<unsigned> s_uFolders{0};
  return parent + "/OxaCoreTests_" + std::to_string(Platform::ProcessId()) + "_" +
         std::to_string(++s_uFolders);
}

}  // namespace

TestFolder::TestFolder() : m_sName(sNOWHERE) {
  std::error_code missing;
  std::string parent = std::filesystem::temp_directory_path(missing).string();
  while (parent.size() > 1 && parent.back() == '/') parent.pop_back();
  for (int attempt = 0; !missing && attempt < iATTEMPTS; ++attempt) {
    const std::string name = NextName(parent);
    if (Platform::MakeDirectory(name.c_str()) != 0) continue;
    m_sName = name;
    return;
  }
  OXA_TEST_ASSERT_MSG(false, sNO_FOLDER);
}

TestFolder::~TestFolder() {
  if (m_sName == sNOWHERE) return;
  std::error_code ignored;  // what can't be removed stays; the test has its result
  std::filesystem::remove_all(m_sName, ignored);
}

std::string TestFolder::MakeFile(const std::string& leaf, const std::string& content) const {
  std::string name = File(leaf);
  int code = 0;
  Platform::FileHandle file = Platform::FileHandle::CreateForWriting(name.c_str(), code);
  std::size_t written = 0;
  if (code == 0) code = file.Write(content.data(), content.size(), written);
  OXA_TEST_ASSERT_MSG(code == 0 && written == content.size(), "a file can't be written: " + name);
  return name;
}

}  // namespace Oxa::Core

// All that a file says of itself, in one look.
#ifndef OXACORE_TESTS_SYSTEMTOOLS_VERSIONSUPPORT_H
#define OXACORE_TESTS_SYSTEMTOOLS_VERSIONSUPPORT_H

#include <Infrastructure/OxaCore/ModuleVersionInfo.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <string>

#include "Support/TemporaryFolder.h"

namespace SystemToolsTest {

using Values = std::map<std::string, std::string>;

/// Every key that there is with its value; empty where Create gives null.
inline Values VersionOf(const std::string& path) {
  using Info = Oxa::Core::ModuleVersionInfo;
  Values values;
  const boost::shared_ptr<Info> info = Info::Create(path);
  if (!info) return values;
  for (const std::string& key :
       {Info::sPATH_NAME, Info::sFILE_NAME, Info::sCOMMENTS, Info::sCOMPANY_NAME, Info::sFILE_DESCRIPTION,
        Info::sFILE_VERSION, Info::sINTERNAL_NAME, Info::sLEGAL_COPYRIGHT, Info::sLEGAL_TRADEMARKS,
        Info::sORIGINAL_FILENAME, Info::sPRODUCT_NAME, Info::sPRODUCT_VERSION, Info::sSPECIAL_BUILD}) {
    std::string value;
    if (info->Get(key, value)) values[key] = value;
  }
  return values;
}

/// What the file's content tells, without path and name; `name` is the file's.
inline Values ContentOf(const std::string& bytes, const std::string& name = "module") {
  const TestSupport::TemporaryFolder folder;
  Values values = VersionOf(folder.Write(name, bytes));
  values.erase(Oxa::Core::ModuleVersionInfo::sPATH_NAME);
  values.erase(Oxa::Core::ModuleVersionInfo::sFILE_NAME);
  return values;
}

/// Whether Create gives something for a file of that content.
inline bool HasVersion(const std::string& bytes, const std::string& name = "module") {
  const TestSupport::TemporaryFolder folder;
  return Oxa::Core::ModuleVersionInfo::Create(folder.Write(name, bytes)) != nullptr;
}

/// The bytes with a number of so many bytes put in at `at`, the lowest one first.
inline std::string Patched(std::string bytes, std::size_t at, std::uint64_t number, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) bytes.at(at + i) = static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

/// A file that is damaged where it lies: making a new one for each damage takes far longer than reading it.
class DamagedFile {
 public:
  DamagedFile(const std::string& name, const std::string& bytes)
      : m_sPath(m_folder.Write(name, bytes)),
        m_bytes(bytes),
        m_iFile(::open(m_sPath.c_str(), O_WRONLY | O_CLOEXEC)) {}
  DamagedFile(const DamagedFile&) = delete;
  DamagedFile& operator=(const DamagedFile&) = delete;
  ~DamagedFile() { ::close(m_iFile); }

  const std::string& Path() const { return m_sPath; }

  /// Only its first `size` bytes are there from now on.
  void CutOff(std::size_t size) { ASSERT_EQ(0, ::ftruncate(m_iFile, static_cast<off_t>(size))); }

  /// One byte is another one; the last one that was changed is put right.
  void Change(std::size_t at, char byte) {
    Write(m_uChanged, m_bytes[m_uChanged]);
    Write(at, byte);
    m_uChanged = at;
  }

 private:
  void Write(std::size_t at, char byte) { ASSERT_EQ(1, ::pwrite(m_iFile, &byte, 1, static_cast<off_t>(at))); }

  const TestSupport::TemporaryFolder m_folder;
  const std::string m_sPath;
  const std::string m_bytes;
  const int m_iFile;
  std::size_t m_uChanged = 0;
};

/// Whether Create gives null for every file that is cut off, down to the empty one.
inline void ExpectNullWhereverItIsCutOff(const std::string& name, const std::string& bytes) {
  DamagedFile file(name, bytes);
  ASSERT_TRUE(Oxa::Core::ModuleVersionInfo::Create(file.Path()));
  for (std::size_t size = bytes.size(); size-- > 0;) {
    file.CutOff(size);
    EXPECT_FALSE(Oxa::Core::ModuleVersionInfo::Create(file.Path())) << size << " of " << bytes.size();
  }
}

/// Calls `check` with what the file tells, for every byte of it and several values that this byte has then.
template <class Check>
void WithEveryByteDamaged(const std::string& name, const std::string& bytes, const Check& check) {
  DamagedFile file(name, bytes);
  for (std::size_t at = 0; at < bytes.size(); ++at)
    for (const char byte : {'\0', '\1', '\x7f', '\x80', '\xff'}) {
      file.Change(at, byte);
      check(VersionOf(file.Path()), at);
    }
}

}  // namespace SystemToolsTest

#endif

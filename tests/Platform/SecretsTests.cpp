#include "Platform/Secrets.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "Support/TemporaryFolder.h"

namespace Platform = Oxa::Core::Platform;

namespace {

using Bytes = std::vector<unsigned char>;

std::string Hex(const unsigned char* data, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text += "0123456789abcdef"[data[i] >> 4];
    text += "0123456789abcdef"[data[i] & 15];
  }
  return text;
}

// The default provider.
class Secrets : public testing::Test {
 protected:
  Secrets() {
    EXPECT_EQ(0, Platform::AcquireProvider(nullptr, Platform::g_pDEFAULT_PROVIDER, 1, false, m_hProvider));
  }
  ~Secrets() override { Platform::ReleaseProvider(m_hProvider); }

  std::string DigestOf(const std::string& text) {
    const Platform::Md5Digest digest = Platform::Md5(m_hProvider, text.data(), text.size());
    return Hex(digest.data(), digest.size());
  }

  // Sixteen bytes of the stream of a key whose bytes count from 1, from the place `offset` on.
  std::string Stream(std::size_t keySize, std::size_t offset) {
    Bytes key(keySize);
    for (std::size_t i = 0; i < keySize; ++i) key[i] = static_cast<unsigned char>(i + 1);
    Bytes stream(offset + 16);
    Platform::Rc4(m_hProvider, key.data(), key.size(), stream.data(), stream.size());
    return Hex(stream.data() + offset, 16);
  }

  HCRYPTPROV m_hProvider = 0;
};

// RFC 1321, A.5.
TEST_F(Secrets, TheDigestIsMd5) {
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", DigestOf(""));
  EXPECT_EQ("0cc175b9c0f1b6a831c399e269772661", DigestOf("a"));
  EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", DigestOf("abc"));
  EXPECT_EQ("f96b697d7cb7938d525a2f31aaf161d0", DigestOf("message digest"));
  EXPECT_EQ("c3fcd3d76192e4007dfb496cca67e13b", DigestOf("abcdefghijklmnopqrstuvwxyz"));
  EXPECT_EQ("d174ab98d277d9f5a5611c2c9f419d9f",
            DigestOf("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"));
  EXPECT_EQ("57edf4a22be3c955ac49da2e2107b67a",
            DigestOf("12345678901234567890123456789012345678901234567890123456789012345678901234567890"));
}

// RFC 6229, section 2.
TEST_F(Secrets, TheCipherIsRc4) {
  EXPECT_EQ("b2396305f03dc027ccc3524a0a1118a8", Stream(5, 0));
  EXPECT_EQ("6982944f18fc82d589c403a47a0d0919", Stream(5, 16));
  EXPECT_EQ("28cb1132c96ce286421dcaadb8b69eae", Stream(5, 240));
  EXPECT_EQ("ff25b58995996707e51fbdf08b34d875", Stream(5, 4096));
  EXPECT_EQ("9ac7cc9a609d1ef7b2932899cde41b97", Stream(16, 0));
  EXPECT_EQ("5248c4959014126a6e8a84f11d1a9e1c", Stream(16, 16));
  EXPECT_EQ("065902e4b620f6cc36c8589f66432f2b", Stream(16, 240));
  EXPECT_EQ("eaa6bd25880bf93d3f5d1e4ca2611d91", Stream(32, 0));
  EXPECT_EQ("f3e4c0a2e02d1d01f7f0a74618af2b48", Stream(32, 4096));
}

TEST_F(Secrets, OtherProvidersAreRefused) {
  HCRYPTPROV provider = 5;
  EXPECT_NE(0, Platform::AcquireProvider(nullptr, "Acme", 1, false, provider));
  EXPECT_NE(0, Platform::AcquireProvider("Acme", "", 1, true, provider));
  EXPECT_NE(0, Platform::AcquireProvider(nullptr, Platform::g_pDEFAULT_PROVIDER, 3, false, provider));
  EXPECT_EQ(5U, provider);
}

TEST_F(Secrets, AContainerHasOrGetsBothKeys) {
  for (const Platform::EKeyUse use : {Platform::EKeyUse::eSIGNATURE, Platform::EKeyUse::eEXCHANGE}) {
    const int code = Platform::FindProviderKey(m_hProvider, use);
    EXPECT_TRUE(code == 0 || code == Platform::g_iNO_KEY);
    EXPECT_EQ(0, Platform::MakeProviderKey(m_hProvider, use));
  }
}

// A registry in a folder of its own.
class RegistryTest : public testing::Test {
 protected:
  RegistryTest() : m_sRegistry(m_folder.File("a registry")), m_there(m_sRegistry.c_str()) {}

  int Write(const std::string& key, const std::string& name, const Bytes& bytes,
            HKEY root = HKEY_CURRENT_USER) {
    const int code = Platform::CreateRegistryKey(root, key);
    return code != 0 ? code : Platform::WriteRegistryValue(root, key, name, bytes);
  }

  TestSupport::TemporaryFolder m_folder;
  const std::string m_sRegistry;
  const Platform::RegistryFolder m_there;
};

TEST_F(RegistryTest, AValueIsWhatWasWrittenLast) {
  Bytes all(256);
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<unsigned char>(i);
  for (const Bytes& bytes : {Bytes{1, 2, 3}, Bytes{}, all, Bytes{0}}) {
    ASSERT_EQ(0, Write("A\\B", "Value", bytes));
    Bytes read = {9};
    ASSERT_EQ(0, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "A\\B", "Value", read));
    EXPECT_EQ(bytes, read);
  }
}

TEST_F(RegistryTest, WhatIsMissingIsToldAndLeavesTheResult) {
  Bytes read = {9};
  EXPECT_EQ(ENOENT, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "A", "Value", read));
  ASSERT_EQ(0, Write("A", "Value", {1}));
  EXPECT_EQ(ENOENT, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "A", "Other", read));
  EXPECT_EQ(ENOENT, Platform::ReadRegistryValue(HKEY_LOCAL_MACHINE, "A", "Value", read));
  EXPECT_EQ(EBADF, Platform::ReadRegistryValue(nullptr, "A", "Value", read));
  EXPECT_EQ(Bytes{9}, read);
  EXPECT_EQ(ENOENT, Platform::WriteRegistryValue(HKEY_CURRENT_USER, "B", "Value", {1}));
  EXPECT_EQ(EBADF, Platform::WriteRegistryValue(nullptr, "A", "Value", {1}));
  EXPECT_EQ(EBADF, Platform::CreateRegistryKey(nullptr, "A"));
}

TEST_F(RegistryTest, KeysAndValuesOfOneNameStandSideBySide) {
  ASSERT_EQ(0, Write("A", "B", {1}));
  ASSERT_EQ(0, Write("A\\B", "B", {2}));
  ASSERT_EQ(0, Write("A\\B\\B=", "B", {3}));
  Bytes read;
  ASSERT_EQ(0, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "A", "B", read));
  EXPECT_EQ(Bytes{1}, read);
}

TEST_F(RegistryTest, FoldersBelongToTheThreadThatSetThem) {
  const std::string other = m_folder.File("other");
  ASSERT_EQ(0, Write("A", "V", {1}));
  Bytes read;
  {
    const Platform::RegistryFolder there(other.c_str());
    EXPECT_EQ(ENOENT, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "A", "V", read));
  }
  EXPECT_EQ(0, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "A", "V", read));
}

// Names of all sorts: what is hostile to a tree of files, and chance.
std::vector<std::string> OddNames() {
  std::vector<std::string> names = {
      ".",    "..",    "...", "../..", "/",        "/etc/passwd", "a/b", "a",       "A",    "%",   "%%",
      "%41",  "=",     "a=",  "a%3D",  "%%ABCDEF", " ",           "a ",  " a",      "~",    "-rf", "*",
      "?",    "$HOME", "`x`", "a\nb",  "\xc3\xa9", "\xe9",        ".a",  "a.",      "a..b", "NUL", "con",
      "\x7f", "\x01",  "%2F", "a%2Fb", "%00",      "@",           "{}",  ".bashrc", "%3D"};
  names.emplace_back("\0", 1);
  names.emplace_back("a\0b", 3);
  names.emplace_back("a\0", 2);
  std::mt19937 chance(20260101);
  for (int i = 0; i < 100; ++i) {
    std::string name(1 + chance() % 12, ' ');
    for (char& character : name) character = "./%=a\0\\A\xff\n"[chance() % 10];
    names.push_back(name);
  }
  return names;
}

// Each gets a value of its own, as a key and as a value; none finds another's, and nothing appears beside the tree.
TEST_F(RegistryTest, NoNameLeavesTheTreeOrMeetsAnother) {
  const std::vector<std::string> all = OddNames();
  const std::set<std::string> names(all.begin(), all.end());
  unsigned char count = 0;
  for (const std::string& name : names) {
    ++count;
    ASSERT_EQ(0, Write("Keys\\" + name, "V", {count}));
    ASSERT_EQ(0, Write("Values", name, {count, 1}));
  }
  count = 0;
  for (const std::string& name : names) {
    ++count;
    Bytes read;
    ASSERT_EQ(0, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "Keys\\" + name, "V", read));
    EXPECT_EQ(Bytes({count}), read) << testing::PrintToString(name);
    ASSERT_EQ(0, Platform::ReadRegistryValue(HKEY_CURRENT_USER, "Values", name, read));
    EXPECT_EQ(Bytes({count, 1}), read) << testing::PrintToString(name);
  }
  EXPECT_EQ(std::set<std::string>{"a registry"}, m_folder.Names());
}

TEST_F(RegistryTest, HostileKeysStayBelowTheirRoot) {
  for (const char* const key :
       {"..\\..\\..\\outside", "..", "\\..\\outside", "/../../outside", "\\", "A\\", "\\\\"}) {
    ASSERT_EQ(0, Write(key, "V", {1})) << key;
    Bytes read;
    EXPECT_EQ(0, Platform::ReadRegistryValue(HKEY_CURRENT_USER, key, "V", read)) << key;
  }
  EXPECT_EQ(std::set<std::string>{"a registry"}, m_folder.Names());
}

}  // namespace

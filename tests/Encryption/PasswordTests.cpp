#include <Infrastructure/OxaCore/Encryption.h>
#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/SystemTools.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "Platform/Secrets.h"
#include "Support/TemporaryFolder.h"
#include "Support/Together.h"

using namespace Oxa::Core;

namespace {

const char* const sKEY = "Software\\Acme\\Probe";
const char* const sFILE = "registry/HKEY_CURRENT_USER/Software/Acme/Probe/Password=";

// An encryptor whose registry lies in a folder of its own.
class Password : public testing::Test {
 protected:
  Password()
      : m_spEncryptor(Encryptor::Acquire("", Encryptor::eRSA_FULL, "")),
        m_sRegistry(m_folder.File("registry")),
        m_there(m_sRegistry.c_str()) {}

  bool Save(const std::string& password, const std::string& key = sKEY, const std::string& name = "Password",
            HKEY root = HKEY_CURRENT_USER) {
    return m_spEncryptor->SavePassword(password, key, name, root);
  }

  // What is loaded, or "(none)".
  std::string Loaded(const std::string& key = sKEY, const std::string& name = "Password",
                     HKEY root = HKEY_CURRENT_USER) {
    std::string password = "before";
    const bool loaded = m_spEncryptor->LoadPassword(password, key, name, root);
    EXPECT_TRUE(loaded || password == "before");
    return loaded ? password : "(none)";
  }

  // The text of the error that saving raises; "" if there is none.
  std::string TroubleOfSaving(const std::string& key, HKEY root = HKEY_CURRENT_USER) {
    try {
      Save("s3cret", key, "Password", root);
    } catch (OSError& error) {
      EXPECT_EQ("Oxa.Core.CryptoAPI", error.GetData(AlertInfo::sLOG_NAME));
      EXPECT_EQ("OperatingSystem", error.GetData(AlertInfo::sCATEGORY));
      return error.what();
    }
    return "";
  }

  // What stands in the folder of the key, values and all else.
  std::ptrdiff_t CountInKey() const {
    const std::filesystem::path value(m_folder.File(sFILE));
    return std::distance(std::filesystem::directory_iterator(value.parent_path()),
                         std::filesystem::directory_iterator());
  }

  TestSupport::TemporaryFolder m_folder;
  const boost::shared_ptr<Encryptor> m_spEncryptor;
  const std::string m_sRegistry;
  const Platform::RegistryFolder m_there;
};

TEST_F(Password, ComesBack) {
  ASSERT_TRUE(Save("s3cret"));
  EXPECT_EQ("s3cret", Loaded());
  ASSERT_TRUE(Save("another, longer one"));
  EXPECT_EQ("another, longer one", Loaded());
  const std::string odd("\0\xff\n\0", 4);
  ASSERT_TRUE(Save(odd));
  EXPECT_EQ(odd, Loaded());
}

TEST_F(Password, IsHiddenByThePathOfItsKey) {
  ASSERT_TRUE(Save("s3cret"));
  EXPECT_EQ("\xe0\x7e\x11\x5a\xee\x30", m_folder.Read(sFILE));
}

TEST_F(Password, EmptyIsOneZeroByteAndComesBackEmpty) {
  ASSERT_TRUE(Save(""));
  EXPECT_EQ(std::string(1, '\0'), m_folder.Read(sFILE));
  EXPECT_EQ("", Loaded());
}

// The one value that can't be told from the empty one.
TEST_F(Password, OfOneCharacterThatIsHiddenAsZeroComesBackEmpty) {
  ASSERT_TRUE(Save("M", "B\\M"));  // any other key than the one below
  EXPECT_EQ("M", Loaded("B\\M"));
  ASSERT_TRUE(Save("L", "C"));
  EXPECT_EQ(std::string(1, '\0'), m_folder.Read("registry/HKEY_CURRENT_USER/C/Password="));
  EXPECT_EQ("", Loaded("C"));
}

TEST_F(Password, OfAnotherLengthThanOneMayBeginWithZero) {
  ASSERT_TRUE(Save("Lx", "C"));
  EXPECT_EQ(std::string(2, '\0'), m_folder.Read("registry/HKEY_CURRENT_USER/C/Password="));
  EXPECT_EQ("Lx", Loaded("C"));
}

TEST_F(Password, NamesMustNotBeEmpty) {
  EXPECT_FALSE(Save("s3cret", ""));
  EXPECT_FALSE(Save("s3cret", sKEY, ""));
  EXPECT_EQ("(none)", Loaded(""));
  EXPECT_EQ("(none)", Loaded(sKEY, ""));
  EXPECT_FALSE(m_folder.Has("registry"));
}

TEST_F(Password, WhatIsMissingIsNotLoaded) {
  EXPECT_EQ("(none)", Loaded());
  ASSERT_TRUE(Save("s3cret"));
  EXPECT_EQ("(none)", Loaded(sKEY, "Passwort"));
  EXPECT_EQ("(none)", Loaded("Software\\Acme"));
  EXPECT_EQ("(none)", Loaded("Software\\Acme\\Probe\\Deeper"));
  EXPECT_EQ("(none)", Loaded("SOFTWARE\\Acme\\Probe"));
  EXPECT_EQ("(none)", Loaded(sKEY, "password"));
  EXPECT_EQ("(none)", Loaded(sKEY, "Password", HKEY_LOCAL_MACHINE));
}

TEST_F(Password, EachRootHasItsOwn) {
  ASSERT_TRUE(Save("user's"));
  ASSERT_TRUE(Save("machine's", sKEY, "Password", HKEY_LOCAL_MACHINE));
  EXPECT_EQ("user's", Loaded());
  EXPECT_EQ("machine's", Loaded(sKEY, "Password", HKEY_LOCAL_MACHINE));
  EXPECT_NE(HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE);
}

TEST_F(Password, WithoutARootRaises) {
  EXPECT_EQ(MSWindows::GetWindowsErrorMessage(EBADF), TroubleOfSaving(sKEY, nullptr));
  EXPECT_EQ("(none)", Loaded(sKEY, "Password", nullptr));
}

TEST_F(Password, AKeyThatCannotBeMadeRaises) {
  m_folder.Write("registry", "a file in the way");
  EXPECT_EQ(MSWindows::GetWindowsErrorMessage(ENOTDIR), TroubleOfSaving(sKEY));
  EXPECT_EQ("(none)", Loaded());
}

TEST_F(Password, AKeyThatIsTooLongRaises) {
  EXPECT_EQ(MSWindows::GetWindowsErrorMessage(ENAMETOOLONG), TroubleOfSaving(std::string(256, 'k')));
  EXPECT_EQ(MSWindows::GetWindowsErrorMessage(ENAMETOOLONG),
            TroubleOfSaving("Software\\" + std::string(256, 'k') + "\\Probe"));
  EXPECT_EQ("", TroubleOfSaving(std::string(255, 'k')));
  std::string deep = "d";
  for (int i = 0; i < 3000; ++i) deep += "\\d";
  EXPECT_EQ(MSWindows::GetWindowsErrorMessage(ENAMETOOLONG), TroubleOfSaving(deep));
  EXPECT_EQ("(none)", Loaded(deep));
}

TEST_F(Password, AKeyThatIsTooLongLeavesNothingBehind) {
  std::string deep = "d";
  for (int i = 0; i < 3000; ++i) deep += "\\d";
  for (const std::string& key : {"Software\\" + std::string(256, 'k'), deep}) {
    EXPECT_EQ(MSWindows::GetWindowsErrorMessage(ENAMETOOLONG), TroubleOfSaving(key));
    EXPECT_EQ(std::set<std::string>(), m_folder.Names());
  }
}

TEST_F(Password, AValueThatCannotBeWrittenIsToldByTheResult) {
  EXPECT_FALSE(Save("s3cret", sKEY, std::string(255, 'v')));
  EXPECT_TRUE(Save("s3cret", sKEY, std::string(254, 'v')));
  std::filesystem::create_directories(m_folder.File(sFILE));
  const auto before = CountInKey();
  EXPECT_FALSE(Save("s3cret"));
  EXPECT_EQ("(none)", Loaded());
  EXPECT_EQ(before, CountInKey());  // no half of it
}

TEST_F(Password, NoRoomLeavesTheOldOne) {
  ASSERT_TRUE(Save("s3cret"));
  rlimit limit = {3, RLIM_INFINITY};
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
  const bool saved = Save("another");
  limit.rlim_cur = RLIM_INFINITY;  // for what the test itself writes
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
  EXPECT_FALSE(saved);
  EXPECT_EQ("s3cret", Loaded());
  EXPECT_EQ(1, CountInKey());
}

TEST_F(Password, AnEmptyFileIsNone) {
  ASSERT_TRUE(Save("s3cret"));
  m_folder.Write(sFILE, "");
  std::string password = "before";
  EXPECT_FALSE(m_spEncryptor->LoadPassword(password, sKEY, "Password", HKEY_CURRENT_USER));
  EXPECT_EQ("before", password);
}

TEST_F(Password, OneThatIsTooLargeLeavesTheOldOne) {
  ASSERT_TRUE(Save("s3cret"));
  EXPECT_FALSE(Save(std::string((16U << 20U) + 1, 'x')));
  EXPECT_EQ("s3cret", Loaded());
}

// Whoever reads finds the one before or the one behind, never a mixture and never none.
TEST_F(Password, IsWholeWhoeverWrites) {
  const std::string one(5000, 'a');
  const std::string other(9000, 'b');
  ASSERT_TRUE(Save(one));
  bool right[3] = {};
  TestSupport::Together(3, [&](int index) {
    const Platform::RegistryFolder there(m_sRegistry.c_str());
    right[index] = true;
    for (int i = 0; i < 30; ++i) {
      if (index < 2) {
        right[index] = right[index] && Save(index == 0 ? one : other);
      } else {
        const std::string seen = Loaded();
        right[index] = right[index] && (seen == one || seen == other);
      }
    }
  });
  for (const bool each : right) EXPECT_TRUE(each);
}

// Where things are put if nobody says otherwise.
class RegistryPlace : public testing::Test {
 protected:
  bool Save() {
    return Encryptor::Acquire("", Encryptor::eRSA_FULL, "")
        ->SavePassword("s3cret", "K", "V", HKEY_CURRENT_USER);
  }
  TestSupport::TemporaryFolder m_folder;
};

TEST_F(RegistryPlace, IsTheFolderOfConfigurations) {
  ::setenv("XDG_CONFIG_HOME", m_folder.File("config").c_str(), 1);
  ASSERT_TRUE(Save());
  EXPECT_TRUE(m_folder.Has("config/OxaCore/registry/HKEY_CURRENT_USER/K/V="));
}

TEST_F(RegistryPlace, IsBelowHomeOtherwise) {
  ::setenv("XDG_CONFIG_HOME", "not/absolute", 1);
  ::setenv("HOME", m_folder.Path().c_str(), 1);
  ASSERT_TRUE(Save());
  EXPECT_TRUE(m_folder.Has(".config/OxaCore/registry/HKEY_CURRENT_USER/K/V="));
}

TEST_F(RegistryPlace, IsNowhereWithoutHome) {
  ::unsetenv("XDG_CONFIG_HOME");
  ::unsetenv("HOME");
  EXPECT_THROW(Save(), OSError);
}

}  // namespace

#include <Infrastructure/OxaCore/Encryption.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "Platform/Linux/CryptoProvider.h"
#include "Platform/Secrets.h"
#include "Support/Together.h"

using namespace Oxa::Core;

namespace {

const std::string sBASE = "Microsoft Base Cryptographic Provider v1.0";

bool IsAcquired(const std::string& container, Encryptor::EType type, const std::string& provider) {
  return static_cast<bool>(Encryptor::Acquire(container, type, provider));
}

// What providers say of their keys, until this is gone.
class Troubles {
 public:
  explicit Troubles(const Platform::ProviderTroubles& troubles) { Platform::SetProviderTroubles(troubles); }
  Troubles(const Troubles&) = delete;
  Troubles& operator=(const Troubles&) = delete;
  ~Troubles() { Platform::SetProviderTroubles({}); }
};

Platform::ProviderTroubles KeyTrouble(Platform::EKeyUse use, int find, int make) {
  Platform::ProviderTroubles troubles;
  troubles.m_iFind[static_cast<int>(use)] = find;
  troubles.m_iMake[static_cast<int>(use)] = make;
  return troubles;
}

TEST(Acquisition, TheDefaultProviderIsThereByNameAndWithout) {
  EXPECT_TRUE(IsAcquired("", Encryptor::eRSA_FULL, ""));
  EXPECT_TRUE(IsAcquired("", Encryptor::eRSA_FULL, sBASE));
  EXPECT_TRUE(IsAcquired("Acme", Encryptor::eRSA_FULL, ""));
  EXPECT_TRUE(IsAcquired("../../etc/Acme\n", Encryptor::eRSA_FULL, sBASE));
}

TEST(Acquisition, AnUnknownTypeCountsAsTheFirst) {
  EXPECT_TRUE(IsAcquired("", static_cast<Encryptor::EType>(5), ""));
  EXPECT_TRUE(IsAcquired("", static_cast<Encryptor::EType>(-1), ""));
}

TEST(Acquisition, OtherTypesAreRefused) {
  for (const Encryptor::EType type :
       {Encryptor::eRSA_SIG, Encryptor::eDSS, Encryptor::eFORTEZZA, Encryptor::eMS_EXCHANGE}) {
    EXPECT_FALSE(IsAcquired("", type, ""));
    EXPECT_EQ("Failed to create a new key container under the logged on user for a provider named " + sBASE,
              Encryptor::GetLastAcquisitionError());
  }
}

TEST(Acquisition, NothingIsToldBeforeTheFirstFailure) {
  EXPECT_TRUE(IsAcquired("", Encryptor::eRSA_FULL, ""));
  EXPECT_EQ("", Encryptor::GetLastAcquisitionError());
}

TEST(Acquisition, AnUnknownProviderIsRefusedAndNamed) {
  EXPECT_FALSE(IsAcquired("", Encryptor::eRSA_FULL, "Acme Provider"));
  EXPECT_EQ(
      "Failed to create a new key container under the logged on user for a provider named Acme Provider",
      Encryptor::GetLastAcquisitionError());
  EXPECT_FALSE(IsAcquired("Acme Keys", Encryptor::eRSA_FULL, "microsoft base cryptographic provider v1.0"));
  EXPECT_EQ(
      "Failed to create a new key container under Acme Keys for a provider named "
      "microsoft base cryptographic provider v1.0",
      Encryptor::GetLastAcquisitionError());
}

TEST(Acquisition, ANameThatOnlyBeginsWithTheProvidersIsRefused) {
  const std::string name = sBASE + std::string("\0junk", 5);
  EXPECT_FALSE(IsAcquired("", Encryptor::eRSA_FULL, name));
  EXPECT_EQ("Failed to create a new key container under the logged on user for a provider named " + name,
            Encryptor::GetLastAcquisitionError());
}

TEST(Acquisition, ASuccessLeavesTheText) {
  EXPECT_FALSE(IsAcquired("", Encryptor::eRSA_FULL, "Acme"));
  const std::string text = Encryptor::GetLastAcquisitionError();
  EXPECT_EQ(0U, text.find("Failed to create a new key container under "));
  EXPECT_TRUE(IsAcquired("", Encryptor::eRSA_FULL, ""));
  EXPECT_EQ(text, Encryptor::GetLastAcquisitionError());
}

TEST(Acquisition, WithoutACryptographicLibraryThereIsNoProvider) {
  for (const char* const library : {"libthere-is-no-such-thing.so.1", "libm.so.6"}) {
    Platform::ProviderTroubles troubles;
    troubles.m_pLibrary = library;
    const Troubles standing(troubles);
    EXPECT_FALSE(IsAcquired("", Encryptor::eRSA_FULL, ""));
    EXPECT_EQ("Failed to create a new key container under the logged on user for a provider named " + sBASE,
              Encryptor::GetLastAcquisitionError());
  }
  EXPECT_TRUE(IsAcquired("", Encryptor::eRSA_FULL, ""));
}

TEST(Acquisition, MissingKeysAreMade) {
  Platform::ProviderTroubles troubles;
  for (int& code : troubles.m_iFind) code = Platform::g_iNO_KEY;
  const Troubles standing(troubles);
  EXPECT_TRUE(IsAcquired("", Encryptor::eRSA_FULL, ""));
}

TEST(Acquisition, TroubleWithKeysIsTold) {
  const struct {
    Platform::EKeyUse use;
    int find;
    const char* text;
  } cases[] = {
      {Platform::EKeyUse::eSIGNATURE, Platform::g_iNO_KEY, "Failed to create a signature key"},
      {Platform::EKeyUse::eSIGNATURE, EIO, "Unable to get a signature key"},
      {Platform::EKeyUse::eEXCHANGE, Platform::g_iNO_KEY, "Failed to create an exchange key"},
      {Platform::EKeyUse::eEXCHANGE, EIO, "Unable to get an exchange key"},
  };
  for (const auto& one : cases) {
    const Troubles standing(KeyTrouble(one.use, one.find, EIO));
    EXPECT_FALSE(IsAcquired("", Encryptor::eRSA_FULL, ""));
    EXPECT_EQ(one.text, Encryptor::GetLastAcquisitionError());
  }
}

TEST(Acquisition, TheSignatureKeyIsLookedForFirst) {
  Platform::ProviderTroubles troubles;
  for (int& code : troubles.m_iFind) code = EIO;
  const Troubles standing(troubles);
  EXPECT_FALSE(IsAcquired("", Encryptor::eRSA_FULL, ""));
  EXPECT_EQ("Unable to get a signature key", Encryptor::GetLastAcquisitionError());
}

// Which text stays is anybody's guess; that it is one of them, whole, is not.
TEST(Acquisition, ThreadsThatFailAtOnceLeaveOneTextWhole) {
  constexpr int iTHREADS = 4;
  std::vector<std::string> expected;
  expected.reserve(iTHREADS);
  for (int i = 0; i < iTHREADS; ++i)
    expected.push_back("Failed to create a new key container under the logged on user for a provider named " +
                       std::string(static_cast<std::size_t>(20 * (i + 1)), static_cast<char>('A' + i)));
  bool whole[iTHREADS] = {};
  TestSupport::Together(iTHREADS, [&](int index) {
    whole[index] = true;
    const std::string provider(static_cast<std::size_t>(20 * (index + 1)), static_cast<char>('A' + index));
    for (int i = 0; i < 200; ++i) {
      if (IsAcquired("", Encryptor::eRSA_FULL, provider)) whole[index] = false;
      const std::string text = Encryptor::GetLastAcquisitionError();
      if (std::find(expected.begin(), expected.end(), text) == expected.end()) whole[index] = false;
    }
  });
  for (const bool one : whole) EXPECT_TRUE(one);
}

TEST(Acquisition, ManyThreadsShareOneEncryptor) {
  const boost::shared_ptr<Encryptor> shared = Encryptor::Acquire("", Encryptor::eRSA_FULL, "");
  ASSERT_TRUE(shared);
  bool right[4] = {};
  TestSupport::Together(4, [&](int index) {
    right[index] = true;
    for (int i = 0; i < 100; ++i) {
      const boost::shared_ptr<Encryptor> own = Encryptor::Acquire("", Encryptor::eRSA_FULL, "");
      long long value = index;
      right[index] = right[index] && shared->Encrypt(value, "key") && value != index &&
                     own->Decrypt(value, "key") && value == index;
    }
  });
  for (const bool one : right) EXPECT_TRUE(one);
}

}  // namespace

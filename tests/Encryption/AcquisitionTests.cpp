#include <Infrastructure/OxaCore/Encryption.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
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

// In a process of its own, in which nothing has failed yet.
TEST(Acquisition, NothingIsToldBeforeTheFirstFailure) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      ::_exit(IsAcquired("", Encryptor::eRSA_FULL, "") && Encryptor::GetLastAcquisitionError().empty() ? 0
                                                                                                       : 1),
      testing::ExitedWithCode(0), "");
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

TEST(Acquisition, ALibraryWithoutTheFunctionsIsClosedAgain) {
  Platform::ProviderTroubles troubles;
  troubles.m_pLibrary = "libanl.so.1";
  const auto isLoaded = [&] { return ::dlopen(troubles.m_pLibrary, RTLD_LAZY | RTLD_NOLOAD) != nullptr; };
  void* const library = ::dlopen(troubles.m_pLibrary, RTLD_NOW);
  ASSERT_NE(nullptr, library);
  ::dlclose(library);
  ASSERT_FALSE(isLoaded());
  const Troubles standing(troubles);
  EXPECT_FALSE(IsAcquired("", Encryptor::eRSA_FULL, ""));
  EXPECT_FALSE(isLoaded());
}

// What the provider is asked.
std::string s_asked;

void Note(const char* what, unsigned long number) {
  s_asked += std::string(what) + ' ' + std::to_string(number) + '\n';
}

std::string AskedFor(Encryptor::EType type, Platform::ProviderTroubles troubles) {
  troubles.m_pAsked = &Note;
  const Troubles standing(troubles);
  s_asked.clear();
  IsAcquired("", type, "");
  return s_asked;
}

TEST(Acquisition, AContainerThatIsMissingIsMade) {
  Platform::ProviderTroubles troubles;
  troubles.m_bContainersMissing = true;
  EXPECT_EQ("open 1\nnew 1\nfind 2\nfind 1\n", AskedFor(Encryptor::eRSA_FULL, troubles));
  const Troubles standing(troubles);
  const auto encryptor = Encryptor::Acquire("Acme", Encryptor::eRSA_FULL, "");
  ASSERT_TRUE(encryptor);
  std::string text = "s3cret";
  EXPECT_TRUE(encryptor->Encrypt(text, "key"));
}

TEST(Acquisition, AContainerThatIsThereIsOpenedAtOnce) {
  EXPECT_EQ("open 1\nfind 2\nfind 1\n", AskedFor(Encryptor::eRSA_FULL, {}));
}

TEST(Acquisition, EachTypeHasItsNumber) {
  EXPECT_EQ("open 1\nfind 2\nfind 1\n", AskedFor(Encryptor::eRSA_FULL, {}));
  EXPECT_EQ("open 1\nfind 2\nfind 1\n", AskedFor(static_cast<Encryptor::EType>(5), {}));
  EXPECT_EQ("open 2\nnew 2\n", AskedFor(Encryptor::eRSA_SIG, {}));
  EXPECT_EQ("open 3\nnew 3\n", AskedFor(Encryptor::eDSS, {}));
  EXPECT_EQ("open 4\nnew 4\n", AskedFor(Encryptor::eFORTEZZA, {}));
  EXPECT_EQ("open 5\nnew 5\n", AskedFor(Encryptor::eMS_EXCHANGE, {}));
}

// A signature key is 2, an exchange key 1.
TEST(Acquisition, EachKeyHasItsNumber) {
  Platform::ProviderTroubles troubles;
  for (int& code : troubles.m_iFind) code = Platform::g_iNO_KEY;
  EXPECT_EQ("open 1\nfind 2\nmake 2\nfind 1\nmake 1\n", AskedFor(Encryptor::eRSA_FULL, troubles));
  troubles = KeyTrouble(Platform::EKeyUse::eSIGNATURE, EIO, 0);
  EXPECT_EQ("open 1\nfind 2\n", AskedFor(Encryptor::eRSA_FULL, troubles));
  troubles = KeyTrouble(Platform::EKeyUse::eEXCHANGE, EIO, 0);
  EXPECT_EQ("open 1\nfind 2\nfind 1\n", AskedFor(Encryptor::eRSA_FULL, troubles));
}

bool IsLibraryLoaded() {
  std::ifstream maps("/proc/self/maps");
  const std::string text((std::istreambuf_iterator<char>(maps)), std::istreambuf_iterator<char>());
  EXPECT_NE("", text);
  return text.find("libnettle") != std::string::npos;
}

std::ptrdiff_t CountOpenFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

// With the last encryptor goes what it was made of; so it does where the keys can't be had.
TEST(Acquisition, HandlesAreGivenBack) {
  ASSERT_FALSE(IsLibraryLoaded());
  {
    const auto encryptor = Encryptor::Acquire("", Encryptor::eRSA_FULL, "");
    EXPECT_TRUE(IsLibraryLoaded());
  }
  EXPECT_FALSE(IsLibraryLoaded());
  const Troubles standing(KeyTrouble(Platform::EKeyUse::eEXCHANGE, EIO, 0));
  EXPECT_FALSE(IsAcquired("", Encryptor::eRSA_FULL, ""));
  EXPECT_FALSE(IsLibraryLoaded());
}

TEST(Acquisition, NeitherFilesNorMemoryAreLost) {
  const auto use = [] {
    const auto encryptor = Encryptor::Acquire("", Encryptor::eRSA_FULL, "");
    std::string text = "s3cret";
    EXPECT_TRUE(encryptor->Encrypt(text, "key"));
  };
  for (int round = 0; round < 200; ++round) use();  // the allocator keeps some of what it is given back
  const std::ptrdiff_t files = CountOpenFiles();
  const auto memory = ::mallinfo2().uordblks;
  for (int round = 0; round < 200; ++round) use();
  EXPECT_EQ(files, CountOpenFiles());
  EXPECT_LT(::mallinfo2().uordblks, memory + 200 * sizeof(void*));  // less than a handle each
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

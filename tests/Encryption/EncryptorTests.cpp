#include <Infrastructure/OxaCore/Encryption.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "Support/VirtualSlots.h"

using namespace Oxa::Core;
using TestSupport::SlotOf;

namespace {

using Bytes = std::vector<unsigned char>;

boost::shared_ptr<Encryptor> Acquired() {
  boost::shared_ptr<Encryptor> encryptor = Encryptor::Acquire("", Encryptor::eRSA_FULL, "");
  EXPECT_TRUE(encryptor) << Encryptor::GetLastAcquisitionError();
  return encryptor;
}

Bytes BytesOf(const std::string& text) { return {text.begin(), text.end()}; }

// All there is, for the sizes at which something could begin anew: none of them may have a limit.
Bytes Counted(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<unsigned char>(i * 7);
  return bytes;
}

TEST(Encryptor, AVectorComesBackByTheSameKey) {
  const auto encryptor = Acquired();
  for (const std::size_t size : {1U, 5U, 16U, 64U, 65U, 256U, 4096U, 100000U}) {
    const Bytes plain = Counted(size);
    Bytes data = plain;
    ASSERT_TRUE(encryptor->Encrypt(data, BytesOf("key")));
    EXPECT_EQ(size, data.size());
    EXPECT_NE(plain, data);
    ASSERT_TRUE(encryptor->Decrypt(data, BytesOf("key")));
    EXPECT_EQ(plain, data);
  }
}

TEST(Encryptor, TextAndBytesAreTheSameKey) {
  const auto encryptor = Acquired();
  Bytes byText = BytesOf("attack at dawn");
  Bytes byBytes = byText;
  std::string text = "attack at dawn";
  ASSERT_TRUE(encryptor->Encrypt(byText, "key"));
  ASSERT_TRUE(encryptor->Encrypt(byBytes, BytesOf("key")));
  ASSERT_TRUE(encryptor->Encrypt(text, "key"));
  EXPECT_EQ(byText, byBytes);
  EXPECT_EQ(byText, BytesOf(text));
  ASSERT_TRUE(encryptor->Decrypt(byText, "key"));
  EXPECT_EQ(BytesOf("attack at dawn"), byText);
}

// Five bytes of the key's MD5 and eleven zeros, made into an RC4 stream: from an independent implementation.
TEST(Encryptor, TheCipherBytesAreTheOriginalsOwn) {
  const auto encryptor = Acquired();
  Bytes data = BytesOf("attack at dawn");
  ASSERT_TRUE(encryptor->Encrypt(data, "key"));
  EXPECT_EQ(Bytes({0x98, 0xc5, 0x48, 0xf4, 0x71, 0xe7, 0xb4, 0x52, 0xe9, 0x99, 0xb9, 0x38, 0xf3, 0xb9}),
            data);
  data = BytesOf("s3cret");
  ASSERT_TRUE(encryptor->Encrypt(data, "Software\\Acme\\Probe"));
  EXPECT_EQ(Bytes({0xe0, 0x7e, 0x11, 0x5a, 0xee, 0x30}), data);
}

TEST(Encryptor, ATextMayHoldAnyBytesAndKeepsItsLength) {
  const auto encryptor = Acquired();
  const std::string plain("a\0b\xff\0", 5);
  std::string text = plain;
  ASSERT_TRUE(encryptor->Encrypt(text, "key"));
  EXPECT_EQ(5U, text.size());
  EXPECT_NE(plain, text);
  ASSERT_TRUE(encryptor->Decrypt(text, "key"));
  EXPECT_EQ(plain, text);
  std::string zeros(1000, '\0');
  ASSERT_TRUE(encryptor->Encrypt(zeros, "key"));  // the bare stream, in which a zero is bound to come
  EXPECT_EQ(1000U, zeros.size());
  EXPECT_NE(std::string::npos, zeros.find('\0'));
}

TEST(Encryptor, AKeyCountsWithAllItsBytes) {
  const auto encryptor = Acquired();
  std::string one = "text";
  std::string other = "text";
  ASSERT_TRUE(encryptor->Encrypt(one, std::string("k\0a", 3)));
  ASSERT_TRUE(encryptor->Encrypt(other, std::string("k\0b", 3)));
  EXPECT_NE(one, other);
}

TEST(Encryptor, AWrongKeyIsNoFailure) {
  const auto encryptor = Acquired();
  std::string text = "attack at dawn";
  ASSERT_TRUE(encryptor->Encrypt(text, "key"));
  EXPECT_TRUE(encryptor->Decrypt(text, "yek"));
  EXPECT_EQ(14U, text.size());
  EXPECT_NE("attack at dawn", text);
}

TEST(Encryptor, NumbersComeBackAndAreHidden) {
  const auto encryptor = Acquired();
  for (const unsigned long plain : {0UL, 1UL, 3000000000UL, 4294967295UL}) {
    unsigned long value = plain;
    ASSERT_TRUE(encryptor->Encrypt(value, "key"));
    EXPECT_NE(plain, value);
    EXPECT_LE(value, 4294967295UL);
    ASSERT_TRUE(encryptor->Decrypt(value, "key"));
    EXPECT_EQ(plain, value);
  }
  for (const long long plain : {0LL, -5LL, std::numeric_limits<long long>::max()}) {
    long long value = plain;
    ASSERT_TRUE(encryptor->Encrypt(value, "key"));
    EXPECT_NE(plain, value);
    ASSERT_TRUE(encryptor->Decrypt(value, "key"));
    EXPECT_EQ(plain, value);
  }
}

TEST(Encryptor, NumbersAreFourAndEightBytes) {
  const auto encryptor = Acquired();
  unsigned long value = 3000000000UL;
  ASSERT_TRUE(encryptor->Encrypt(value, "key"));
  EXPECT_EQ(669839353UL, value);
  long long longValue = -5;
  ASSERT_TRUE(encryptor->Encrypt(longValue, "key"));
  EXPECT_EQ(-3716749603928584702LL, longValue);
}

TEST(Encryptor, ANumberBeyondFourBytesIsRefusedAndLeftAlone) {
  const auto encryptor = Acquired();
  for (const unsigned long plain : {4294967296UL, std::numeric_limits<unsigned long>::max()}) {
    unsigned long value = plain;
    EXPECT_FALSE(encryptor->Encrypt(value, "key"));
    EXPECT_EQ(plain, value);
    EXPECT_FALSE(encryptor->Decrypt(value, "key"));
    EXPECT_EQ(plain, value);
  }
}

// Calls both directions with a key that is none, and expects `data` as it was.
template <class Data, class Key>
void ExpectRefused(const Data& plain, const Key& key) {
  const auto encryptor = Acquired();
  Data data = plain;
  EXPECT_FALSE(encryptor->Encrypt(data, key));
  EXPECT_EQ(plain, data);
  EXPECT_FALSE(encryptor->Decrypt(data, key));
  EXPECT_EQ(plain, data);
}

TEST(Encryptor, AnEmptyKeyIsRefused) {
  ExpectRefused(BytesOf("data"), Bytes());
  ExpectRefused(BytesOf("data"), std::string());
  ExpectRefused(std::string("data"), std::string());
  ExpectRefused(5UL, std::string());
  ExpectRefused(5LL, std::string());
}

TEST(Encryptor, EmptyDataIsRefused) {
  ExpectRefused(Bytes(), BytesOf("key"));
  ExpectRefused(Bytes(), std::string("key"));
  ExpectRefused(std::string(), std::string("key"));
}

TEST(Encryptor, NobodyMakesOrCopiesOne) {
  static_assert(std::is_abstract_v<Encryptor> && std::has_virtual_destructor_v<Encryptor>);
  static_assert(!std::is_default_constructible_v<CryptoAPI> && !std::is_copy_constructible_v<CryptoAPI>);
  static_assert(!std::is_copy_assignable_v<CryptoAPI> && !std::is_copy_assignable_v<Encryptor>);
  static_assert(std::is_base_of_v<Encryptor, CryptoAPI>);
  EXPECT_TRUE(boost::dynamic_pointer_cast<CryptoAPI>(Acquired()));
}

TEST(Encryptor, TheVirtualOperationsStandInTheirOrder) {
  using OnBytes = bool (Encryptor::*)(Bytes&, const Bytes&);
  using OnText = bool (Encryptor::*)(std::string&, const std::string&);
  // A destructor takes the first two slots.
  EXPECT_EQ(2U, SlotOf<OnBytes>(&Encryptor::Encrypt));
  EXPECT_EQ(3U, SlotOf<OnText>(&Encryptor::Encrypt));
  EXPECT_EQ(4U, SlotOf<OnBytes>(&Encryptor::Decrypt));
  EXPECT_EQ(5U, SlotOf<OnText>(&Encryptor::Decrypt));
  EXPECT_EQ(6U, SlotOf(&Encryptor::SavePassword));
  EXPECT_EQ(7U, SlotOf(&Encryptor::LoadPassword));
}

}  // namespace

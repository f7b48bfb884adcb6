#include "AutoTest/Module/TEST_Encryption.h"

#include <Infrastructure/OxaCore/Encryption.h>

#include "AutoTest/Module/TestFolder.h"
#include "AutoTest/Module/TestMethods.h"
#include "Platform/Secrets.h"

namespace Oxa::Core {

namespace {

const char* const sKEY = "the key of the self-test";
const char* const sSUB_KEY = "Software\\OxaCore Tests";
const char* const sVALUE_NAME = "Password";

using Bytes = std::vector<unsigned char>;

// Every system has this provider. (One that it has not would leave a text behind for the host to find.)
boost::shared_ptr<Encryptor> Acquire() {
  boost::shared_ptr<Encryptor> encryptor = Encryptor::Acquire("", Encryptor::eRSA_FULL, "");
  OXA_TEST_ASSERT(encryptor);
  return encryptor;
}

Bytes AllBytes() {
  Bytes bytes(256);
  for (std::size_t index = 0; index < bytes.size(); ++index) bytes[index] = static_cast<unsigned char>(index);
  return bytes;
}

// There and back again, by a key of either kind.
template <class Data, class Key>
void CheckRoundTrip(Encryptor& encryptor, const Data& start, const Key& key) {
  Data data = start;
  OXA_TEST_ASSERT(encryptor.Encrypt(data, key));
  OXA_TEST_ASSERT(data != start);
  OXA_TEST_ASSERT(encryptor.Decrypt(data, key));
  OXA_TEST_ASSERT(data == start);
}

template <class Data, class Key>
void CheckRefusal(Encryptor& encryptor, const Data& start, const Key& key) {
  Data data = start;
  OXA_TEST_ASSERT(!encryptor.Encrypt(data, key) && data == start);
  OXA_TEST_ASSERT(!encryptor.Decrypt(data, key) && data == start);
}

template <class Data>
void CheckWrongKey(Encryptor& encryptor, const Data& start) {
  Data data = start;
  OXA_TEST_ASSERT(encryptor.Encrypt(data, sKEY));
  OXA_TEST_ASSERT(encryptor.Decrypt(data, "another key"));  // which is no failure
  OXA_TEST_ASSERT(data != start && data.size() == start.size());
}

Bytes StoredPassword() {
  Bytes stored;
  OXA_TEST_ASSERT(Platform::ReadRegistryValue(HKEY_CURRENT_USER, sSUB_KEY, sVALUE_NAME, stored) == 0);
  return stored;
}

void CheckPassword(Encryptor& encryptor, const std::string& password) {
  OXA_TEST_ASSERT(encryptor.SavePassword(password, sSUB_KEY, sVALUE_NAME, HKEY_CURRENT_USER));
  std::string loaded = "something else";
  OXA_TEST_ASSERT(encryptor.LoadPassword(loaded, sSUB_KEY, sVALUE_NAME, HKEY_CURRENT_USER));
  OXA_TEST_ASSERT(loaded == password);
}

}  // namespace

TEST_Encryption::TEST_Encryption() : TestSuite("Encryption Tests") {
  AddTestMethods(*this, {{"String Encryption Test", &TEST_Encryption::Strings},
                         {"Password Test", &TEST_Encryption::Password},
                         {"BYTE Vector Encryption Test", &TEST_Encryption::ByteVectors},
                         {"Fundamental Type Encryption Test", &TEST_Encryption::FundamentalTypes}});
}

void TEST_Encryption::Strings(std::string&) {
  const boost::shared_ptr<Encryptor> encryptor = Acquire();
  const std::string text = "what nobody is to see at a glance";
  CheckRoundTrip(*encryptor, text, std::string(sKEY));
  CheckRoundTrip(*encryptor, std::string("\0\xFF\0", 3), std::string(sKEY));
  CheckRefusal(*encryptor, text, std::string());
  CheckRefusal(*encryptor, std::string(), std::string(sKEY));
  CheckWrongKey(*encryptor, text);
}

// In a registry of the test's own, which goes with it: the user's isn't touched.
void TEST_Encryption::Password(std::string&) {
  const TestFolder folder;
  const Platform::RegistryFolder registry(folder.GetName().c_str());
  const boost::shared_ptr<Encryptor> encryptor = Acquire();
  CheckPassword(*encryptor, "s3cret");
  Bytes cipher = {'s', '3', 'c', 'r', 'e', 't'};
  OXA_TEST_ASSERT(encryptor->Encrypt(cipher, sSUB_KEY) && StoredPassword() == cipher);
  CheckPassword(*encryptor, "");
  OXA_TEST_ASSERT(StoredPassword() == Bytes(1, 0));
  std::string password = "untouched";
  OXA_TEST_ASSERT(!encryptor->LoadPassword(password, "Software\\None", sVALUE_NAME, HKEY_CURRENT_USER));
  OXA_TEST_ASSERT(!encryptor->LoadPassword(password, sSUB_KEY, "None", HKEY_CURRENT_USER));
  OXA_TEST_ASSERT(!encryptor->SavePassword(password, "", sVALUE_NAME, HKEY_CURRENT_USER));
  OXA_TEST_ASSERT(!encryptor->SavePassword(password, sSUB_KEY, "", HKEY_CURRENT_USER));
  OXA_TEST_ASSERT(password == "untouched");
}

void TEST_Encryption::ByteVectors(std::string&) {
  const boost::shared_ptr<Encryptor> encryptor = Acquire();
  CheckRoundTrip(*encryptor, AllBytes(), std::string(sKEY));
  CheckRoundTrip(*encryptor, AllBytes(), AllBytes());
  CheckRefusal(*encryptor, AllBytes(), Bytes());
  CheckRefusal(*encryptor, AllBytes(), std::string());
  CheckRefusal(*encryptor, Bytes(), AllBytes());
  CheckRefusal(*encryptor, Bytes(), std::string(sKEY));
  CheckWrongKey(*encryptor, AllBytes());
}

void TEST_Encryption::FundamentalTypes(std::string&) {
  const boost::shared_ptr<Encryptor> encryptor = Acquire();
  CheckRoundTrip(*encryptor, 4294967295UL, std::string(sKEY));
  CheckRoundTrip(*encryptor, 0UL, std::string(sKEY));
  CheckRoundTrip(*encryptor, -1234567890123456789LL, std::string(sKEY));
  CheckRefusal(*encryptor, 17UL, std::string());
  CheckRefusal(*encryptor, 17LL, std::string());
  CheckRefusal(*encryptor, 4294967296UL, std::string(sKEY));  // it has no four bytes
}

}  // namespace Oxa::Core

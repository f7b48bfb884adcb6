#include <Infrastructure/OxaCore/Encryption.h>

#include <Infrastructure/OxaCore/Lock.h>

#include <cstdint>
#include <cstring>
#include <limits>

#include "Core/Immortal.h"
#include "Encryption/AcquisitionMutex.h"

namespace Oxa::Core {

namespace {

// Runs `operation` on the bytes of a number, and takes them back if it succeeds.
template <class Number, class Operation>
bool OnBytes(Number& number, const Operation& operation) {
  std::vector<unsigned char> bytes(sizeof number);
  std::memcpy(bytes.data(), &number, sizeof number);
  if (!operation(bytes)) return false;
  std::memcpy(&number, bytes.data(), sizeof number);
  return true;
}

// The same for the four bytes that a number has on every system.
template <class Operation>
bool OnFourBytes(unsigned long& value, const Operation& operation) {
  if (value > std::numeric_limits<std::uint32_t>::max()) return false;
  auto number = static_cast<std::uint32_t>(value);
  if (!OnBytes(number, operation)) return false;
  value = number;
  return true;
}

}  // namespace

Encryptor::Encryptor() = default;
Encryptor::Encryptor(const Encryptor&) = default;
Encryptor& Encryptor::operator=(const Encryptor&) = default;
Encryptor::~Encryptor() = default;

bool Encryptor::Encrypt(unsigned long& value, const std::string& key) {
  return OnFourBytes(value, [&](std::vector<unsigned char>& bytes) { return Encrypt(bytes, key); });
}

bool Encryptor::Decrypt(unsigned long& value, const std::string& key) {
  return OnFourBytes(value, [&](std::vector<unsigned char>& bytes) { return Decrypt(bytes, key); });
}

bool Encryptor::Encrypt(long long& value, const std::string& key) {
  return OnBytes(value, [&](std::vector<unsigned char>& bytes) { return Encrypt(bytes, key); });
}

bool Encryptor::Decrypt(long long& value, const std::string& key) {
  return OnBytes(value, [&](std::vector<unsigned char>& bytes) { return Decrypt(bytes, key); });
}

bool Encryptor::Encrypt(std::vector<unsigned char>& data, const std::string& key) {
  std::vector<unsigned char> bytes;
  return GetStringBytes(key, bytes) && Encrypt(data, bytes);
}

bool Encryptor::Decrypt(std::vector<unsigned char>& data, const std::string& key) {
  std::vector<unsigned char> bytes;
  return GetStringBytes(key, bytes) && Decrypt(data, bytes);
}

bool Encryptor::GetStringBytes(const std::string& text, std::vector<unsigned char>& bytes) {
  if (text.empty()) return false;
  bytes.assign(text.begin(), text.end());
  return true;
}

boost::shared_ptr<Encryptor> Encryptor::Acquire(const std::string& containerName, EType type,
                                                const std::string& providerName) {
  const boost::shared_ptr<CryptoAPI> encryptor(new CryptoAPI);
  std::string error;
  if (encryptor->Initialize(containerName, type, providerName, error)) return encryptor;
  const Lock lock(g_acquisitionMutex.Get());
  sm_sLastAcquisitionError.swap(error);
  return boost::shared_ptr<Encryptor>();
}

std::string Encryptor::GetLastAcquisitionError() {
  const Lock lock(g_acquisitionMutex.Get());
  return sm_sLastAcquisitionError;
}

}  // namespace Oxa::Core

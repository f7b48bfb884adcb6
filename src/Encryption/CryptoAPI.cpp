#include <Infrastructure/OxaCore/Encryption.h>

#include <Infrastructure/OxaCore/Error.h>
#include <Infrastructure/OxaCore/SystemTools.h>

#include <algorithm>
#include <array>

#include "Platform/Secrets.h"

namespace Oxa::Core {

namespace {

const char* const sLOG_NAME = "Oxa.Core.CryptoAPI";
const char* const sNO_ERROR = "No Error";
const char* const sNO_CONTAINER = "Failed to create a new key container under ";
const char* const sUSERS_OWN = "the logged on user";
const char* const sPROVIDER = " for a provider named ";
const char* const sNO_SIGNATURE_KEY = "Failed to create a signature key";
const char* const sSIGNATURE_TROUBLE = "Unable to get a signature key";
const char* const sNO_EXCHANGE_KEY = "Failed to create an exchange key";
const char* const sEXCHANGE_TROUBLE = "Unable to get an exchange key";

// The key of the cipher: what the original provider makes of a digest in its weakest and usual form, 40 bits of
// secret and a salt of zeros.
constexpr std::size_t uSECRET_SIZE = 5;
using CipherKey = std::array<unsigned char, 16>;

CipherKey MakeKey(HCRYPTPROV provider, const void* key, std::size_t size) {
  const Platform::Md5Digest digest = Platform::Md5(provider, key, size);
  CipherKey made{};
  std::copy_n(digest.begin(), uSECRET_SIZE, made.begin());
  return made;
}

// One way is the other.
template <class Bytes, class Key>
bool Apply(HCRYPTPROV provider, Bytes& data, const Key& key) {
  if (provider == 0 || data.empty() || key.empty()) return false;
  const CipherKey made = MakeKey(provider, key.data(), key.size());
  Platform::Rc4(provider, made.data(), made.size(), data.data(), data.size());
  return true;
}

// The number that the original platform has for the type.
unsigned long NumberOf(Encryptor::EType type) {
  const bool known = type >= Encryptor::eRSA_FULL && type <= Encryptor::eMS_EXCHANGE;
  return static_cast<unsigned long>(known ? type : Encryptor::eRSA_FULL) + 1;
}

// Sees to it that the container has a key for that use, and gives null, or what went wrong.
const char* ProvideKey(HCRYPTPROV provider, Platform::EKeyUse use, const char* notMade,
                       const char* notFound) {
  const int code = Platform::FindProviderKey(provider, use);
  if (code == 0) return nullptr;
  if (code != Platform::g_iNO_KEY) return notFound;
  return Platform::MakeProviderKey(provider, use) == 0 ? nullptr : notMade;
}

bool IsEmptyPassword(const std::vector<unsigned char>& bytes) { return bytes.size() == 1 && bytes[0] == 0; }

}  // namespace

CryptoAPI::CryptoAPI() : m_hProvider(0) {}

CryptoAPI::~CryptoAPI() { Release(); }

void CryptoAPI::Release() {
  if (m_hProvider != 0) Platform::ReleaseProvider(m_hProvider);
  m_hProvider = 0;
}

bool CryptoAPI::Initialize(const std::string& containerName, EType type, const std::string& providerName,
                           std::string& error) {
  error = sNO_ERROR;
  Release();
  return AcquireProvider(containerName, type, providerName, error) && ProvideKeys(error);
}

bool CryptoAPI::AcquireProvider(const std::string& containerName, EType type, const std::string& providerName,
                                std::string& error) {
  const char* const container = containerName.empty() ? nullptr : containerName.c_str();
  const std::string provider = providerName.empty() ? Platform::g_pDEFAULT_PROVIDER : providerName;
  const bool name =
      provider.find('\0') == std::string::npos;  // the system would see no more than its beginning
  for (const bool makeContainer : {false, true})
    if (name && Platform::AcquireProvider(container, provider.c_str(), NumberOf(type), makeContainer,
                                          m_hProvider) == 0)
      return true;
  error = sNO_CONTAINER + (containerName.empty() ? sUSERS_OWN : containerName) + sPROVIDER + provider;
  return false;
}

bool CryptoAPI::ProvideKeys(std::string& error) {
  const char* trouble =
      ProvideKey(m_hProvider, Platform::EKeyUse::eSIGNATURE, sNO_SIGNATURE_KEY, sSIGNATURE_TROUBLE);
  if (trouble == nullptr)
    trouble = ProvideKey(m_hProvider, Platform::EKeyUse::eEXCHANGE, sNO_EXCHANGE_KEY, sEXCHANGE_TROUBLE);
  if (trouble == nullptr) return true;
  error = trouble;
  Release();
  return false;
}

bool CryptoAPI::Encrypt(std::vector<unsigned char>& data, const std::vector<unsigned char>& key) {
  return Apply(m_hProvider, data, key);
}

bool CryptoAPI::Encrypt(std::string& data, const std::string& key) { return Apply(m_hProvider, data, key); }

bool CryptoAPI::Decrypt(std::vector<unsigned char>& data, const std::vector<unsigned char>& key) {
  return Apply(m_hProvider, data, key);
}

bool CryptoAPI::Decrypt(std::string& data, const std::string& key) { return Apply(m_hProvider, data, key); }

bool CryptoAPI::SavePassword(const std::string& password, const std::string& subKey,
                             const std::string& valueName, HKEY root) {
  if (m_hProvider == 0 || subKey.empty() || valueName.empty()) return false;
  const int code = Platform::CreateRegistryKey(root, subKey);
  if (code != 0) {
    OXA_RAISE_ERROR(sLOG_NAME, OSError(MSWindows::GetWindowsErrorMessage(static_cast<unsigned long>(code))));
    return false;
  }
  std::vector<unsigned char> bytes(password.begin(), password.end());
  if (bytes.empty()) {
    bytes.push_back(0);
  } else if (!Encryptor::Encrypt(bytes, subKey)) {
    return false;
  }
  return Platform::WriteRegistryValue(root, subKey, valueName, bytes) == 0;
}

bool CryptoAPI::LoadPassword(std::string& password, const std::string& subKey, const std::string& valueName,
                             HKEY root) {
  if (m_hProvider == 0 || subKey.empty() || valueName.empty()) return false;
  std::vector<unsigned char> bytes;
  if (Platform::ReadRegistryValue(root, subKey, valueName, bytes) != 0) return false;
  if (IsEmptyPassword(bytes)) {
    password.clear();
    return true;
  }
  if (!Encryptor::Decrypt(bytes, subKey)) return false;
  password.assign(bytes.begin(), bytes.end());
  return true;
}

}  // namespace Oxa::Core

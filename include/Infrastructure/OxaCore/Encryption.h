// Hides short secrets in configuration: values, texts, bytes, and a password in the registry.
//
// THIS HIDES AND DOES NOT PROTECT. The cipher is RC4 with a key of 40 bits, made by MD5 from the key that the caller
// gives; the same key always gives the same stream. A password in the registry has its path for a key, so that whoever
// can read the value can decipher it. It keeps a secret from a glance, not from an attacker.
//
// Nothing is kept between calls but the handle of the provider, and every call is given its key. A wrong key is no
// failure: it gives other bytes of the same number.
//
// Thread safety: any thread may call anything, also on one object; each buffer belongs to one thread at a time. The
// text of GetLastAcquisitionError belongs to all threads: two that fail at once overwrite each other's.
// Failures: the results tell. Only a key of the registry that can't be made raises OSError. Nothing is logged.
//
//   const boost::shared_ptr<Encryptor> encryptor = Encryptor::Acquire("", Encryptor::eRSA_FULL, "");
//   if (encryptor) encryptor->SavePassword("s3cret", "Software\\Acme\\Probe", "Password", HKEY_CURRENT_USER);
#ifndef INFRASTRUCTURE_OXACORE_ENCRYPTION_H
#define INFRASTRUCTURE_OXACORE_ENCRYPTION_H

#include <Infrastructure/OxaCore/Export.h>
#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

namespace Oxa::Core {

/// What hides and shows. Bytes are changed in place and never change their number; a text that was encrypted holds any
/// bytes, zeros among them. What fails gives false and leaves its argument alone. Empty data and an empty key are
/// refused everywhere.
class OXACORE_API Encryptor {
 public:
  /// The kind of provider. Any other value counts as eRSA_FULL, the only kind that this port has.
  enum EType : int { eRSA_FULL = 0, eRSA_SIG = 1, eDSS = 2, eFORTEZZA = 3, eMS_EXCHANGE = 4 };

  virtual ~Encryptor();

  /// Hides `data`.
  virtual bool Encrypt(std::vector<unsigned char>& data, const std::vector<unsigned char>& key) = 0;
  virtual bool Encrypt(std::string& data, const std::string& key) = 0;

  /// Shows what Encrypt has hidden with the same key.
  virtual bool Decrypt(std::vector<unsigned char>& data, const std::vector<unsigned char>& key) = 0;
  virtual bool Decrypt(std::string& data, const std::string& key) = 0;

  /// Writes `password` as the value `valueName` of the key `subKey` below `root`, both made if they are missing. It is
  /// encrypted with `subKey` for a key; an empty one becomes a single byte of 0. (So does a password of one character
  /// whose cipher byte happens to be 0: it comes back empty.) False if a name is empty or the value can't be written.
  /// Raises OSError with the system's text if the key can't be made; false if that returns.
  virtual bool SavePassword(const std::string& password, const std::string& subKey,
                            const std::string& valueName, HKEY root) = 0;

  /// Reads what SavePassword wrote. False if a name is empty, or there is no such value.
  virtual bool LoadPassword(std::string& password, const std::string& subKey, const std::string& valueName,
                            HKEY root) = 0;

  /// The same for a number, which is four bytes on every system: one above 4294967295 is refused.
  bool Encrypt(unsigned long& value, const std::string& key);
  bool Decrypt(unsigned long& value, const std::string& key);

  /// The same for a number of eight bytes.
  bool Encrypt(long long& value, const std::string& key);
  bool Decrypt(long long& value, const std::string& key);

  /// The same with the bytes of `key`.
  bool Encrypt(std::vector<unsigned char>& data, const std::string& key);
  bool Decrypt(std::vector<unsigned char>& data, const std::string& key);

  /// An encryptor on a provider of the system; empty if it can't be had, and GetLastAcquisitionError then tells why.
  ///
  /// `providerName` is the provider's; "" stands for "Microsoft Base Cryptographic Provider v1.0", the only one of this
  /// port, whose type is eRSA_FULL. Any other name or type fails. `containerName` may be any text, "" stands for the
  /// user's own container: as the keys in it are used by nothing, none is kept here.
  static boost::shared_ptr<Encryptor> Acquire(const std::string& containerName, EType type,
                                              const std::string& providerName);

  /// The text of the last acquisition of the process that failed; a success leaves it as it was. "" before the first.
  static std::string GetLastAcquisitionError();

 protected:
  /// Makes `bytes` those of `text`, without a terminator. False, with `bytes` untouched, for an empty text.
  static bool GetStringBytes(const std::string& text, std::vector<unsigned char>& bytes);

 private:
  friend class CryptoAPI;

  Encryptor();
  Encryptor(const Encryptor&);
  Encryptor& operator=(const Encryptor&);

  static std::string& sm_sLastAcquisitionError;
};

/// The one encryptor that there is. Made by Encryptor::Acquire.
class OXACORE_API CryptoAPI : public Encryptor {
 public:
  CryptoAPI(const CryptoAPI&) = delete;
  CryptoAPI& operator=(const CryptoAPI&) = delete;

  /// Gives the provider back.
  ~CryptoAPI() override;

  using Encryptor::Decrypt;
  using Encryptor::Encrypt;

  bool Encrypt(std::vector<unsigned char>& data, const std::vector<unsigned char>& key) override;
  bool Encrypt(std::string& data, const std::string& key) override;
  bool Decrypt(std::vector<unsigned char>& data, const std::vector<unsigned char>& key) override;
  bool Decrypt(std::string& data, const std::string& key) override;
  bool SavePassword(const std::string& password, const std::string& subKey, const std::string& valueName,
                    HKEY root) override;
  bool LoadPassword(std::string& password, const std::string& subKey, const std::string& valueName,
                    HKEY root) override;

 private:
  friend class Encryptor;

  CryptoAPI();

  bool Initialize(const std::string& containerName, EType type, const std::string& providerName,
                  std::string& error);
  bool AcquireProvider(const std::string& containerName, EType type, const std::string& providerName,
                       std::string& error);
  bool ProvideKeys(std::string& error);
  void Release();

  HCRYPTPROV m_hProvider;  // 0: not acquired
};

}  // namespace Oxa::Core

#endif

// What hides secrets: a digest and a cipher of a provider, and the registry.
//
// Functions that give an int give 0 or the system's error code; results are untouched when they fail. No function
// raises, takes a lock of ours or logs; those of the registry throw nothing but std::bad_alloc. A kill or a
// cancellation of the calling thread waits until what it has opened is closed. Any thread may call anything.
#ifndef OXACORE_PLATFORM_SECRETS_H
#define OXACORE_PLATFORM_SECRETS_H

#include <Infrastructure/OxaCore/PlatformTypes.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace Oxa::Core::Platform {

/// What a provider gives for no name.
extern const char* const g_pDEFAULT_PROVIDER;

/// What a provider's container of keys has a key for.
enum class EKeyUse { eEXCHANGE = 1, eSIGNATURE = 2 };

/// The code of FindProviderKey for a container that has no such key.
extern const int g_iNO_KEY;

/// Opens a provider of that name and type (numbered as the original platform does, from 1) on a container of keys,
/// null for the user's own one; with `makeContainer` one that doesn't exist yet. A success has to be given back.
int AcquireProvider(const char* container, const char* name, unsigned long type, bool makeContainer,
                    HCRYPTPROV& provider) noexcept;
void ReleaseProvider(HCRYPTPROV provider) noexcept;

/// Whether the container has a key for that use; g_iNO_KEY if it has none and one can be made.
int FindProviderKey(HCRYPTPROV provider, EKeyUse use) noexcept;
int MakeProviderKey(HCRYPTPROV provider, EKeyUse use) noexcept;

using Md5Digest = std::array<unsigned char, 16>;

/// MD5 of the bytes.
Md5Digest Md5(HCRYPTPROV provider, const void* data, std::size_t size) noexcept;

/// Encrypts or decrypts the bytes in place, by RC4 with a key of 1 to 256 bytes.
void Rc4(HCRYPTPROV provider, const void* key, std::size_t keySize, void* data, std::size_t size) noexcept;

// The registry: values of bytes under keys below a root. A key's name has parts with "\" between them; all other
// bytes may stand in names. Case counts, and names that differ in any byte name different things.

/// Makes the key with all above it; one that exists is left alone. EBADF for a root that is none, ENAMETOOLONG for a
/// name that the system doesn't take: nothing is made then.
int CreateRegistryKey(HKEY root, const std::string& key);

/// Writes a value of a key that exists, of 16 MiB at most: EFBIG for one that is larger. Whoever reads it finds the
/// value before or this one, whole, whenever the process or the machine ends.
int WriteRegistryValue(HKEY root, const std::string& key, const std::string& name,
                       const std::vector<unsigned char>& bytes);

/// ENOENT for a value that doesn't exist, EINVAL for what is no plain file, EFBIG for what is larger than a value may
/// be.
int ReadRegistryValue(HKEY root, const std::string& key, const std::string& name,
                      std::vector<unsigned char>& bytes);

/// While one stands, what this thread does with the registry happens in `folder` instead of the user's place. For
/// tests. The text must stay. They may be nested, and die in the reverse order.
class RegistryFolder {
 public:
  explicit RegistryFolder(const char* folder) noexcept;
  RegistryFolder(const RegistryFolder&) = delete;
  RegistryFolder& operator=(const RegistryFolder&) = delete;
  ~RegistryFolder();

 private:
  const char* m_pBefore;
};

}  // namespace Oxa::Core::Platform

#endif

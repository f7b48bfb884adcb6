#include "Platform/Linux/CryptoProvider.h"

#include <errno.h>
#include <nettle/arcfour.h>
#include <nettle/md5.h>
#include <string.h>

#include <new>

#include "Platform/Kill.h"
#include "Platform/Libraries.h"
#include "Platform/Secrets.h"

namespace Oxa::Core::Platform {

namespace {

constexpr unsigned long ulPROV_RSA_FULL = 1;

ProviderTroubles s_troubles;  // none, but in tests

// What is called of nettle. It is opened where it is wanted, since that costs every start of a program more than
// loading the rest of this library's dependencies.
struct Provider {
  HINSTANCE m_hLibrary = nullptr;
  decltype(&nettle_md5_init) m_pDigestInit = nullptr;
  decltype(&nettle_md5_update) m_pDigestUpdate = nullptr;
  decltype(&nettle_md5_digest) m_pDigest = nullptr;
  decltype(&nettle_arcfour_set_key) m_pSetKey = nullptr;
  decltype(&nettle_arcfour_crypt) m_pCrypt = nullptr;
};

template <class Function>
bool Find(HINSTANCE library, const char* name, Function& function) noexcept {
  function = reinterpret_cast<Function>(FindFunction(library, name));
  return function != nullptr;
}

bool FindAll(Provider& provider) noexcept {
  return Find(provider.m_hLibrary, "nettle_md5_init", provider.m_pDigestInit) &&
         Find(provider.m_hLibrary, "nettle_md5_update", provider.m_pDigestUpdate) &&
         Find(provider.m_hLibrary, "nettle_md5_digest", provider.m_pDigest) &&
         Find(provider.m_hLibrary, "nettle_arcfour_set_key", provider.m_pSetKey) &&
         Find(provider.m_hLibrary, "nettle_arcfour_crypt", provider.m_pCrypt);
}

int Open(Provider& provider) noexcept {
  provider.m_hLibrary =
      OpenLibrary(s_troubles.m_pLibrary != nullptr ? s_troubles.m_pLibrary : OXACORE_NETTLE);
  if (provider.m_hLibrary == nullptr) return ENOENT;
  if (FindAll(provider)) return 0;
  CloseLibrary(provider.m_hLibrary);
  return ENOSYS;
}

void Tell(const char* what, unsigned long number) noexcept {
  if (s_troubles.m_pAsked != nullptr) s_troubles.m_pAsked(what, number);
}

Provider& Of(HCRYPTPROV provider) noexcept { return *reinterpret_cast<Provider*>(provider); }

}  // namespace

const char* const g_pDEFAULT_PROVIDER = "Microsoft Base Cryptographic Provider v1.0";

const int g_iNO_KEY = ENOKEY;

void SetProviderTroubles(const ProviderTroubles& troubles) noexcept { s_troubles = troubles; }

// Every container exists: the keys that one would hold are used by nothing here, so that none is kept.
int AcquireProvider(const char*, const char* name, unsigned long type, bool makeContainer,
                    HCRYPTPROV& provider) noexcept {
  Tell(makeContainer ? "new" : "open", type);
  if (strcmp(name, g_pDEFAULT_PROVIDER) != 0) return ENOENT;
  if (type != ulPROV_RSA_FULL) return EPROTOTYPE;
  if (makeContainer != s_troubles.m_bContainersMissing) return makeContainer ? EEXIST : ENOENT;
  const HoldKill alive;
  auto* const opened = new (std::nothrow) Provider;
  if (opened == nullptr) return ENOMEM;
  const int code = Open(*opened);
  if (code == 0) {
    provider = reinterpret_cast<HCRYPTPROV>(opened);
  } else {
    delete opened;
  }
  return code;
}

void ReleaseProvider(HCRYPTPROV provider) noexcept {
  const HoldKill alive;
  CloseLibrary(Of(provider).m_hLibrary);
  delete &Of(provider);
}

int FindProviderKey(HCRYPTPROV, EKeyUse use) noexcept {
  Tell("find", static_cast<unsigned long>(use));
  return s_troubles.m_iFind[static_cast<int>(use)];
}

int MakeProviderKey(HCRYPTPROV, EKeyUse use) noexcept {
  Tell("make", static_cast<unsigned long>(use));
  return s_troubles.m_iMake[static_cast<int>(use)];
}

Md5Digest Md5(HCRYPTPROV provider, const void* data, std::size_t size) noexcept {
  static_assert(std::tuple_size_v<Md5Digest> == MD5_DIGEST_SIZE);
  Md5Digest digest{};
  md5_ctx context;
  Of(provider).m_pDigestInit(&context);
  Of(provider).m_pDigestUpdate(&context, size, static_cast<const unsigned char*>(data));
  Of(provider).m_pDigest(&context, digest.size(), digest.data());
  return digest;
}

void Rc4(HCRYPTPROV provider, const void* key, std::size_t keySize, void* data, std::size_t size) noexcept {
  arcfour_ctx context;
  auto* const bytes = static_cast<unsigned char*>(data);
  Of(provider).m_pSetKey(&context, keySize, static_cast<const unsigned char*>(key));
  Of(provider).m_pCrypt(&context, size, bytes, bytes);
}

}  // namespace Oxa::Core::Platform

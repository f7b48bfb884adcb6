// The one provider of this system: what there is of nettle, opened as long as anybody has the provider.
#ifndef OXACORE_PLATFORM_LINUX_CRYPTOPROVIDER_H
#define OXACORE_PLATFORM_LINUX_CRYPTOPROVIDER_H

namespace Oxa::Core::Platform {

/// For tests: what befalls the providers that are acquired from now on.
struct ProviderTroubles {
  const char* m_pLibrary = nullptr;   ///< opened instead of nettle
  bool m_bContainersMissing = false;  ///< none exists before it is made
  int m_iFind[3] = {};                ///< what FindProviderKey gives, by the use of the key
  int m_iMake[3] = {};                ///< what MakeProviderKey gives
  void (*m_pAsked)(const char* what,
                   unsigned long number) = nullptr;  ///< told "find", "make", "open" or "new"
};

void SetProviderTroubles(const ProviderTroubles& troubles) noexcept;

}  // namespace Oxa::Core::Platform

#endif

// A text that can be read where nothing can be allocated and nobody can be waited for.
#ifndef OXACORE_SYSTEM_PUBLISHEDTEXT_H
#define OXACORE_SYSTEM_PUBLISHEDTEXT_H

#include <atomic>
#include <cstddef>
#include <cstring>
#include <string>

namespace Oxa::Core {

/// Set by one thread at a time, read by any. What is read stays as it is until the text is set a second time. Has no
/// destructor and is constant-initialised, for static storage.
template <std::size_t SIZE>
class PublishedText {
 public:
  constexpr PublishedText() = default;

  /// What doesn't fit is cut off.
  void Set(const std::string& text) noexcept {
    char* const other = m_pCurrent.load() == m_texts[0] ? m_texts[1] : m_texts[0];
    const std::size_t size = text.size() < SIZE ? text.size() : SIZE - 1;
    std::memcpy(other, text.data(), size);
    other[size] = 0;
    m_pCurrent.store(other);
  }

  /// Empty before the first Set.
  const char* Get() const noexcept {
    const char* const current = m_pCurrent.load();
    return current != nullptr ? current : "";
  }

 private:
  char m_texts[2][SIZE] = {};
  std::atomic<const char*> m_pCurrent{nullptr};
};

}  // namespace Oxa::Core

#endif

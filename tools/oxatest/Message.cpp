#include "Message.h"

#include <cstring>

namespace OxaTest {

namespace {

const std::uint32_t uMARK = 0x6F786154U;  // what a test writes here by mistake doesn't begin so
const std::string::size_type uHEADER = 3 * sizeof(std::uint32_t) + sizeof(std::uint64_t);
const std::uint32_t uLARGEST = 1U << 20;  // some limited texts
const std::string::size_type uLONGEST_TEXT = 65536;

template <class Number>
void Put(std::string& bytes, Number number) {
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.append(raw, sizeof number);
}

template <class Number>
bool Get(const std::string& bytes, std::string::size_type& at, Number& number) {
  if (bytes.size() - at < sizeof number) return false;
  std::memcpy(&number, bytes.data() + at, sizeof number);
  at += sizeof number;
  return true;
}

// Those between `at` and `end`, which is within the bytes.
bool GetTexts(const std::string& bytes, std::string::size_type at, std::string::size_type end,
              std::vector<std::string>& texts) {
  texts.clear();
  while (at < end) {
    std::uint32_t size = 0;
    if (end - at < sizeof size || !Get(bytes, at, size) || size > end - at) return false;
    texts.push_back(bytes.substr(at, size));
    at += size;
  }
  return true;
}

}  // namespace

const std::string& Message::Text(std::size_t index) const {
  static const std::string none;
  return index < m_texts.size() ? m_texts[index] : none;
}

std::string Encode(const Message& message) {
  std::string texts;
  for (const std::string& text : message.m_texts) {
    Put(texts, static_cast<std::uint32_t>(text.size()));
    texts += text;
  }
  std::string bytes;
  Put(bytes, uMARK);
  Put(bytes, static_cast<std::uint32_t>(texts.size()));
  Put(bytes, static_cast<std::uint32_t>(message.m_eKind));
  Put(bytes, message.m_uOutput);
  return bytes += texts;
}

EDecoded Decode(const std::string& bytes, std::string::size_type& at, Message& message) {
  if (bytes.size() - at < uHEADER) return eNOT_WHOLE;
  std::string::size_type begin = at;
  std::uint32_t mark = 0;
  std::uint32_t size = 0;
  std::uint32_t kind = 0;
  Get(bytes, begin, mark);
  Get(bytes, begin, size);
  Get(bytes, begin, kind);
  Get(bytes, begin, message.m_uOutput);
  if (mark != uMARK || size > uLARGEST || kind < Message::eSTARTED || kind > Message::eDONE) return eDAMAGED;
  if (bytes.size() - begin < size) return eNOT_WHOLE;
  if (!GetTexts(bytes, begin, begin + size, message.m_texts)) return eDAMAGED;
  message.m_eKind = static_cast<Message::EKind>(kind);
  at = begin + size;
  return eMESSAGE;
}

// Not within a character of UTF-8.
std::string Limited(std::string text) {
  if (text.size() <= uLONGEST_TEXT) return text;
  std::string::size_type end = uLONGEST_TEXT;
  while (end > uLONGEST_TEXT - 3 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  const std::string note = "\n[" + std::to_string(text.size() - end) + " bytes left out]";
  text.resize(end);
  return text += note;
}

}  // namespace OxaTest

#include "Message.h"

#include <cstring>

namespace OxaTest {

namespace {

const std::string::size_type uHEADER = 2 * sizeof(std::uint32_t) + sizeof(std::uint64_t);
const std::uint32_t uLARGEST = 1U << 28;

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

bool GetTexts(const std::string& body, std::string::size_type at, std::vector<std::string>& texts) {
  texts.clear();
  while (at < body.size()) {
    std::uint32_t size = 0;
    if (!Get(body, at, size) || size > body.size() - at) return false;
    texts.push_back(body.substr(at, size));
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
  Put(bytes, static_cast<std::uint32_t>(texts.size()));
  Put(bytes, static_cast<std::uint32_t>(message.m_eKind));
  Put(bytes, message.m_uOutput);
  return bytes += texts;
}

bool Decode(std::string& bytes, Message& message) {
  if (bytes.size() < uHEADER) return false;
  std::string::size_type at = 0;
  std::uint32_t size = 0;
  std::uint32_t kind = 0;
  Get(bytes, at, size);
  Get(bytes, at, kind);
  Get(bytes, at, message.m_uOutput);
  const bool possible = size <= uLARGEST && kind >= Message::eSTARTED && kind <= Message::eDONE;
  if (possible && bytes.size() - at < size) return false;
  if (!possible || !GetTexts(bytes.substr(at, size), 0, message.m_texts)) {
    bytes.clear();
    return false;
  }
  message.m_eKind = static_cast<Message::EKind>(kind);
  bytes.erase(0, at + size);
  return true;
}

}  // namespace OxaTest

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <new>
#include <ostream>
#include <utility>

#include "XML/Applicators.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uUSUAL_ATTRIBUTES = 10;

boost::shared_ptr<XMLFormatter> OrPrettyPrint(boost::shared_ptr<XMLFormatter> formatter) {
  return formatter ? std::move(formatter) : XMLFormatter::CreatePrettyPrint();
}

}  // namespace

// --- The manipulator

template <class Work, class... Arguments>
XMLWriter::Manipulator::Manipulator(XMLWriter* writer, const Work*, Arguments&&... arguments)
    : m_pWriter(writer),
      m_pApplicator(::new (static_cast<void*>(m_storage)) Work(std::forward<Arguments>(arguments)...)) {
  static_assert(sizeof(Work) <= sizeof m_storage && alignof(Work) <= alignof(void*));
}

XMLWriter::Manipulator::Manipulator(const Manipulator& other)
    : m_pWriter(other.m_pWriter),
      m_pApplicator(other.m_pApplicator != nullptr ? other.m_pApplicator->CopyTo(m_storage) : nullptr) {}

XMLWriter::Manipulator& XMLWriter::Manipulator::operator=(const Manipulator& other) {
  if (this == &other) return *this;
  Destroy();  // and without memory for the copy it stays so
  if (other.m_pApplicator != nullptr) m_pApplicator = other.m_pApplicator->CopyTo(m_storage);
  m_pWriter = other.m_pWriter;
  return *this;
}

XMLWriter::Manipulator::~Manipulator() { Destroy(); }

void XMLWriter::Manipulator::Destroy() noexcept {
  if (m_pApplicator != nullptr) m_pApplicator->~Applicator();
  m_pApplicator = nullptr;
}

void XMLWriter::Manipulator::Apply(std::ostream& out) const {
  if (m_pApplicator != nullptr) m_pApplicator->Apply(out, *this);
  out.width(0);  // used up, as by every insertion
}

std::ostream& operator<<(std::ostream& out, const XMLWriter::Manipulator& manipulator) {
  manipulator.Apply(out);
  return out;
}

// --- Life

XMLWriter::XMLWriter(boost::shared_ptr<XMLFormatter> aFormatter)
    : m_spFormatter(OrPrettyPrint(std::move(aFormatter))) {}

XMLWriter::XMLWriter(const XMLWriter& other) : m_spFormatter(other.m_spFormatter), m_tags(other.m_tags) {}

XMLWriter& XMLWriter::operator=(const XMLWriter& other) {
  m_tags = other.m_tags;
  m_spFormatter = other.m_spFormatter;
  return *this;
}

XMLWriter::~XMLWriter() = default;

void XMLWriter::Reset(boost::shared_ptr<XMLFormatter> aFormatter) {
  m_spFormatter = OrPrettyPrint(std::move(aFormatter));
  m_tags.clear();
  m_ended.clear();
}

// --- What the manipulators do

// Writes the innermost start tag if it hasn't been; gives the formatter for what comes behind it.
XMLFormatter& XMLWriter::WriteStartTag(std::ostream& out) {
  if (!m_tags.empty() && !m_tags.front().startWritten) {
    m_spFormatter->FormatStartTag(out, m_tags.front().name, m_tags.front().attributes, false);
    m_tags.front().startWritten = true;
  }
  return *m_spFormatter;
}

void XMLWriter::PushTag(const String& name, const XMLAttributeMap<String>& attributes) {
  if (m_ended.empty()) m_ended.emplace_front();
  XMLOpenTag& tag = m_ended.front();
  tag.startWritten = false;
  tag.name = name;
  tag.attributes = attributes;
  m_tags.splice(m_tags.begin(), m_ended, m_ended.begin());
}

void XMLWriter::SetAttribute(const String& name, const XMLAttributeValue<String>& value) {
  if (m_tags.empty()) return;
  XMLAttributeMap<String>& attributes = m_tags.front().attributes;
  if (attributes.capacity() == 0) attributes.reserve(uUSUAL_ATTRIBUTES);
  attributes[name] = value;
}

void XMLWriter::WriteEndTag(std::ostream& out) {
  if (m_tags.empty()) return;
  WriteStartTag(out).FormatEndTag(out, m_tags.front().name);
  m_tags.front().attributes.clear();  // they may be large, and nobody asks for them any more
  m_ended.splice(m_ended.begin(), m_tags, m_tags.begin());
}

void XMLWriter::WriteAllEndTags(std::ostream& out) {
  while (!m_tags.empty()) WriteEndTag(out);
}

// --- The manipulators

template <class Work, class... Arguments>
XMLWriter::Manipulator XMLWriter::Make(Arguments&&... arguments) {
  return Manipulator(this, static_cast<const Work*>(nullptr), std::forward<Arguments>(arguments)...);
}

XMLWriter::Manipulator XMLWriter::StartDocA(const String& aVersion, const String& aEncoding, bool aStandalone,
                                            bool aEndTags) {
  return Make<ApplyStartDoc>(aVersion, aEncoding, aStandalone, aEndTags);
}

XMLWriter::Manipulator XMLWriter::EndDoc() { return EndAllTags(); }

XMLWriter::Manipulator XMLWriter::StyleSheet(const String& aHref, const String& aType) {
  return Make<ApplyStyleSheet>(aHref, aType);
}

XMLWriter::Manipulator XMLWriter::StartTag(const String& aName, const XMLAttributeMap<String>& aAttributes) {
  return Make<ApplyStartTag>(aName, aAttributes);
}

XMLWriter::Manipulator XMLWriter::EndTag() { return Make<ApplyEndTag>(); }

XMLWriter::Manipulator XMLWriter::EndAllTags() { return Make<ApplyEndAllTags>(); }

XMLWriter::Manipulator XMLWriter::Tag(const String& aName, const String& aContent) {
  return TagManipulator(aName, sEMPTY_MAP, aContent);
}

XMLWriter::Manipulator XMLWriter::Tag(const String& aName, const XMLAttributeMap<String>& aAttributes,
                                      const String& aContent) {
  return TagManipulator(aName, aAttributes, aContent);
}

void XMLWriter::PutTag(std::ostream& out, const String& aName, const String& aContent) {
  PutTag(out, aName, sEMPTY_MAP, aContent);
}

void XMLWriter::PutTag(std::ostream& out, const String& aName, const XMLAttributeMap<String>& aAttributes,
                       const String& aContent) {
  WriteStartTag(out).FormatTag(out, aName, aAttributes, aContent);
  out.width(0);
}

XMLWriter::Manipulator XMLWriter::TagManipulator(const String& aName,
                                                 const XMLAttributeMap<String>& aAttributes,
                                                 const String& aContent) {
  return Make<ApplyTag>(aName, aAttributes, aContent);
}

XMLWriter::Manipulator XMLWriter::Attribute(const String& aName, const XMLAttributeValue<String>& aValue) {
  return AttributeManipulator(aName, aValue);
}

XMLWriter::Manipulator XMLWriter::AttributeManipulator(const String& aName,
                                                       const XMLAttributeValue<String>& aValue) {
  return Make<ApplyAttribute>(aName, aValue);
}

XMLWriter::Manipulator XMLWriter::Text(const String& aText) { return Make<ApplyText>(aText); }

XMLWriter::Manipulator XMLWriter::Text(std::istream& aStream) { return Make<ApplyTextStream>(aStream); }

XMLWriter::Manipulator XMLWriter::EntityReference(const String& aReference) {
  return Make<ApplyEntityReference>(aReference);
}

XMLWriter::Manipulator XMLWriter::Markup(const String& aMarkup) { return Make<ApplyMarkup>(aMarkup); }

XMLWriter::Manipulator XMLWriter::Comment(const String& aText, bool aPreserve) {
  return Make<ApplyComment>(aText, aPreserve);
}

XMLWriter::Manipulator XMLWriter::CDATASection(const String& aText, bool aPreserve) {
  return Make<ApplyCDATA>(aText, aPreserve);
}

XMLWriter::Manipulator XMLWriter::CDATASection(std::istream& aStream, bool aPreserve) {
  return Make<ApplyCDATAStream>(aStream, aPreserve);
}

}  // namespace Oxa::Core

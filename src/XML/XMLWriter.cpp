#include <Infrastructure/OxaCore/XMLWriter.h>

#include <boost/make_shared.hpp>
#include <new>
#include <utility>

#include "XML/Applicators.h"

namespace Oxa::Core {

namespace {

constexpr std::size_t uUSUAL_ATTRIBUTES = 10;

boost::shared_ptr<XMLFormatter> OrPrettyPrint(boost::shared_ptr<XMLFormatter> formatter) {
  return formatter ? std::move(formatter) : XMLFormatter::CreatePrettyPrint();
}

// One object for all manipulators of a kind that has no arguments. It is never destroyed: documents are also
// written while the process's static objects die.
template <class Work>
boost::shared_ptr<const XMLWriter::Manipulator::Applicator> Shared() {
  alignas(Work) static unsigned char s_storage[sizeof(Work)];
  static const Work& s_work = *::new (static_cast<void*>(s_storage)) Work;
  return {boost::shared_ptr<void>(), &s_work};
}

}  // namespace

// --- The manipulator

XMLWriter::Manipulator::Manipulator(XMLWriter* writer,
                                    boost::shared_ptr<const Applicator> applicator) noexcept
    : m_pWriter(writer), m_spApplicator(std::move(applicator)) {}

XMLWriter::Manipulator::~Manipulator() = default;

void XMLWriter::Manipulator::Apply(std::ostream& out) const { m_spApplicator->Apply(out, *this); }

std::ostream& operator<<(std::ostream& out, const XMLWriter::Manipulator& manipulator) {
  manipulator.Apply(out);
  return out;
}

// --- Life

XMLWriter::XMLWriter(boost::shared_ptr<XMLFormatter> aFormatter)
    : m_spFormatter(OrPrettyPrint(std::move(aFormatter))) {}

XMLWriter::XMLWriter(const XMLWriter& other) = default;
XMLWriter& XMLWriter::operator=(const XMLWriter& other) = default;
XMLWriter::~XMLWriter() = default;

void XMLWriter::Reset(boost::shared_ptr<XMLFormatter> aFormatter) {
  m_spFormatter = OrPrettyPrint(std::move(aFormatter));
  m_tags.clear();
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
  m_tags.push_front(XMLOpenTag{false, name, attributes});
}

void XMLWriter::SetAttribute(const String& name, const XMLAttributeValue<String>& value) {
  if (m_tags.empty()) return;
  XMLAttributeMap<String>& attributes = m_tags.front().attributes;
  if (attributes.empty()) attributes.reserve(uUSUAL_ATTRIBUTES);
  attributes[name] = value;
}

void XMLWriter::WriteEndTag(std::ostream& out) {
  if (m_tags.empty()) return;
  WriteStartTag(out).FormatEndTag(out, m_tags.front().name);
  m_tags.pop_front();
}

void XMLWriter::WriteAllEndTags(std::ostream& out) {
  while (!m_tags.empty()) WriteEndTag(out);
}

// --- The manipulators

template <class Work, class... Arguments>
XMLWriter::Manipulator XMLWriter::Make(Arguments&&... arguments) {
  return Manipulator(this, boost::make_shared<const Work>(std::forward<Arguments>(arguments)...));
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

XMLWriter::Manipulator XMLWriter::EndTag() { return Manipulator(this, Shared<ApplyEndTag>()); }

XMLWriter::Manipulator XMLWriter::EndAllTags() { return Manipulator(this, Shared<ApplyEndAllTags>()); }

XMLWriter::Manipulator XMLWriter::Tag(const String& aName, const String& aContent) {
  return TagManipulator(aName, sEMPTY_MAP, aContent);
}

XMLWriter::Manipulator XMLWriter::Tag(const String& aName, const XMLAttributeMap<String>& aAttributes,
                                      const String& aContent) {
  return TagManipulator(aName, aAttributes, aContent);
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

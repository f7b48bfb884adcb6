// The work of each kind of manipulator, with copies of the arguments of the call that made it.
#ifndef OXACORE_XML_APPLICATORS_H
#define OXACORE_XML_APPLICATORS_H

#include <Infrastructure/OxaCore/XMLFormatter.h>
#include <Infrastructure/OxaCore/XMLWriter.h>

#include <new>
#include <string>

namespace Oxa::Core {

template <class Work>
class CopyableApplicator : public XMLWriter::Manipulator::Applicator {
 public:
  Applicator* CopyTo(void* storage) const override {
    return ::new (storage) Work(static_cast<const Work&>(*this));
  }
};

class XMLWriter::ApplyStartDoc : public CopyableApplicator<XMLWriter::ApplyStartDoc> {
 public:
  ApplyStartDoc(const String& version, const String& encoding, bool standalone, bool endTags)
      : m_sVersion(version), m_sEncoding(encoding), m_bStandalone(standalone), m_bEndTags(endTags) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sVersion;
  String m_sEncoding;
  bool m_bStandalone;
  bool m_bEndTags;
};

class XMLWriter::ApplyStyleSheet : public CopyableApplicator<XMLWriter::ApplyStyleSheet> {
 public:
  ApplyStyleSheet(const String& href, const String& type) : m_sHref(href), m_sType(type) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sHref;
  String m_sType;
};

class XMLWriter::ApplyStartTag : public CopyableApplicator<XMLWriter::ApplyStartTag> {
 public:
  ApplyStartTag(const String& name, const XMLAttributeMap<String>& attributes) : m_sName(name) {
    if (!attributes.empty()) m_attributes = attributes;  // most tags have none
  }
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sName;
  XMLAttributeMap<String> m_attributes;
};

class XMLWriter::ApplyEndTag : public CopyableApplicator<XMLWriter::ApplyEndTag> {
 public:
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;
};

class XMLWriter::ApplyEndAllTags : public CopyableApplicator<XMLWriter::ApplyEndAllTags> {
 public:
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;
};

class XMLWriter::ApplyTag : public CopyableApplicator<XMLWriter::ApplyTag> {
 public:
  ApplyTag(const String& name, const XMLAttributeMap<String>& attributes, const String& content)
      : m_sName(name), m_sContent(content) {
    if (!attributes.empty()) m_attributes = attributes;
  }
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sName;
  XMLAttributeMap<String> m_attributes;
  String m_sContent;
};

class XMLWriter::ApplyAttribute : public CopyableApplicator<XMLWriter::ApplyAttribute> {
 public:
  ApplyAttribute(const String& name, const XMLAttributeValue<String>& value)
      : m_sName(name), m_value(value) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sName;
  XMLAttributeValue<String> m_value;
};

class XMLWriter::ApplyText : public CopyableApplicator<XMLWriter::ApplyText> {
 public:
  explicit ApplyText(const String& text) : m_sText(text) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sText;
};

class XMLWriter::ApplyTextStream : public CopyableApplicator<XMLWriter::ApplyTextStream> {
 public:
  explicit ApplyTextStream(std::istream& stream) : m_rStream(stream) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  std::istream& m_rStream;
};

class XMLWriter::ApplyEntityReference : public CopyableApplicator<XMLWriter::ApplyEntityReference> {
 public:
  /// Keeps a text that begins with "&"; any other gets that in front and ";" behind.
  explicit ApplyEntityReference(const String& reference)
      : m_sReference(reference.compare(0, 1, "&") == 0 ? reference : "&" + reference + ";") {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sReference;
};

class XMLWriter::ApplyMarkup : public CopyableApplicator<XMLWriter::ApplyMarkup> {
 public:
  explicit ApplyMarkup(const String& markup) : m_sMarkup(markup) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sMarkup;
};

class XMLWriter::ApplyComment : public CopyableApplicator<XMLWriter::ApplyComment> {
 public:
  ApplyComment(const String& text, bool preserve) : m_sText(text), m_bPreserve(preserve) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sText;
  bool m_bPreserve;
};

class XMLWriter::ApplyCDATA : public CopyableApplicator<XMLWriter::ApplyCDATA> {
 public:
  ApplyCDATA(const String& text, bool preserve) : m_sText(text), m_bPreserve(preserve) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  String m_sText;
  bool m_bPreserve;
};

class XMLWriter::ApplyCDATAStream : public CopyableApplicator<XMLWriter::ApplyCDATAStream> {
 public:
  ApplyCDATAStream(std::istream& stream, bool preserve) : m_rStream(stream), m_bPreserve(preserve) {}
  void Apply(std::ostream& out, const Manipulator& manipulator) const override;

 private:
  std::istream& m_rStream;
  bool m_bPreserve;
};

}  // namespace Oxa::Core

#endif

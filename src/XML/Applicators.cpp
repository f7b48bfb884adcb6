#include "XML/Applicators.h"

namespace Oxa::Core {

XMLWriter::Manipulator::Applicator::~Applicator() = default;

void XMLWriter::ApplyStartDoc::Apply(std::ostream& out, const Manipulator& manipulator) const {
  XMLWriter& writer = manipulator.GetWriter();
  if (m_bEndTags) writer.WriteAllEndTags(out);
  writer.m_spFormatter->FormatStartDoc(out, m_sVersion, m_sEncoding, m_bStandalone);
}

void XMLWriter::ApplyStyleSheet::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().m_spFormatter->FormatStyleSheet(out, m_sHref, m_sType);
}

void XMLWriter::ApplyStartTag::Apply(std::ostream& out, const Manipulator& manipulator) const {
  XMLWriter& writer = manipulator.GetWriter();
  writer.WriteStartTag(out);
  writer.PushTag(m_sName, m_attributes);
}

void XMLWriter::ApplyEndTag::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteEndTag(out);
}

void XMLWriter::ApplyEndAllTags::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteAllEndTags(out);
}

void XMLWriter::ApplyTag::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteStartTag(out).FormatTag(out, m_sName, m_attributes, m_sContent);
}

void XMLWriter::ApplyAttribute::Apply(std::ostream&, const Manipulator& manipulator) const {
  manipulator.GetWriter().SetAttribute(m_sName, m_value);
}

void XMLWriter::ApplyText::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteStartTag(out).FormatText(out, m_sText);
}

void XMLWriter::ApplyTextStream::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteStartTag(out).FormatTextStream(out, m_rStream);
}

void XMLWriter::ApplyEntityReference::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteStartTag(out).FormatEntityReference(out, m_sReference);
}

void XMLWriter::ApplyMarkup::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteStartTag(out).FormatMarkup(out, m_sMarkup);
}

void XMLWriter::ApplyComment::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteStartTag(out).FormatComment(out, m_sText, m_bPreserve);
}

void XMLWriter::ApplyCDATA::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteStartTag(out).FormatCDATA(out, m_sText, m_bPreserve);
}

void XMLWriter::ApplyCDATAStream::Apply(std::ostream& out, const Manipulator& manipulator) const {
  manipulator.GetWriter().WriteStartTag(out).FormatCDATAStream(out, m_rStream, m_bPreserve);
}

}  // namespace Oxa::Core

// What both formatters write in the same way.
#ifndef OXACORE_XML_FORMATTERPARTS_H
#define OXACORE_XML_FORMATTERPARTS_H

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <istream>
#include <streambuf>
#include <string>

#include "XML/TextOutput.h"

namespace Oxa::Core {

inline void PutDeclaration(TextOutput& out, const std::string& version, const std::string& encoding,
                           bool standalone) {
  out << "<?xml version=\"" << version << "\" encoding=\"" << encoding << '"';
  if (standalone) out << " standalone=\"yes\"";
  out << "?>";
}

inline void PutEndTag(TextOutput& out, const std::string& name) { out << "</" << name << '>'; }

inline void PutValue(TextOutput& out, const XMLAttributeValue<std::string>& value) {
  for (const std::string& part : value) out << part;
}

/// Reads what `reader` (a stream buffer or a filter over one) gives, chunk by chunk, and puts it out.
template <class Read>
void PutChunks(TextOutput& out, const Read& read) {
  char chunk[4096];
  for (std::streamsize got = read(chunk, sizeof chunk); got > 0; got = read(chunk, sizeof chunk))
    out.Put(chunk, static_cast<std::size_t>(got));
}

/// Copies `source` to its end.
inline void PutStream(TextOutput& out, std::istream& source) {
  if (std::streambuf* buffer = source.rdbuf())
    PutChunks(out, [buffer](char* chunk, std::streamsize size) { return buffer->sgetn(chunk, size); });
}

/// Calls `work` with each character of `source`, to its end.
template <class Work>
void ForEachCharacter(std::istream& source, const Work& work) {
  using Traits = std::char_traits<char>;
  std::streambuf* const buffer = source.rdbuf();
  if (buffer == nullptr) return;
  for (Traits::int_type c = buffer->sbumpc(); c != Traits::eof(); c = buffer->sbumpc())
    work(Traits::to_char_type(c));
}

}  // namespace Oxa::Core

#endif

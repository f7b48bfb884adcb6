// What both formatters write in the same way.
#ifndef OXACORE_XML_FORMATTERPARTS_H
#define OXACORE_XML_FORMATTERPARTS_H

#include <Infrastructure/OxaCore/XMLWriter.h>

#include <istream>
#include <string>

#include "XML/TextInput.h"
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

/// Puts out what `read` gives, chunk by chunk; it gives 0 or less at the end.
template <class Read>
void PutChunks(TextOutput& out, const Read& read) {
  char chunk[4096];
  for (std::streamsize got = read(chunk, sizeof chunk); got > 0; got = read(chunk, sizeof chunk))
    out.Put(chunk, static_cast<std::size_t>(got));
}

/// Copies `source` to its end.
inline void PutStream(TextOutput& out, std::istream& source) {
  TextInput input(source);
  PutChunks(out, [&](char* chunk, std::streamsize size) { return input.Read(chunk, size); });
}

}  // namespace Oxa::Core

#endif

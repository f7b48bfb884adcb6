// The five characters that can't stand in an XML text, and what stands for them.
#ifndef OXACORE_XML_ESCAPE_H
#define OXACORE_XML_ESCAPE_H

#include <string>

#include "XML/TextOutput.h"

namespace Oxa::Core {

/// `text` escaped: `text` itself when nothing is to be escaped, otherwise `buffer` with the result in it.
const std::string& EscapeInto(const std::string& text, std::string& buffer);

/// Puts `text`, escaped, out.
void PutEscaped(TextOutput& out, const std::string& text);

}  // namespace Oxa::Core

#endif

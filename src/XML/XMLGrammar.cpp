// The one place where the grammar is compiled, for both forms of input.
#include "XML/XMLGrammar.h"

#include <Infrastructure/OxaCore/XMLParser.h>

#include "XML/XMLStreamIterator.h"

namespace Oxa::Core {

bool XMLParseSink::Recognise(const char* first, const char* last) {
  return XMLGrammar<XMLParseSink>(*this).Matches(XMLProductions::document, first, last);
}

bool XMLParseSink::Recognise(std::istream& stream) {
  XMLStreamWindow window(stream);
  return XMLGrammar<XMLParseSink>(*this).Matches(XMLProductions::document, window);
}

}  // namespace Oxa::Core

#include <Infrastructure/OxaCore/XMLParser.h>

#include "XML/XMLParseMutex.h"

namespace Oxa::Core {

XMLParseSink::~XMLParseSink() = default;

Mutex& XMLParseMutex() { return g_xmlParseMutex.Get(); }

}  // namespace Oxa::Core

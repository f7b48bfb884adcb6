#include "Log/LogFormatter.h"

#include <Infrastructure/OxaCore/Lock.h>

#include "XML/MarkupHandler.h"

namespace Oxa::Core {

namespace {

// With a lock of its own: parses share nothing but the promise that they are serial, and this one calls no host.
class LoneHandler : public PrettyPrintFormatter::XMLHandler {
 public:
  using XMLHandler::XMLHandler;

  Lock GetLock() override { return Lock(m_mutex, IMutex::sINFINITE); }

 private:
  Mutex m_mutex;
};

}  // namespace

LogFormatter::LogFormatter() = default;
LogFormatter::~LogFormatter() = default;

void LogFormatter::FormatMarkup(std::ostream& os, const String& markup) {
  XMLParser<LoneHandler> parser(*this, os);
  if (parser.Parse(markup)) return;
  parser.Abandon();
  parser.EndOpenTags();
}

}  // namespace Oxa::Core

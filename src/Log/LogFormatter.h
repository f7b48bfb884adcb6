// The layout of the default log.
#ifndef OXACORE_LOG_LOGFORMATTER_H
#define OXACORE_LOG_LOGFORMATTER_H

#include "XML/PrettyPrintFormatter.h"

namespace Oxa::Core {

/// The pretty printer, but for markup. The log is one document, and stays whole: of markup that isn't well-formed,
/// what was recognised is written, and the tags that are open then are ended. And nobody who logs waits for a parse
/// of the host, which may wait for its stream for ever: the parses of the log aren't serialised with others.
class LogFormatter : public PrettyPrintFormatter {
 public:
  LogFormatter();
  ~LogFormatter() override;

  void FormatMarkup(std::ostream& os, const String& markup) override;
};

}  // namespace Oxa::Core

#endif

// The XML form of alerts.
#ifndef OXACORE_ERRORHANDLING_ALERTXML_H
#define OXACORE_ERRORHANDLING_ALERTXML_H

#include <Infrastructure/OxaCore/AlertInfo.h>

#include <string>

namespace Oxa::Core {

class AlertXml {
 public:
  /// What ToXML writes through a new XMLWriter with its own formatter, by a shorter road. May throw std::bad_alloc.
  static std::string AsText(AlertInfo& alert, const char* circumstance);

  /// The element of the alert, tag by tag. `Target` has Begin(name), Tag(name, content), Variable(name, value) and
  /// End(name).
  template <class Target>
  static void Put(Target& target, AlertInfo& alert, const std::string& circumstance);
};

}  // namespace Oxa::Core

#endif

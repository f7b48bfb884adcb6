// The tables of contexts as they stand in the XML of alerts, kept from one alert to the next.
//
// Contexts of a place share one table from raise to raise, and each alert that is told has dozens of them.
#ifndef OXACORE_ERRORHANDLING_CONTEXTTEXTS_H
#define OXACORE_ERRORHANDLING_CONTEXTTEXTS_H

#include <Infrastructure/OxaCore/CodeContext.h>

#include <boost/shared_ptr.hpp>
#include <cstdint>
#include <string>

namespace Oxa::Core {

/// The element of `context`, which has to have a table, and no variables.
struct ContextText {
  ContextText(const CodeContext& context, std::string element);

  const CodeContext m_context;  // which keeps the table, so that no other one comes to its address
  const std::string m_sElement;
  const std::uint64_t m_uLines;  // the line ends in it
};

/// What was kept for the table that `context` shares, or null. Any thread, also in a forked child; waits for nobody.
boost::shared_ptr<const ContextText> FindContextText(const CodeContext& context);

/// Keeps it, in the place of an older one where there is no room. Without the memory, or where somebody else is just
/// there, nothing is kept.
void KeepContextText(const CodeContext& context, std::string element);

/// Gives up what is kept, once the library unloads and nothing is kept any more.
void ForgetContextTexts() noexcept;

}  // namespace Oxa::Core

#endif

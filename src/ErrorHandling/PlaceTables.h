// What is told of a place in the code, as the table that contexts of that place share.
//
// A place that raises or forwards once does so again, mostly on the same thread, and nearly everything that there is to
// tell stays the same meanwhile: the table of the last time serves as long as a new one would have the same texts in
// the same order.
#ifndef OXACORE_ERRORHANDLING_PLACETABLES_H
#define OXACORE_ERRORHANDLING_PLACETABLES_H

#include <Infrastructure/OxaCore/CodeContext.h>

#include <boost/shared_ptr.hpp>
#include <string>

namespace Oxa::Core {

using PlaceTable = boost::shared_ptr<const AlertData>;

/// A place as the compiler knows it. The texts need not outlive the call that they are handed to: the module that they
/// belong to may be unloaded, and another one may have other texts at their addresses.
struct CodePlace {
  const char* m_pFile;
  int m_iLine;
  const char* m_pBuildTime;
  const char* m_pSignature;
};

/// A new table of the place and the moment; see the constructor of CodeContext. As far as memory allows, and null
/// without any; `whole` tells whether all of it is there.
PlaceTable DescribePlace(const std::string& file, int line, const std::string& buildTime,
                         const std::string& function, const std::string& signature, bool& whole);

/// The same of a place that is known by its literals: shared with the last context of this place on this thread if
/// nothing has changed since. Any thread, also in a forked child; waits for nobody.
PlaceTable TableOf(const CodePlace& place);

/// Gives the kept tables up, once the library unloads and nothing is kept any more.
void ForgetPlaceTables() noexcept;

}  // namespace Oxa::Core

#endif

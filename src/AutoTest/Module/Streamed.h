// What streams make of values. For tests of texts that depend on the host's locale.
#ifndef OXACORE_AUTOTEST_MODULE_STREAMED_H
#define OXACORE_AUTOTEST_MODULE_STREAMED_H

#include <sstream>
#include <string>

namespace Oxa::Core {

template <class Value>
std::string Streamed(const Value& value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

}  // namespace Oxa::Core

#endif

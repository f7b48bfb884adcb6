// Shell patterns over the paths of tests.
#ifndef OXATEST_PATTERN_H
#define OXATEST_PATTERN_H

#include <string>

namespace OxaTest {

/// Whether `pattern` stands for all of `text`: "*" for any characters, a "/" too, and "?" for one; "\*", "\?" and
/// "\\" for the second of them. All else stands for itself.
bool Matches(const std::string& pattern, const std::string& text);

}  // namespace OxaTest

#endif

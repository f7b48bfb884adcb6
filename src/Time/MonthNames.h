// Names of months for those that may not allocate.
#ifndef OXACORE_TIME_MONTHNAMES_H
#define OXACORE_TIME_MONTHNAMES_H

namespace Oxa::Core {

/// "Jan" for 1; "???" for what is no month.
const char* AbbreviationOfMonth(long month) noexcept;

}  // namespace Oxa::Core

#endif

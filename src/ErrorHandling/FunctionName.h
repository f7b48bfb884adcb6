// The qualified name of a function, cut from the signature that the compiler gives.
#ifndef OXACORE_ERRORHANDLING_FUNCTIONNAME_H
#define OXACORE_ERRORHANDLING_FUNCTIONNAME_H

#include <string>
#include <string_view>

namespace Oxa::Core {

/// "Oxa::Core::Mutex::Lock" from "virtual void Oxa::Core::Mutex::Lock(const Oxa::Core::Elapse&)": without
/// return type, parameters, qualifiers and the list of template arguments behind. A lambda is "<lambda>"
/// behind the function that it stands in. A text without parameters is returned as it stands.
std::string FunctionName(std::string_view signature);

}  // namespace Oxa::Core

#endif

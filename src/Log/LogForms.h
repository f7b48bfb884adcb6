// The two forms of a message.
#ifndef OXACORE_LOG_LOGFORMS_H
#define OXACORE_LOG_LOGFORMS_H

namespace Oxa::Core {

constexpr char sPLAIN_LOG_FORM[] = "plain";
constexpr char sXML_LOG_FORM[] = "xml";

}  // namespace Oxa::Core

#endif

// Makes text that comes from outside fit for messages, terminals and XML.
#ifndef STATION_SHOWNTEXT_H
#define STATION_SHOWNTEXT_H

#include <string>

namespace Station {

/// `text` with every byte outside printable ASCII shown as \xNN, with NN in upper-case hexadecimal. XML
/// forbids most control characters even in escaped form, and a byte of unknown encoding would spoil a UTF-8
/// document.
std::string Shown(const std::string& text);

/// Shown, in double quotes, and cut after 60 bytes of `text`, with "..." in place of the rest.
std::string Quoted(const std::string& text);

}  // namespace Station

#endif

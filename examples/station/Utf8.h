// The one way from the library's texts to what terminals and pages expect, and back.
#ifndef STATION_UTF8_H
#define STATION_UTF8_H

#include <string>

namespace Station {

/// The same text in UTF-8. `singleByteText` is in the code page that the units' abbreviations are in, in which
/// a byte is the code point of its value: 0xB5 is the micro sign, 0xB1 plus-minus, 0xB0 the degree. ASCII stays
/// as it is, line feeds and other control characters included. The bytes 0x80 to 0x9F have no printable
/// character, and a terminal obeys some of them (U+009B starts a command): each becomes the replacement
/// character, U+FFFD. A text that is UTF-8 already must not come here: it would be spoiled.
std::string ToUtf8(const std::string& singleByteText);

/// The way back, for what people write: the characters of `text` that have a single byte, from U+0080 to U+00FF, become
/// it, and so does the Greek letter mu, which many keyboards have in place of the micro sign. All other bytes stay, so
/// that a text of single bytes comes out as it is; "\xC2\xB5" counts as UTF-8.
std::string FromUtf8(const std::string& text);

}  // namespace Station

#endif

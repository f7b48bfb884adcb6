// How the page looks.
#ifndef STATION_PAGESTYLE_H
#define STATION_PAGESTYLE_H

namespace Station {

/// The style sheet: for narrow and wide windows, for light and dark ones, and for paper. It holds no "<" and no "&",
/// so it means the same to a reader of HTML and to one of XML.
extern const char* const sPAGE_STYLE;

}  // namespace Station

#endif

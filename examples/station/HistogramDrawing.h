// Draws the histogram of a series as a picture within the page.
#ifndef STATION_HISTOGRAMDRAWING_H
#define STATION_HISTOGRAMDRAWING_H

#include <string>

#include "PageWriter.h"
#include "ReportPage.h"

namespace Station {

/// Writes an `svg` element with the bins of the series' samples, both axes, and a line where the tolerance is; one
/// that isn't on the axis is marked at the end beyond which it would be, and one that is NaN isn't marked. `id`
/// begins the ids in the picture and is to be different from those of the other pictures of the page.
/// All that is across is in percent, all that is upright and all letters in pixels: so the picture can have any width
/// without a change of the letters. It wants a box with room for the figures at its left, and style from PageStyle.h.
void DrawHistogram(PageWriter& writer, const PageSeries& series, const std::string& id);

}  // namespace Station

#endif

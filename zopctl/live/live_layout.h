// The layout of the live view. On a small screen the least important is left out first.
#pragma once

#include "zopctl/live/live_screen.h"

namespace zopctl {

enum ColourPair { GOOD = 1, FAIR, BAD, PLOT };

void draw_layout(const LiveView& view, bool utf8);

}  // namespace zopctl

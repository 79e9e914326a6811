// Where things stand in the live view. What there is no room for is left out, the least first.
#pragma once

#include "zopctl/live/live_screen.h"

namespace zopctl {

enum ColourPair { GOOD = 1, FAIR, BAD, PLOT };

void draw_layout(const LiveView& view, bool utf8);

}  // namespace zopctl

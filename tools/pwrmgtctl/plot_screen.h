// SPDX-License-Identifier: Apache-2.0
// The screen that a picture of text is drawn for.
#pragma once

#include "plot_script.h"

namespace pwrmgt::pwrmgtctl {

// The terminal behind a descriptor: its size, and colours unless $NO_COLOR is set or $TERM knows
// none. Anything else gets plain text of $COLUMNS by $LINES, 80 by 24 when they are not set.
PlotDevice screen_behind(int descriptor);

}  // namespace pwrmgt::pwrmgtctl

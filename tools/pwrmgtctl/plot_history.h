// SPDX-License-Identifier: Apache-2.0
// A history as a picture: a line for each mean, with a band where minimum and maximum are known.
#pragma once

#include "history_document.h"
#include "plot.h"

namespace pwrmgt::pwrmgtctl {

// `cap_w` is drawn as a level.
Plot plot_of(const History& history, Value cap_w);

// The stored cap while capping is on. A policy that cannot be read holds nothing down.
Value cap_in_force();

}  // namespace pwrmgt::pwrmgtctl

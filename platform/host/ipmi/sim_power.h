// SPDX-License-Identifier: Apache-2.0
// How caps bend what was measured.
#pragma once

#include "measured_trace.h"
#include "sim_state.h"

namespace pwrmgt::ipmi::sim {

// The reading of a machine that keeps to its caps, in whole watts and never above what was
// measured.
//
// 1. Processor caps. The measured power is shared among the processors equally, the first ones
//    taking what is left over; each draws its share or its cap, whichever is less. The system's DC
//    falls by what they save, its AC in the same proportion.
// 2. The system's cap. AC above it becomes the cap, DC falls in the same proportion, and the
//    processors bear that fall until they draw nothing, then the memory, then the rest.
// 3. The supplies fall in the proportion in which the system's AC fell.
//
// A power that was not measured stays without a reading, and percentages stay as measured.
trace::Reading bent(const trace::Reading& measured, const State& state);

}  // namespace pwrmgt::ipmi::sim

// SPDX-License-Identifier: Apache-2.0
// The measured trace that the simulated firmware plays, kept loaded between exchanges.
#pragma once

#include <memory>

#include "measured_trace.h"

namespace pwrmgt::ipmi::sim {

// The trace in $VEKDB_SIM_TRACE, loaded again when the variable or the file changes; null when
// there is none. One that cannot be read is told in the log, once.
std::shared_ptr<const trace::Trace> live_trace();

}  // namespace pwrmgt::ipmi::sim

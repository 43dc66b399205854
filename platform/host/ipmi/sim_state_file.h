// SPDX-License-Identifier: Apache-2.0
// The file in which the simulated firmware keeps its state, so that several processes see one
// firmware. It is replaced as a whole: a reader never meets half of a change, and a writer that
// is killed leaves the last state.
#pragma once

#include <string>

#include "sim_state.h"

namespace pwrmgt::ipmi::sim {

enum class Usable { yes, damaged, busy, no };

struct Access {
    Usable usable = Usable::yes;
    std::string reason;  // in words, unless usable
};

// `ipmi-sim.json` in the runtime directory.
std::string state_path();

// The state as it is now, or the initial one while there is no file. Takes no lock and changes
// nothing.
Access read_state(State& state);

// Reads the state, lets one change be made, and keeps others from changing it meanwhile. A file
// that is none of ours is set aside as `<path>.corrupt`, in the place of an earlier one, with a
// line in the system log.
class Transaction {
public:
    Transaction();
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    const Access& access() const { return access_; }
    State& state() { return state_; }

    // Writes the state if it changed, and lets the others go on.
    Access commit();

private:
    void unlock();

    std::string path_ = state_path();
    int lock_ = -1;
    Access access_;
    State before_;
    State state_;
};

}  // namespace pwrmgt::ipmi::sim

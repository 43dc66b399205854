// SPDX-License-Identifier: Apache-2.0
// The power query per redundancy mode with outputs that show what it left alone.
#pragma once

#include "psu_test.h"

namespace pwrmgt::test {

inline const Calls kFactorRead{"quoril", "byte /ac/tavn/power/psu_installed",
                               "byte /dc/tavn/power/oversubscription_support"};

class PowerQuery : public PsuTest {
protected:
    uint32_t ask(uint32_t mode) {
        return pwrmgt_get_powerInfo_perRedunMode(mode, &max_dc, &power, &state);
    }
    void expect_untouched() const {
        EXPECT_EQ(max_dc, 77U);
        EXPECT_EQ(power, 77U);
        EXPECT_EQ(state, 77);
    }
    uint32_t max_dc = 77;
    uint32_t power = 77;
    uint8_t state = 77;
};

}  // namespace pwrmgt::test

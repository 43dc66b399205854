// SPDX-License-Identifier: Apache-2.0
// A simulated firmware of its own for each test: an empty runtime directory, a short trace, a
// clock at midnight.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "exchange.h"
#include "ipmi/sim_state_file.h"
#include "stand_ins.h"
#include "support/environment.h"
#include "support/temp_file.h"

inline constexpr std::int64_t kMidnight = 1'700'006'400;  // 2023-11-15 00:00:00 UTC

using Bytes = std::vector<std::uint8_t>;

// Capping: what is asked and answered most.
inline const Bytes kGetCap{0x03, 0, 0, 0, 0};
inline const Bytes kNoCap{0x00, 0, 0, 0xFF, 0xFF, 1};
inline const Bytes kCapOf300W{0x02, 1, 0x2C, 0x01, 1};

template <class Values>
Bytes joined(Bytes first, const Values& values) {
    for (const auto value : values)
        first.push_back(static_cast<std::uint8_t>(value));
    return first;
}

// The answer's bytes, completion code first.
inline Bytes answer(Bytes request) {
    const Exchange exchange = exchanged(std::move(request));
    EXPECT_EQ(exchange.result, 0);
    EXPECT_TRUE(exchange.clean_behind(exchange.length));
    return {exchange.buffer.begin(), exchange.buffer.begin() + exchange.length};
}

inline Bytes capping(const Bytes& payload) {
    return answer(joined({0x20, 0x3A, 0, 0x32}, payload));
}

// The bytes of a file.
inline std::string text_of(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// What `body` returns in a child process; -1 when it crashed.
template <class Body>
int in_child(Body body) {
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

class SimTest : public testing::Test {
protected:
    SimTest() {
        clock_s = kMidnight;
        log_lines.clear();
    }

    std::string directory() const { return place_.directory() + "/run"; }
    std::string state_file() const { return directory() + "/ipmi-sim.json"; }

    // Sets the machine up as vekdb-simctl would.
    static void set_up(const std::function<void(pwrmgt::ipmi::sim::State&)>& change) {
        pwrmgt::ipmi::sim::Transaction transaction;
        change(transaction.state());
        EXPECT_EQ(transaction.commit().reason, "");
    }
    static pwrmgt::ipmi::sim::State state() {
        pwrmgt::ipmi::sim::State found;
        EXPECT_EQ(pwrmgt::ipmi::sim::read_state(found).reason, "");
        return found;
    }

    TempFile place_;
    TempFile trace_file_{
        "epoch_s,sdr_rows,sys_power_W,psu1_ac_in_W,psu1_dc_out_W,cpu_power_W,"
        "mem_power_W,sys_util_pct,cpu_util_pct,mem_util_pct,io_util_pct\n"
        "1000,9,1270,1280,1225,600,300,11,12,13,14\n"
        "1060,9,,,,,,,,,\n"};
    EnvironmentVariable transport_{"VEKDB_IPMI", "sim"};
    EnvironmentVariable runtime_{"VEKDB_RUNTIME_DIR", place_.directory() + "/run"};
    EnvironmentVariable trace_{"VEKDB_SIM_TRACE", trace_file_.path()};
    EnvironmentVariable store_{"VEKDB_SIM_STORE"};
};

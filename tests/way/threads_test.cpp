// SPDX-License-Identifier: Apache-2.0
// Threads of one process work on the tables at once, as in a front end that serves several users.
// Run under ThreadSanitizer too.
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string_view>
#include <thread>
#include <vector>

#include "support/environment.h"
#include "support/temp_file.h"
#include "vekdb_client.h"
#include "vekdb_pwrmgt.h"

namespace {

constexpr uint16_t kWatts = 300;
constexpr int kRounds = 30;

uint32_t open_database() {
    return vek_db_open("localhost", "root", "", "vek_pwr_db", 0);
}

void statement(uint32_t db, std::string_view sql) {
    EXPECT_EQ(vek_db_raw_query(db, sql.data(), static_cast<uint32_t>(sql.size()), nullptr), 0);
}

uint32_t write_slot(uint32_t db, int32_t start) {
    pwrmgt_hist_sample_t sample{};
    for (pwrmgt_hist_pwr_sample_t* group : {&sample.system, &sample.cpu, &sample.memory}) {
        group->avg = group->max = group->min = kWatts;
        group->avg2 = group->max2 = group->min2 = kWatts;
    }
    return pwrmgt_update_hist_table(db, static_cast<uint16_t>(start / 30 % 2880), start, sample);
}

std::size_t open_files() {
    const std::filesystem::directory_iterator files{"/proc/self/fd"};
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

void at_once(const std::vector<std::function<void()>>& works) {
    std::vector<std::thread> threads;
    threads.reserve(works.size());
    for (const auto& work : works)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
}

// A day of slots of 300 W up to now, and a policy.
class Threads : public testing::Test {
protected:
    void SetUp() override {
        const uint32_t db = open_database();
        ASSERT_NE(db, 0U);
        pwrmgt_power_policy_t policy{};
        ASSERT_EQ(pwrmgt_init_power_policy_table(db, &policy, 0, 1), 0U);
        statement(db, "BEGIN");
        for (int32_t back = 0; back < 2870; ++back)
            ASSERT_EQ(write_slot(db, newest_ - 30 * back), 0U);
        statement(db, "COMMIT");
        vek_db_close(db);
    }

    // The newest entries of a day, whose readings must be those that were written.
    static void expect_a_whole_day() {
        std::array<pwrmgt_hist_pwr_sample_t, 120> entries{};
        ASSERT_EQ(pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, 3, entries.data(), 120), 0U);
        EXPECT_TRUE(std::all_of(entries.begin(), entries.begin() + 118, [](const auto& entry) {
            return entry.avg == kWatts && entry.max == kWatts && entry.min2 == kWatts;
        }));
    }

    TempFile place_{"/dc/tavn/dm/planar/0/psu/config_type = 3\n"};
    EnvironmentVariable properties_{"VEKDB_PROPS", place_.path()};
    EnvironmentVariable state_{"VEKDB_STATE_DIR", place_.directory() + "/state"};
    EnvironmentVariable runtime_{"VEKDB_RUNTIME_DIR", place_.directory() + "/run"};
    const int32_t newest_ = static_cast<int32_t>(std::time(nullptr) / 30 * 30) - 60;
};

TEST_F(Threads, QueriesBesideAWriterReadWholeRows) {
    const auto query = [] {
        for (int round = 0; round < kRounds; ++round)
            expect_a_whole_day();
    };
    const auto write = [this] {
        const uint32_t db = open_database();
        for (int round = 0; round < kRounds; ++round)
            EXPECT_EQ(write_slot(db, newest_ - 30 * (round % 3)), 0U);
        vek_db_close(db);
    };

    at_once({query, query, query, write});
}

TEST_F(Threads, SettingsAndTheirReadersShareTheCaches) {
    const auto change = [] {
        for (int round = 0; round < kRounds; ++round)
            EXPECT_EQ(pwrmgt_set_power_redundant_mode(round % 2 + 1), 0U);
    };
    const auto look = [] {
        for (int round = 0; round < kRounds; ++round) {
            uint32_t mode = 0;
            EXPECT_EQ(pwrmgt_get_power_redundant_mode(&mode), 0U);
            EXPECT_TRUE(mode == 1 || mode == 2) << mode;
            EXPECT_EQ(pwrmgt_get_psu_type_installed(), 15U);
        }
    };

    at_once({change, look, look});
}

TEST_F(Threads, ThreadThatIsCancelledAmongItsQueriesLeavesNothingOpen) {
    expect_a_whole_day();
    const std::size_t before = open_files();
    for (int round = 0; round < 10; ++round) {
        std::atomic<bool> running{false};
        std::thread worker{[&] {
            for (;;) {
                expect_a_whole_day();
                running = true;
                pthread_testcancel();
            }
        }};
        while (!running)
            std::this_thread::yield();
        pthread_cancel(worker.native_handle());
        worker.join();
    }

    EXPECT_EQ(open_files(), before);
    expect_a_whole_day();
}

}  // namespace

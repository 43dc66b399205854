// SPDX-License-Identifier: Apache-2.0
#include <pthread.h>

#include <atomic>
#include <filesystem>
#include <iterator>
#include <thread>

#include "database_test.h"

namespace {

namespace fs = std::filesystem;

std::ptrdiff_t open_descriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator{});
}

std::string database_of(std::uint32_t db) {
    // Each test marks a database by one policy row.
    return std::to_string(select(db, "select _id from PowerPolicy", 1).size());
}

class Pool : public DatabaseTest {};

TEST_F(Pool, ThousandOpensAndClosesKeepTheNumberOfDescriptors) {
    const std::uint32_t outer = open_database();
    vek_db_close(open_database());
    const auto before = open_descriptors();
    for (int i = 0; i < 1000; ++i) {
        const std::uint32_t db = open_database();
        ASSERT_EQ(raw(db, "select * from PowerPolicy"), 0);
        vek_db_close(db);
    }

    EXPECT_EQ(open_descriptors(), before);
    vek_db_close(outer);
}

TEST_F(Pool, NestedConnectionsAreSeparate) {
    const std::uint32_t outer = open_database();
    const std::uint32_t inner = open_database();

    EXPECT_NE(outer, 0u);
    EXPECT_NE(inner, 0u);
    EXPECT_NE(outer, inner);
    EXPECT_EQ(add_policy_row(outer), 0);
    EXPECT_EQ(database_of(inner), "1");
    vek_db_close(inner);
    EXPECT_EQ(database_of(outer), "1");
    vek_db_close(outer);
}

TEST_F(Pool, MoreIdleConnectionsThanKeptAreClosed) {
    std::vector<std::uint32_t> many(20);
    for (std::uint32_t& db : many)
        db = open_database();
    const auto at_most = open_descriptors();
    for (const std::uint32_t db : many)
        vek_db_close(db);

    EXPECT_LE(open_descriptors(), at_most - 16 * descriptors_per_connection());
}

TEST_F(Pool, OpenTransactionEndsWithItsConnection) {
    const std::uint32_t first = open_database();
    ASSERT_EQ(raw(first, "BEGIN"), 0);
    add_policy_row(first);
    vek_db_close(first);
    const std::uint32_t second = open_database();

    EXPECT_EQ(database_of(second), "0");
    EXPECT_EQ(add_policy_row(second), 0);
    vek_db_close(second);
}

TEST_F(Pool, ThreadsWorkSideBySideOnConnectionsOfTheirOwn) {
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (std::uint16_t t = 0; t < 6; ++t) {
        threads.emplace_back([&failures, t] {
            for (std::uint32_t i = 0; i < 50; ++i) {
                const std::uint32_t db = open_database();
                if (insert_slot(db, "HistPowers24HrMem", t, i, t) != 0) ++failures;
                std::uint32_t result = 0;
                if (raw(db, "select * from HistPowers24HrMem where _id=" + std::to_string(t),
                        &result) != 0)
                    ++failures;
                if (vek_db_result_row_count(result) != static_cast<int>(i + 1)) ++failures;
                vek_db_free_result(result);
                vek_db_close(db);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(failures, 0);
}

TEST_F(Pool, ThreadsThatShareAConnectionTakeTurns) {
    const std::uint32_t db = open_database();
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (std::uint16_t t = 0; t < 4; ++t) {
        threads.emplace_back([&failures, db, t] {
            for (std::uint32_t i = 0; i < 100; ++i) {
                if (insert_slot(db, "HistPowers24HrMem", t, i, t) != 0) ++failures;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(failures, 0);
    EXPECT_EQ(select(db, "select count(*) from HistPowers24HrMem", 1), (Table{{400}}));
    vek_db_close(db);
}

TEST_F(Pool, CancelledThreadLeavesNothingLocked) {
    const std::uint32_t db = open_database();
    std::atomic<bool> running{false};
    std::thread worker{[&] {
        for (;;) {
            insert_slot(db, "HistPowers24HrMem", 1, 30, 1);
            running = true;
            pthread_testcancel();
        }
    }};
    while (!running)
        std::this_thread::yield();
    pthread_cancel(worker.native_handle());
    worker.join();

    EXPECT_EQ(insert_slot(db, "HistPowers24HrMem", 2, 60, 1), 0);
    const std::uint32_t other = open_database();
    EXPECT_EQ(insert_slot(other, "HistPowers24HrMem", 3, 90, 1), 0);
    vek_db_close(other);
    vek_db_close(db);
}

}  // namespace

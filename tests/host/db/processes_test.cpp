// SPDX-License-Identifier: Apache-2.0
// Several processes on one database, and forks.
#include <filesystem>
#include <thread>

#include "database_test.h"
#include "support/second_process.h"

namespace {

namespace fs = std::filesystem;

class Processes : public DatabaseTest {
protected:
    // Starts `count` children, each of which waits for the gate and then runs `body`; the number
    // that returned 0.
    template <class Body>
    static int succeed_together(int count, Body body) {
        int gate[2] = {-1, -1};
        if (pipe(gate) != 0) return -1;
        std::vector<pid_t> children;
        for (int i = 0; i < count; ++i) {
            const pid_t child = fork();
            if (child == 0) {
                close(gate[1]);
                char byte = 0;
                const auto end_of_file = read(gate[0], &byte, 1);
                _exit(end_of_file == 0 ? body(i) : 1);
            }
            children.push_back(child);
        }
        close(gate[0]);
        close(gate[1]);
        int succeeded = 0;
        for (const pid_t child : children) {
            int status = 0;
            waitpid(child, &status, 0);
            if (WIFEXITED(status) && WEXITSTATUS(status) == 0) ++succeeded;
        }
        return succeeded;
    }
};

TEST_F(Processes, EightFirstOpenersMakeOneDatabase) {
    const int succeeded = succeed_together(8, [](int i) {
        const std::uint32_t db = open_database();
        if (db == 0) return 1;
        return insert_slot(db, "HistPowers24Hr", static_cast<std::uint16_t>(i), 30, 1) == 0 ? 0 : 2;
    });
    const std::uint32_t db = open_database();

    EXPECT_EQ(succeeded, 8);
    EXPECT_EQ(select(db, "select count(*) from HistPowers24Hr", 1), (Table{{8}}));
    EXPECT_FALSE(fs::exists(persistent_path() + ".corrupt-1"));
    vek_db_close(db);
}

TEST_F(Processes, WriterAndReadersNeverSeeALockedDatabase) {
    constexpr int kRounds = 300;
    const int succeeded = succeed_together(4, [](int i) {
        for (int round = 0; round < kRounds; ++round) {
            const std::uint32_t db = open_database();
            const auto slot = static_cast<std::uint16_t>(round);
            if (db == 0) return 1;
            if (i == 0) {
                if (insert_slot(db, "HistPowers24HrMem", slot, 30u * slot, 1) != 0) return 2;
                if (raw(db,
                        "delete from HistPowers24HrMem where Timestamp < 30 or Timestamp >= "
                        "86400") != 0)
                    return 3;
                const std::string save =
                    "insert into HistPowers24Hr select * from HistPowers24HrMem where _id=";
                if (raw(db, save + std::to_string(slot)) != 0) return 4;
            } else {
                std::uint32_t result = 0;
                if (raw(db, "select * from HistPowers24HrMem order by Timestamp DESC", &result) !=
                    0)
                    return 5;
                vek_db_free_result(result);
                if (raw(db, "select * from HistPowers24Hr", &result) != 0) return 6;
                vek_db_free_result(result);
            }
            vek_db_close(db);
        }
        return 0;
    });

    EXPECT_EQ(succeeded, 4);
}

TEST_F(Processes, FourWritersLoseNoRow) {
    const int succeeded = succeed_together(4, [](int i) {
        const std::uint32_t db = open_database();
        for (std::uint32_t round = 0; round < 100; ++round) {
            if (insert_slot(db, "HistPowers24Hr", static_cast<std::uint16_t>(i), round, 1) != 0)
                return 1;
        }
        return 0;
    });
    const std::uint32_t db = open_database();

    EXPECT_EQ(succeeded, 4);
    EXPECT_EQ(select(db, "select count(*) from HistPowers24Hr", 1), (Table{{400}}));
    vek_db_close(db);
}

TEST_F(Processes, OneProcessSeesWhatAnotherWrites) {
    SecondProcess reader{[db = std::uint32_t{0}]() mutable -> std::int64_t {
        if (db == 0) db = open_database();
        return select(db, "select count(*) from HistPowers24HrMem", 1)[0][0];
    }};
    const std::int64_t before = reader.ask();
    const std::uint32_t db = open_database();
    insert_slot(db, "HistPowers24HrMem", 1, 30, 1);

    EXPECT_EQ(before, 0);
    EXPECT_EQ(reader.ask(), 1);
    vek_db_close(db);
}

TEST_F(Processes, HandlesOfTheParentAreDeadInTheChild) {
    const std::uint32_t db = open_database();
    std::uint32_t result = 0;
    raw(db, "select 42", &result);

    EXPECT_EQ(in_child([&] {
                  if (raw(db, "select 1") == 0) return 1;
                  vek_db_close(db);
                  return rows_of(result, 1) == Table{{42}} ? 0 : 2;
              }),
              0);
    EXPECT_EQ(raw(db, "select 1"), 0);
    vek_db_free_result(result);
    vek_db_close(db);
}

TEST_F(Processes, ForkWhileTheParentsTransactionIsOpenLeavesItWhole) {
    const std::uint32_t db = open_database();
    raw(db, "BEGIN");
    insert_slot(db, "HistPowers24HrMem", 1, 30, 1);

    EXPECT_EQ(in_child([] { return open_database() == 0 ? 1 : 0; }), 0);
    EXPECT_EQ(raw(db, "COMMIT"), 0);
    EXPECT_EQ(select(db, "select _id from HistPowers24HrMem", 1), (Table{{1}}));
    vek_db_close(db);
}

TEST_F(Processes, ForkAmongBusyThreadsLeavesAChildThatWorks) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (std::uint16_t t = 0; t < 3; ++t) {
        threads.emplace_back([&stop, t] {
            while (!stop) {
                const std::uint32_t db = open_database();
                insert_slot(db, "HistPowers24HrMem", t, 30, 1);
                vek_db_close(db);
            }
        });
    }
    int worked = 0;
    for (int i = 0; i < 20; ++i) {
        worked += in_child([] {
            const std::uint32_t db = open_database();
            return db != 0 && insert_slot(db, "HistPowers24HrMem", 9, 90, 1) == 0 ? 1 : 0;
        });
    }
    stop = true;
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(worked, 20);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
// What several processes leave on the files of one database: locks and logs.
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "database_test.h"

namespace {

namespace fs = std::filesystem;

class ProcessesOnFiles : public DatabaseTest {
protected:
    // Whether this process holds a lock of its own on a file, as the kernel tells it.
    static bool holds_lock(pid_t process, const std::string& path) {
        struct stat file {};
        stat(path.c_str(), &file);
        std::ifstream locks{"/proc/locks"};
        for (std::string line; std::getline(locks, line);) {
            if (line.find(" " + std::to_string(process) + " ") != std::string::npos &&
                line.find(":" + std::to_string(file.st_ino) + " ") != std::string::npos) {
                return true;
            }
        }
        return false;
    }
};

TEST_F(ProcessesOnFiles, ChildOfAProcessWithConnectionsHoldsLocksOfItsOwn) {
    const std::uint32_t held = open_database();
    vek_db_close(open_database());
    raw(held, "select * from PowerPolicy");
    const std::string path = persistent_path();

    EXPECT_EQ(in_child([&] {
                  if (holds_lock(getpid(), path)) return 1;
                  const std::uint32_t db = open_database();
                  if (insert_slot(db, "HistPowers24Hr", 1, 30, 1) != 0) return 2;
                  return holds_lock(getpid(), path) ? 0 : 3;
              }),
              0);
    EXPECT_EQ(select(held, "select _id from HistPowers24Hr", 1), (Table{{1}}));
    vek_db_close(held);
}

TEST_F(ProcessesOnFiles, LogStaysBoundedWhileReadersKeepReading) {
    std::atomic<bool> stop{false};
    std::array<std::chrono::milliseconds, 2> longest_select{};
    const std::uint32_t db = open_database();
    for (std::uint16_t slot = 0; slot < 500; ++slot)
        insert_slot(db, "HistPowers24HrMem", slot, 30u * slot, 1);
    std::vector<std::thread> readers;
    for (auto& longest : longest_select) {
        readers.emplace_back([&stop, &longest] {
            using std::chrono::steady_clock;
            const std::uint32_t mine = open_database();
            while (!stop) {
                const auto start = steady_clock::now();
                raw(mine, "select * from HistPowers24HrMem order by Timestamp DESC");
                longest = std::max(longest, std::chrono::duration_cast<std::chrono::milliseconds>(
                                                steady_clock::now() - start));
            }
            vek_db_close(mine);
        });
    }
    for (std::uint32_t i = 0; i < 6000; ++i)
        insert_slot(db, "HistPowers24HrMem", 1, 20000 + i, 1);
    const auto log_bytes = fs::file_size(memory_path() + "-wal");
    stop = true;
    for (std::thread& reader : readers)
        reader.join();

    // A reader that the machine stops in the middle of a select holds the log for as long.
    EXPECT_LE(log_bytes, 8u << 20) << "longest selects: " << longest_select[0].count() << " and "
                                   << longest_select[1].count() << " ms";
    vek_db_close(db);
}

}  // namespace

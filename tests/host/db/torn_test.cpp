// SPDX-License-Identifier: Apache-2.0
// Persistent files that lost their end or had bytes changed while nobody looked.
#include <filesystem>
#include <fstream>
#include <random>

#include "database_test.h"

namespace {

namespace fs = std::filesystem;

constexpr int kSlots = 1440;
constexpr unsigned kHang_s = 60;

class Torn : public DatabaseTest {
protected:
    // Half a ring, closed by the process that made it; a copy of its file for each way to break it.
    void SetUp() override {
        in_child([] {
            const std::uint32_t db = open_database();
            raw(db, "BEGIN");
            for (std::uint16_t slot = 0; slot < kSlots; ++slot)
                insert_slot(db, "HistPowers24Hr", slot, 30u * slot, 300);
            raw(db, "COMMIT");
            vek_db_close(db);
            std::exit(0);
            return 0;
        });
        std::ifstream file{persistent_path(), std::ios::binary};
        whole_.assign(std::istreambuf_iterator<char>{file}, {});
        ASSERT_GT(whole_.size(), 64u * 1024);
    }

    void lay_down(const std::string& bytes) {
        fs::remove_all(files_.state);
        fs::create_directory(files_.state);
        fs::permissions(files_.state, fs::perms::owner_all);
        std::ofstream{persistent_path(), std::ios::binary} << bytes;
        fs::permissions(persistent_path(), fs::perms::owner_read | fs::perms::owner_write);
    }

    // What a daemon's start makes of the file: the rows it finds, and that a row can be written.
    // -1 when the process crashed or hung.
    static int rows_after_a_checked_open() {
        int pipe_ends[2] = {};
        if (pipe(pipe_ends) != 0) return -1;
        const int status = in_child([&] {
            alarm(kHang_s);
            setenv("VEKDB_CHECK", "1", 1);
            const std::uint32_t db = open_database();
            int rows = -1;
            std::uint32_t result = 0;
            if (raw(db, "select * from HistPowers24Hr", &result) == 0) {
                rows = vek_db_result_row_count(result);
                rows_of(result, 4);
            }
            const bool wrote = insert_slot(db, "HistPowers24Hr", 1, 86400, 1) == 0;
            const bool told = write(pipe_ends[1], &rows, sizeof rows) == sizeof rows;
            vek_db_close(db);
            return wrote && told ? 0 : 1;
        });
        int rows = -1;
        if (status == 0 && read(pipe_ends[0], &rows, sizeof rows) != sizeof rows) rows = -1;
        close(pipe_ends[0]);
        close(pipe_ends[1]);
        return rows;
    }

    bool set_aside() const { return fs::exists(persistent_path() + ".corrupt-1"); }

    std::string whole_;
};

TEST_F(Torn, WholeFileStaysAsItIs) {
    lay_down(whole_);

    EXPECT_EQ(rows_after_a_checked_open(), kSlots);
    EXPECT_FALSE(set_aside());
}

TEST_F(Torn, FileCutAtAny4KiBIsSetAside) {
    for (std::size_t size = 4096; size < whole_.size(); size += 4096) {
        lay_down(whole_.substr(0, size));

        EXPECT_EQ(rows_after_a_checked_open(), 0) << size;
        EXPECT_TRUE(set_aside()) << size;
    }
}

TEST_F(Torn, ChangedBytesAreSetAsideOrReadWithoutHarm) {
    std::mt19937 random{20261120};
    int found = 0;
    for (int round = 0; round < 24; ++round) {
        std::string bytes = whole_;
        for (int changed = 0; changed < 1 + round / 2; ++changed)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        lay_down(bytes);

        const int rows = rows_after_a_checked_open();

        EXPECT_EQ(rows, set_aside() ? 0 : kSlots) << round;
        found += set_aside() ? 1 : 0;
    }
    EXPECT_GT(found, 0);
}

}  // namespace

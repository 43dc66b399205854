// SPDX-License-Identifier: Apache-2.0
// Files that are no database, and databases that are damaged.
#include <filesystem>
#include <fstream>

#include "database_test.h"
#include "db/files.h"

namespace {

namespace fs = std::filesystem;

class Damage : public DatabaseTest {
protected:
    // A database with 500 saved slots, closed by the process that made it.
    void fill() {
        in_child([] {
            const std::uint32_t db = open_database();
            for (std::uint16_t slot = 0; slot < 500; ++slot)
                insert_slot(db, "HistPowers24Hr", slot, 30u * slot, 1);
            vek_db_close(db);
            std::exit(0);
            return 0;
        });
    }

    static void overwrite(const std::string& path, std::streamoff at, std::size_t bytes) {
        std::fstream file{path, std::ios::in | std::ios::out | std::ios::binary};
        file.seekp(at);
        file << std::string(bytes, '\x5a');
    }
};

TEST_F(Damage, FileThatIsNoDatabaseIsMovedAsideAndAFreshOneMade) {
    fs::create_directory(files_.state);
    std::ofstream{persistent_path()} << std::string(5000, 'x');
    const std::uint32_t db = open_database();

    EXPECT_NE(db, 0u);
    EXPECT_EQ(insert_slot(db, "HistPowers24Hr", 1, 30, 1), 0);
    EXPECT_EQ(fs::file_size(persistent_path() + ".corrupt-1"), 5000u);
    EXPECT_EQ(log_lines(), (std::vector<std::string>{"vekdb: " + persistent_path() +
                                                     " is damaged or no database, moved to " +
                                                     persistent_path() + ".corrupt-1"}));
    vek_db_close(db);
}

TEST_F(Damage, SecondDamagedFileGetsTheNextNumber) {
    fs::create_directory(files_.runtime);
    std::ofstream{memory_path() + ".corrupt-1"} << "first";
    std::ofstream{memory_path()} << std::string(5000, 'x');
    const std::uint32_t db = open_database();

    EXPECT_NE(db, 0u);
    EXPECT_EQ(fs::file_size(memory_path() + ".corrupt-1"), 5u);
    EXPECT_EQ(fs::file_size(memory_path() + ".corrupt-2"), 5000u);
    vek_db_close(db);
}

TEST_F(Damage, LogOfADamagedFileGoesWithIt) {
    fs::create_directory(files_.state);
    std::ofstream{persistent_path()} << "damaged";
    std::ofstream{persistent_path() + "-wal"} << "log";
    std::ofstream{persistent_path() + "-shm"} << "index";

    EXPECT_EQ(pwrmgt::vekdb::move_aside(persistent_path()), "");
    EXPECT_EQ(fs::file_size(persistent_path() + ".corrupt-1"), 7u);
    EXPECT_EQ(fs::file_size(persistent_path() + ".corrupt-1-wal"), 3u);
    EXPECT_FALSE(fs::exists(persistent_path()));
    EXPECT_FALSE(fs::exists(persistent_path() + "-wal"));
    EXPECT_FALSE(fs::exists(persistent_path() + "-shm"));
}

TEST_F(Damage, DamagedListOfTablesIsHealedByTheOpenThatMeetsIt) {
    fill();
    overwrite(persistent_path(), 8192, 1024);
    const std::uint32_t db = open_database();

    EXPECT_EQ(select(db, "select * from HistPowers24Hr", 1), Table{});
    EXPECT_TRUE(fs::exists(persistent_path() + ".corrupt-1"));
    vek_db_close(db);
}

TEST_F(Damage, EmptyFileIsFilledWithTheTables) {
    fs::create_directory(files_.state);
    std::ofstream{persistent_path()};
    const std::uint32_t db = open_database();

    EXPECT_EQ(select(db, "select * from PowerPolicy", 1), Table{});
    EXPECT_FALSE(fs::exists(persistent_path() + ".corrupt-1"));
    vek_db_close(db);
}

TEST_F(Damage, DamageMetByAStatementIsHealedByTheNextOpen) {
    fill();
    overwrite(persistent_path(), 16384, 8192);  // rows, not the list of tables
    const std::uint32_t first = open_database();
    const int met = raw(first, "select * from HistPowers24Hr");
    vek_db_close(first);
    const std::uint32_t second = open_database();

    EXPECT_NE(met, 0);
    EXPECT_EQ(insert_slot(second, "HistPowers24Hr", 1, 30, 1), 0);
    EXPECT_EQ(select(second, "select _id from HistPowers24Hr", 1), (Table{{1}}));
    EXPECT_TRUE(fs::exists(persistent_path() + ".corrupt-1"));
    vek_db_close(second);
}

TEST_F(Damage, DatabaseOfANewerVersionIsLeftAlone) {
    fill();
    in_child([] {
        const std::uint32_t db = open_database();
        return raw(db, "PRAGMA user_version=99");
    });

    EXPECT_EQ(open_database(), 0u);
    EXPECT_NE(log_lines().back().find("made by a newer version"), std::string::npos);
    EXPECT_FALSE(fs::exists(persistent_path() + ".corrupt-1"));
}

TEST_F(Damage, KilledWriterLosesNothingThatWasCommitted) {
    in_child([] {
        const std::uint32_t db = open_database();
        for (std::uint16_t slot = 0; slot < 100; ++slot)
            insert_slot(db, "HistPowers24Hr", slot, 30, 1);
        raw(db, "BEGIN");
        insert_slot(db, "HistPowers24Hr", 100, 30, 1);
        return 0;
    });
    const std::uint32_t db = open_database();

    EXPECT_EQ(select(db, "select count(*) from HistPowers24Hr", 1), (Table{{100}}));
    vek_db_close(db);
}

}  // namespace

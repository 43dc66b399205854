// SPDX-License-Identifier: Apache-2.0
// Bytes that saving slots dirties on a disk, by two measures, with everything written out between
// two saves, so that a page rewritten later counts again. By content: blocks of 4096 bytes of a
// file that changed. By the kernel: what it accounts to this process when a page of a disk's file
// becomes dirty (write_bytes of /proc/self/io).
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "scratch.h"
#include "vekdb_client.h"

using namespace pwrmgt::bench;

namespace {

std::int64_t dirtied_bytes() {
    std::ifstream io{"/proc/self/io"};
    std::string name;
    std::int64_t value = 0;
    while (io >> name >> value) {
        if (name == "write_bytes:") return value;
    }
    throw std::runtime_error("/proc/self/io tells no write_bytes");
}

// The file system of a directory, and writing all of it out.
class Disk {
public:
    explicit Disk(const ScratchDirectory& directory)
        : descriptor_{open(directory.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)} {
        if (descriptor_ < 0) throw std::runtime_error("the scratch directory does not open");
    }
    ~Disk() { close(descriptor_); }
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    void write_out() const {
        if (syncfs(descriptor_) != 0) throw std::runtime_error("syncfs failed");
    }

private:
    int descriptor_;
};

// On a file system that accounts nothing every figure would be 0.
void require_accounting(const ScratchDirectory& directory) {
    constexpr std::int64_t kProbe = 65536;
    const std::int64_t before = dirtied_bytes();
    std::ofstream{directory.file("probe")} << std::string(kProbe, 'x') << std::flush;
    if (dirtied_bytes() - before < kProbe) {
        throw std::runtime_error(directory.path() +
                                 ": no disk, or one that accounts no writes; set BENCH_DISK_DIR");
    }
}

// A file's blocks, and how many of them change.
class WatchedFile {
public:
    explicit WatchedFile(std::string path) : path_{std::move(path)}, before_{content()} {}

    double changed_bytes_each(std::int32_t saves) const {
        return static_cast<double>(changed_ * kBlock) / saves;
    }

    void look() {
        const std::string now = content();
        for (std::size_t at = 0; at < std::max(now.size(), before_.size()); at += kBlock) {
            const bool there = at < now.size() && at < before_.size();
            if (!there || now.compare(at, kBlock, before_, at, kBlock) != 0) ++changed_;
        }
        before_ = now;
    }

private:
    static constexpr std::size_t kBlock = 4096;

    std::string content() const {
        std::ifstream file{path_, std::ios::binary};
        return {std::istreambuf_iterator<char>{file}, {}};
    }

    std::string path_;
    std::string before_;
    std::size_t changed_ = 0;
};

struct Wear {
    double data = 0;    // of the database and its log
    double index = 0;   // of the log's index, which the engine never writes out by itself
    double kernel = 0;  // by the kernel's account, all files
};

enum class Commit { each_statement, each_save };

void statement(const LibraryConnection& db, std::string_view text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    require_ok(static_cast<std::uint32_t>(vek_db_raw_query(db.get(), text.data(), length, nullptr)),
               "vek_db_raw_query");
}

void save(const LibraryConnection& db, std::int32_t first, std::uint32_t slots, Commit commit) {
    if (commit == Commit::each_save) statement(db, "BEGIN");
    db.save(first, slots);
    if (commit == Commit::each_save) statement(db, "COMMIT");
}

// Bytes per slot when `slots` are saved at a time, over the rows of the day before.
Wear wear_per_slot(const Scratch& place, const LibraryConnection& db, std::uint32_t slots,
                   std::int32_t saved, Commit commit) {
    const Disk disk{place.disk()};
    const std::string file = place.disk().file("vek_pwr_db.sqlite");
    WatchedFile database{file};
    WatchedFile log{file + "-wal"};
    WatchedFile index{file + "-shm"};
    std::int64_t accounted = 0;
    for (std::int32_t first = 0; first < saved; first += static_cast<std::int32_t>(slots)) {
        disk.write_out();
        const std::int64_t before = dirtied_bytes();
        save(db, first, slots, commit);
        accounted += dirtied_bytes() - before;
        for (WatchedFile* watched : {&database, &log, &index}) {
            watched->look();
        }
    }
    return {database.changed_bytes_each(saved) + log.changed_bytes_each(saved),
            index.changed_bytes_each(saved), static_cast<double>(accounted) / saved};
}

void report(const char* name, const Wear& wear) {
    std::printf("wear.%s_data\t%.0f\n", name, wear.data);
    std::printf("wear.%s_index\t%.0f\n", name, wear.index);
    std::printf("wear.%s_kernel\t%.0f\n", name, wear.kernel);
}

}  // namespace

int main() try {
    const Scratch place;
    require_accounting(place.disk());
    fill_library(measured_day());
    const LibraryConnection db;
    constexpr std::int32_t kSingles = 720;
    report("save_20", wear_per_slot(place, db, 20, kSlots, Commit::each_statement));
    report("save_1", wear_per_slot(place, db, 1, kSingles, Commit::each_statement));
    report("group_20", wear_per_slot(place, db, 20, kSlots, Commit::each_save));
    report("group_10", wear_per_slot(place, db, 10, kSlots, Commit::each_save));
    return 0;
} catch (const std::exception& trouble) {
    std::fprintf(stderr, "wear_bench: %s\n", trouble.what());
    return 1;
}

// SPDX-License-Identifier: Apache-2.0
// Two processes that query the day back to back, by turns alone and beside a third that writes a
// row each millisecond: their rates, every call that failed, and the longest write-ahead log.
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <new>
#include <stdexcept>
#include <vector>

#include "median.h"
#include "queries.h"

using namespace pwrmgt::bench;

namespace {

constexpr std::size_t kReaders = 2;
constexpr int kTurns = 12;  // of the readers alone, and as many beside the writer
constexpr std::int64_t kWriteEvery_ns = 1'000'000;
constexpr std::int64_t kSecond_ns = 1'000'000'000;
// A writer this late starts its beat anew, instead of catching up in one burst.
constexpr std::int64_t kLate_ns = kSecond_ns / 10;

enum Phase : int { waiting, alone, together, over };

// What the processes share.
struct Board {
    std::atomic<int> phase{waiting};
    std::atomic<std::uint64_t> queries{0};
    std::atomic<std::uint64_t> failed_queries{0};
    std::atomic<std::uint64_t> writes{0};
    std::atomic<std::uint64_t> failed_writes{0};
};

std::int64_t now_ns() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * kSecond_ns + now.tv_nsec;
}

void wait_until(std::int64_t at_ns) {
    const timespec at{at_ns / kSecond_ns, at_ns % kSecond_ns};
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr) == EINTR) {
    }
}

void read_on(Board& board) {
    Entries entries{};
    for (int phase = waiting; (phase = board.phase.load()) != over;) {
        if (phase == waiting) {
            wait_until(now_ns() + kWriteEvery_ns);
            continue;
        }
        const std::uint32_t status =
            pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, PWRMGT_PERIOD_24_HOURS, entries.data(),
                                     static_cast<std::uint32_t>(entries.size()));
        ++(status == 0 ? board.queries : board.failed_queries);
    }
}

// Rows of the day again and again, each in the place of the stored one: the table keeps its size.
void write_on(Board& board, const std::vector<Row>& day) {
    const LibraryConnection db;
    auto row = day.begin();
    std::int64_t next_ns = now_ns();
    for (int phase = waiting; (phase = board.phase.load()) != over;) {
        next_ns = std::max(next_ns + kWriteEvery_ns, now_ns() - kLate_ns);
        wait_until(next_ns);
        if (phase != together) continue;
        const std::uint32_t status =
            pwrmgt_update_hist_table(db.get(), row->slot, row->time_s, sample_of(*row));
        ++(status == 0 ? board.writes : board.failed_writes);
        if (++row == day.end()) row = day.begin();
    }
}

template <class Body>
pid_t start(Board& board, Body body) {
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork failed");
    if (child > 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        body();
    } catch (const std::exception& trouble) {
        std::fprintf(stderr, "readers_bench: %s\n", trouble.what());
        ++board.failed_queries;
    }
    std::exit(0);
}

struct Logs {
    std::array<std::string, 2> files;
    std::int64_t longest_bytes = 0;

    void look() {
        for (const std::string& file : files) {
            struct stat status {};
            if (stat(file.c_str(), &status) == 0) {
                longest_bytes = std::max<std::int64_t>(longest_bytes, status.st_size);
            }
        }
    }
};

// Queries per second of both readers in one turn.
double rate_in(Board& board, Phase phase, double seconds, Logs& logs) {
    constexpr std::int64_t kLookEvery_ns = 10'000'000;
    board.phase = phase;
    const std::int64_t start_ns = now_ns();
    const auto end_ns = start_ns + static_cast<std::int64_t>(seconds * kSecond_ns);
    const std::uint64_t before = board.queries;
    for (std::int64_t at_ns = start_ns; at_ns < end_ns; at_ns = now_ns()) {
        logs.look();
        wait_until(at_ns + kLookEvery_ns);
    }
    const std::uint64_t queries = board.queries - before;
    return static_cast<double>(queries) * kSecond_ns / static_cast<double>(now_ns() - start_ns);
}

void measure(Board& board, double seconds, Logs& logs) {
    std::vector<double> ratios;
    std::vector<double> rates_alone;
    for (int turn = 0; turn < kTurns; ++turn) {
        const bool alone_first = turn % 2 == 0;
        double quiet = alone_first ? rate_in(board, alone, seconds / kTurns, logs) : 0;
        const double busy = rate_in(board, together, seconds / kTurns, logs);
        if (!alone_first) quiet = rate_in(board, alone, seconds / kTurns, logs);
        ratios.push_back(busy / quiet);
        rates_alone.push_back(quiet);
    }
    board.phase = over;
    std::printf("readers.rate_ratio\t%.3f\n", median(ratios));
    std::printf("readers.rate_alone\t%.0f\n", median(rates_alone));
    std::printf("readers.writes_per_s\t%.0f\n", static_cast<double>(board.writes) / seconds);
}

}  // namespace

int main(int argc, char** argv) try {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 60;
    if (argc > 2 || seconds <= 0) {
        std::fprintf(stderr, "usage: readers_bench [SECONDS BESIDE THE WRITER]\n");
        return 2;
    }
    const Scratch place;
    const std::vector<Row> day = measured_day();
    fill_library(day);
    void* shared =
        mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) throw std::runtime_error("mmap failed");
    Board& board = *new (shared) Board;
    std::vector<pid_t> children;
    for (std::size_t reader = 0; reader < kReaders; ++reader) {
        children.push_back(start(board, [&] { read_on(board); }));
    }
    children.push_back(start(board, [&] { write_on(board, day); }));
    Logs logs{{place.memory().file("vek_pwr_db-mem.sqlite-wal"),
               place.disk().file("vek_pwr_db.sqlite-wal")}};
    measure(board, seconds, logs);
    bool ended_well = true;
    for (const pid_t child : children) {
        int status = 0;
        ended_well = waitpid(child, &status, 0) == child && status == 0 && ended_well;
    }
    const std::uint64_t failed = board.failed_queries + board.failed_writes + (ended_well ? 0 : 1);
    std::printf("readers.failed_calls\t%llu\n", static_cast<unsigned long long>(failed));
    std::printf("readers.longest_log_kb\t%.0f\n", static_cast<double>(logs.longest_bytes) / 1024);
    return 0;
} catch (const std::exception& trouble) {
    std::fprintf(stderr, "readers_bench: %s\n", trouble.what());
    return 1;
}

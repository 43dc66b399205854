// SPDX-License-Identifier: Apache-2.0
// The daemon's schedule and tables for days of a clock that does not wait, beside processes that
// query them: nothing of it may grow. SOAK_DAYS in the environment is how many days it runs on top
// of the full ring that it starts with.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

#include "pwrmgtd/database_fixture.h"
#include "replay.h"
#include "schedule.h"
#include "startup.h"
#include "stopped_clock.h"

namespace pwrmgt::pwrmgtd::test {
namespace {

constexpr std::int64_t kMidnight = 1748995200;  // 2025-06-04 00:00:00 UTC
constexpr std::size_t kReaders = 2;
constexpr std::int64_t kSlotsPerQuestion = 8;
constexpr std::size_t kSettled = 8;
constexpr std::uintmax_t kFileSlack = 128 * 1024;
// Readers that never pause keep a log from starting over; the writer then waits for a gap.
constexpr std::uintmax_t kLongestLog = 8 * 1024 * 1024;
constexpr std::int64_t kMemorySlack_kb = 1024;

// The sanitizer keeps what was freed.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kMemoryTells = false;
#elif defined(__has_feature)
constexpr bool kMemoryTells = !__has_feature(address_sanitizer);
#else
constexpr bool kMemoryTells = true;
#endif

// Is where it is asked to wait for, in no time.
class LeapingClock final : public Clock {
public:
    using Action = std::function<void(std::int64_t)>;
    LeapingClock(std::int64_t start_s, std::int64_t stop_s, Action at_each_wake)
        : start_s_(start_s), now_s_(start_s), stop_s_(stop_s), act_(std::move(at_each_wake)) {}

    std::int64_t now() override { return now_s_; }
    std::int64_t elapsed() override { return now_s_ - start_s_; }
    Wake wait_until(std::int64_t t_s) override {
        now_s_ = std::max(now_s_, t_s);
        stopped_clock_s = now_s_;
        act_(now_s_);
        return now_s_ >= stop_s_ ? Wake::stop : Wake::time;
    }

private:
    std::int64_t start_s_;
    std::int64_t now_s_;
    std::int64_t stop_s_;
    Action act_;
};

// What the processes tell each other.
struct Shared {
    std::atomic<std::int64_t> now_s{0};
    std::atomic<std::uint64_t> queries{0};
    std::atomic<std::uint64_t> failures{0};
    std::atomic<std::uint32_t> last_failure{0};
};

// Processes that query the day each time they are asked to, by the writer's clock. They are forked
// before anything is open.
class Readers {
public:
    Readers() {
        void* const memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                  MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            ADD_FAILURE() << "no shared memory";
            return;
        }
        shared = new (memory) Shared;
        std::generate(readers_.begin(), readers_.end(), [this] { return start(); });
    }
    ~Readers() {
        stop();
        if (shared != nullptr) munmap(shared, sizeof(Shared));
    }
    Readers(const Readers&) = delete;
    Readers& operator=(const Readers&) = delete;

    // One that is busy is not waited for.
    void ask(std::int64_t now_s) {
        shared->now_s = now_s;
        for (const Reader& reader : readers_) {
            if (write(reader.ask, "", 1) != 1 && errno != EAGAIN) ++shared->failures;
        }
    }

    // Their exit codes.
    std::vector<int> stop() {
        std::vector<int> codes;
        for (Reader& reader : readers_) {
            if (reader.process <= 0) continue;
            close(reader.ask);
            int status = 0;
            waitpid(std::exchange(reader.process, 0), &status, 0);
            codes.push_back(status);
        }
        return codes;
    }

    Shared* shared = nullptr;

private:
    struct Reader {
        pid_t process = 0;
        int ask = -1;
    };

    Reader start() {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0) return {};
        const pid_t process = fork();
        if (process == 0) {
            for (const Reader& other : readers_)
                if (other.ask >= 0) close(other.ask);
            close(ends[1]);
            serve(ends[0]);
        }
        close(ends[0]);
        fcntl(ends[1], F_SETFL, O_NONBLOCK);
        return {process, ends[1]};
    }

    [[noreturn]] void serve(int questions) {
        std::array<char, 256> asked{};
        while (read(questions, asked.data(), asked.size()) > 0) {
            stopped_clock_s = shared->now_s;
            query();
        }
        _exit(0);
    }

    void query() {
        std::array<pwrmgt_hist_pwr_sample_t, 120> power{};
        std::array<pwrmgt_hist_psu_sample_t, 120> supply{};
        std::array<pwrmgt_hist_perf_sample_t, 120> load{};
        pwrmgt_power_policy_t policy{};
        for (const std::uint32_t status :
             {pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, 3, power.data(), 120),
              pwrmgt_get_history_power(PWRMGT_DOMAIN_CPU, 0, power.data(), 120),
              pwrmgt_get_history_psu_powers(1, 3, supply.data(), 120),
              pwrmgt_get_history_performance(2, load.data(), 120),
              pwrmgt_get_pwrpolicy_tbl(&policy)}) {
            ++shared->queries;
            if (status == 0) continue;
            ++shared->failures;
            shared->last_failure = status;
        }
    }

    std::array<Reader, kReaders> readers_;
};

struct Look {
    int rows = 0;
    std::uintmax_t files = 0;
    std::uintmax_t longest_log = 0;
    std::int64_t memory_kb = 0;
    std::ptrdiff_t descriptors = 0;
};

std::int64_t resident_kb() {
    std::ifstream statm("/proc/self/statm");
    std::int64_t total = 0;
    std::int64_t resident = 0;
    statm >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

double processor_ms() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto ms = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    return ms(used.ru_utime) + ms(used.ru_stime);
}

template <class Value>
Value most(const std::vector<Look>& looks, std::size_t from, std::size_t to, Value Look::*of) {
    Value found{};
    for (std::size_t at = from; at < to; ++at)
        found = std::max(found, looks[at].*of);
    return found;
}

class DaemonMonth : public DatabaseTest {
protected:
    Look look() {
        Look now;
        for (const char* table :
             {kWorkingHistory, kPersistentHistory, kWorkingExtra, kPersistentExtra}) {
            now.rows = std::max(now.rows, tables.count(table, "Timestamp>0"));
        }
        for (const char* file : {"/state/vek_pwr_db.sqlite", "/run/vek_pwr_db-mem.sqlite"}) {
            const std::string path = place_.directory() + file;
            now.files += std::filesystem::file_size(path);
            now.longest_log = std::max(now.longest_log, std::filesystem::file_size(path + "-wal"));
        }
        now.memory_kb = resident_kb();
        now.descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
        return now;
    }

    static trace::Trace day() {
        return *trace::load(MEASURED_DATA_DIR "/server_4socket_24h_60s.csv").trace;
    }

    // The day before, as a controller has that runs for long.
    void fill_ring() {
        const trace::Trace past = day();
        ASSERT_TRUE(start_tables({tables, log, kMidnight, 1, {2, {}, {}}}));
        ASSERT_TRUE(replay(past, plan_replay(past, kMidnight), kMidnight, tables));
        for (const char* file : {"main", "mem"})  // out of the logs
            ASSERT_EQ(raw(std::string("PRAGMA ") + file + ".wal_checkpoint(TRUNCATE)"), 0);
    }

    void run(std::int64_t slots) {
        const std::int64_t slots_per_look = std::clamp<std::int64_t>(slots / 24, 1, 720);
        LeapingClock clock(kMidnight, kMidnight + slots * kSlot_s, [&](std::int64_t now_s) {
            const std::int64_t slot = (now_s - kMidnight) / kSlot_s;
            if (slot % kSlotsPerQuestion == 0) readers_.ask(now_s);
            if (slot > 0 && slot % slots_per_look == 0) looks_.push_back(look());
        });
        TraceSource source(day(), "a day");
        Supervisor supervisor;
        ASSERT_TRUE(Schedule({clock, source, tables, log, supervisor}, {30, 10, 3600}).run());
    }

    // In this order: the readers inherit no open database.
    Readers readers_;
    std::vector<Look> looks_;
};

TEST_F(DaemonMonth, NothingGrowsBesideReaders) {
    const char* const wanted = std::getenv("SOAK_DAYS");
    const double days = wanted == nullptr ? 0.05 : std::atof(wanted);
    const auto slots = std::max<std::int64_t>(static_cast<std::int64_t>(days * 2880), 48);
    stopped_clock_s = kMidnight;
    fill_ring();
    const double before_ms = processor_ms();

    run(slots);

    const double took_ms = processor_ms() - before_ms;
    for (const int code : readers_.stop())
        EXPECT_EQ(code, 0);
    EXPECT_GT(readers_.shared->queries, 0U);
    EXPECT_EQ(readers_.shared->failures, 0U) << "status " << readers_.shared->last_failure;
    EXPECT_EQ(log.count("status"), 0U);
    ASSERT_GE(looks_.size(), 2 * kSettled);
    const std::size_t end = looks_.size();
    EXPECT_EQ(most(looks_, 0, end, &Look::rows), 2880);
    EXPECT_LE(most(looks_, kSettled, end, &Look::files),
              most(looks_, 0, kSettled, &Look::files) + kFileSlack);
    EXPECT_LE(most(looks_, 0, end, &Look::longest_log), kLongestLog);
    EXPECT_LE(most(looks_, kSettled, end, &Look::descriptors),
              most(looks_, 0, kSettled, &Look::descriptors));
    if (kMemoryTells) {
        EXPECT_LE(most(looks_, end - kSettled, end, &Look::memory_kb),
                  most(looks_, 0, kSettled, &Look::memory_kb) + kMemorySlack_kb);
    }
    const auto told = [](const Look& look) {
        return std::to_string(look.memory_kb) + " kB, " + std::to_string(look.descriptors) +
               " descriptors, files of " + std::to_string(look.files) + " bytes";
    };
    std::printf(
        "%lld slots, %.2f ms of the processor each; %llu queries; first %s; last %s; "
        "longest log %llu bytes\n",
        static_cast<long long>(slots), took_ms / static_cast<double>(slots),
        static_cast<unsigned long long>(readers_.shared->queries), told(looks_.front()).c_str(),
        told(looks_.back()).c_str(),
        static_cast<unsigned long long>(most(looks_, 0, end, &Look::longest_log)));
}

}  // namespace
}  // namespace pwrmgt::pwrmgtd::test

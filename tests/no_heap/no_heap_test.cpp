// SPDX-License-Identifier: Apache-2.0
// Queries, writers and exchanges live on the stack: a controller's memory does not fragment.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "counted_heap.h"
#include "fixed_platform.h"
#include "vekdb_pwrmgt.h"

using namespace pwrmgt::test;

namespace {

constexpr uint32_t kDb = 7;
constexpr int32_t kNow = 1'700'000'000;

// Where the controls put what they allocate, so that the compiler cannot leave it out.
void* volatile g_kept;

pwrmgt_hist_pwr_sample_t g_power[2880];
pwrmgt_hist_psu_sample_t g_psu[2880];
pwrmgt_hist_perf_sample_t g_perf[2880];

}  // namespace

class NoHeap : public testing::Test {
protected:
    void SetUp() override {
        fixed_platform() = {};
        g_power_policy_flag = 255;
    }

    // Runs `act`, which must end with `expected` after having reached the platform.
    template <class Act>
    static void expect_no_allocation(uint32_t expected, const Act& act) {
        const int calls_before = fixed_platform().calls;
        uint32_t status = ~expected;

        const size_t allocations = allocations_of([&] { status = act(); });

        EXPECT_EQ(allocations, 0U);
        EXPECT_EQ(status, expected);
        EXPECT_GT(fixed_platform().calls, calls_before);
    }
};

// -- controls: the counter sees what it is meant to see

TEST_F(NoHeap, CounterSeesTheAllocatorOfC) {
    EXPECT_EQ(allocations_of([] {
                  g_kept = std::malloc(10);
                  std::free(g_kept);
              }),
              1U);
    EXPECT_EQ(allocations_of([] {
                  g_kept = std::calloc(2, 10);
                  g_kept = std::realloc(g_kept, 4000);
                  std::free(g_kept);
              }),
              2U);
    EXPECT_EQ(allocations_of([] {
                  g_kept = std::aligned_alloc(64, 64);
                  std::free(g_kept);
              }),
              1U);
}

TEST_F(NoHeap, CounterSeesOperatorNew) {
    EXPECT_EQ(allocations_of([] {
                  const auto kept = std::make_unique<int>(5);
                  g_kept = kept.get();
              }),
              1U);
    EXPECT_EQ(allocations_of([] {
                  std::string text(100, 'x');
                  g_kept = text.data();
              }),
              1U);
}

TEST_F(NoHeap, CounterSeesASharedLibraryAllocate) {
    EXPECT_EQ(allocations_of([] {
                  g_kept = strdup("copied by the C library");
                  std::free(g_kept);
              }),
              1U);
}

TEST_F(NoHeap, CounterSeesAnAllocationInTheMidstOfAQuery) {
    fixed_platform().allocates_on_open = true;
    g_power_policy_flag = 0;

    EXPECT_EQ(
        allocations_of([] { pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, 0, g_power, 120); }),
        1U);
}

TEST_F(NoHeap, CounterIsSilentOutsideItsSpan) {
    const size_t before = allocations_of([] {});
    g_kept = std::malloc(10);
    std::free(g_kept);

    EXPECT_EQ(before, 0U);
    EXPECT_EQ(stop_counting(), 0U);
}

// -- queries

TEST_F(NoHeap, QueriesByPeriodAllocateNothing) {
    expect_no_allocation(
        0, [] { return pwrmgt_get_history_power(PWRMGT_DOMAIN_SYSTEM, 3, g_power, 120); });
    expect_no_allocation(
        0, [] { return pwrmgt_get_history_power(PWRMGT_DOMAIN_CPU, 3, g_power, 120); });
    expect_no_allocation(0, [] { return pwrmgt_get_history_psu_powers(12, 3, g_psu, 120); });
    expect_no_allocation(0, [] { return pwrmgt_get_history_performance(3, g_perf, 120); });
}

TEST_F(NoHeap, QueriesByWindowAllocateNothing) {
    uint32_t count = 0;
    expect_no_allocation(0, [&] {
        return pwrmgt_get_history_power_by_tm(PWRMGT_DOMAIN_SYSTEM, kNow, 1440, 1, g_power, &count);
    });
    expect_no_allocation(
        0, [&] { return pwrmgt_get_history_psu_power_by_tm(12, kNow, 1440, 1, g_psu, &count); });
    expect_no_allocation(
        0, [&] { return pwrmgt_get_history_performance_by_tm(kNow, 1440, 1, g_perf, &count); });
}

TEST_F(NoHeap, SummaryAllocatesNothing) {
    expect_no_allocation(0, [] {
        return pwrmgt_get_duration_summary_power(PWRMGT_DOMAIN_SYSTEM, 1440, g_power,
                                                 static_cast<psu_id_t>(1));
    });
}

TEST_F(NoHeap, ProcessorQueriesAllocateNothing) {
    pwrmgt_hist_cpu_pwr_t one[20];
    pwrmgt_hist_entire_cpu_pwr_t all[20];
    expect_no_allocation(0, [&] { return pwrmgt_get_history_cpu_power(1, one, 20); });
    expect_no_allocation(0, [&] { return pwrmgt_get_history_entire_cpu_power(all, 20); });
    expect_no_allocation(0, [&] { return pwrmgt_get_latest_cpu_power(8, one); });
    expect_no_allocation(0, [&] { return pwrmgt_get_latest_entire_cpu_power(all); });
}

TEST_F(NoHeap, PolicyAndLiveReadingAllocateNothing) {
    pwrmgt_power_policy_t policy{};
    pwrmgt_realtime_pwr_t reading{};
    expect_no_allocation(0, [&] { return pwrmgt_get_pwrpolicy_tbl(&policy); });
    g_power_policy_flag = 255;
    expect_no_allocation(0, [] { return pwrmgt_unsupport_check(""); });
    expect_no_allocation(0, [&] { return pwrmgt_get_realtime_powers(&reading); });
}

// -- writers

TEST_F(NoHeap, RowWritersAllocateNothing) {
    fixed_platform().rows = 1;
    expect_no_allocation(0, [] { return pwrmgt_update_realtime_table(kDb, {}, 1); });
    expect_no_allocation(0, [] { return pwrmgt_update_hist_table(kDb, 1, kNow, {}); });
    expect_no_allocation(0, [] { return pwrmgt_update_hist_extra_table(kDb, 1, kNow, {}); });
    expect_no_allocation(0, [] { return pwrmgt_update_cpu_pwr_hist_table(kDb, {}); });
    expect_no_allocation(0, [] { return pwrmgt_prep_empty_hist_sample(1); });

    fixed_platform().rows = 0;
    expect_no_allocation(0, [] { return pwrmgt_update_realtime_table(kDb, {}, 1); });
}

TEST_F(NoHeap, TrimsAllocateNothing) {
    expect_no_allocation(0, [] { return pwrmgt_cleanup_hist_mem_table(kDb, kNow); });
    expect_no_allocation(0, [] { return pwrmgt_cleanup_extra_hist_mem_table(kDb, kNow); });
    expect_no_allocation(0, [] { return pwrmgt_cleanup_cpu_pwr_hist_table(kDb, kNow); });
}

TEST_F(NoHeap, StartAndSavesAllocateNothing) {
    int32_t id = 0;
    int32_t stamp = 0;
    expect_no_allocation(0, [&] { return pwrmgt_init_hist_table(kDb, kNow, &id, &stamp); });
    expect_no_allocation(0, [] { return pwrmgt_init_hist_extra_table(kDb, kNow); });
    expect_no_allocation(0, [] { return pwrmgt_load_hist_bak_table(kDb); });
    expect_no_allocation(0, [&] { return pwrmgt_save_hist_mem_table(kDb, &id); });
    expect_no_allocation(0, [] { return pwrmgt_save_extra_hist_mem_table(kDb, 5); });
    expect_no_allocation(0, [] { return pwrmgt_update_hist_persist_db(kDb, 0, 2880); });
}

TEST_F(NoHeap, PolicyRowIsMadeWithoutAllocating) {
    pwrmgt_power_policy_t policy{};
    fixed_platform().rows = 0;
    expect_no_allocation(0, [&] { return pwrmgt_init_power_policy_table(kDb, &policy, 1, 7); });
}

// SPDX-License-Identifier: Apache-2.0
// The three queries by window: their checks in order, and every status.
#include "builders.h"
#include "platform_test.h"

#include <functional>

using namespace pwrmgt::test;

namespace by_window_tests {
namespace {

constexpr int32_t kEnd = 1'700'000'000;
constexpr uint32_t kUntouchedCount = 77;
constexpr const char* kBayCount = "/dc/tavn/dm/planar/0/psu/maxcount";
constexpr const char* kAskBayCount = "byte /dc/tavn/dm/planar/0/psu/maxcount";

// One of the three queries, told apart only by what differs.
struct Query {
    const char* name;
    std::function<uint32_t(int32_t minutes, int32_t samples)> run;
    std::function<uint32_t(int32_t minutes, int32_t samples)> run_without_entries;
    std::function<uint32_t()> run_without_count;
    std::function<Row()> first_entry;
    Calls before_the_connection;
    Row valid;
    Row marked;
    Row untouched;
};

}  // namespace

class ByWindow : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
        start_over();
    }

    void start_over() {
        platform().reset();
        count = kUntouchedCount;
        power.assign(2881, untouched_power());
        psu.assign(2881, untouched_psu());
        perf.assign(2881, untouched_perf());
    }

    uint32_t ask_power(uint32_t domain, int32_t minutes, int32_t samples) {
        return pwrmgt_get_history_power_by_tm(static_cast<pwrmgt_pwr_domain>(domain), kEnd, minutes,
                                              samples, power.data(), &count);
    }
    uint32_t ask_psu(int32_t bay, int32_t minutes, int32_t samples) {
        return pwrmgt_get_history_psu_power_by_tm(bay, kEnd, minutes, samples, psu.data(), &count);
    }
    uint32_t ask_perf(int32_t minutes, int32_t samples) {
        return pwrmgt_get_history_performance_by_tm(kEnd, minutes, samples, perf.data(), &count);
    }

    // Each query in turn, on a fresh platform.
    void for_each_query(const std::function<void(const Query&)>& test) {
        for (const Query& query : queries) {
            SCOPED_TRACE(query.name);
            start_over();
            test(query);
            EXPECT_THAT(platform().handle_faults(), testing::IsEmpty());
        }
    }

    uint32_t count = kUntouchedCount;
    std::vector<pwrmgt_hist_pwr_sample_t> power;
    std::vector<pwrmgt_hist_psu_sample_t> psu;
    std::vector<pwrmgt_hist_perf_sample_t> perf;

    const std::vector<Query> queries{
        {"power",
         [this](int32_t minutes, int32_t samples) { return ask_power(1, minutes, samples); },
         [this](int32_t minutes, int32_t samples) {
             return pwrmgt_get_history_power_by_tm(PWRMGT_DOMAIN_PSU, kEnd, minutes, samples,
                                                   nullptr, &count);
         },
         [this] {
             return pwrmgt_get_history_power_by_tm(PWRMGT_DOMAIN_CPU, kEnd, 1, 1, power.data(),
                                                   nullptr);
         },
         [this] { return fields(power[0]); },
         {"quoril"},
         {100, 120, 80},
         {65535, 65535, 65535},
         fields(untouched_power())},
        {"supply",
         [this](int32_t minutes, int32_t samples) { return ask_psu(1, minutes, samples); },
         [this](int32_t minutes, int32_t samples) {
             return pwrmgt_get_history_psu_power_by_tm(13, kEnd, minutes, samples, nullptr, &count);
         },
         [this] { return pwrmgt_get_history_psu_power_by_tm(1, kEnd, 1, 1, psu.data(), nullptr); },
         [this] { return fields(psu[0]); },
         {"quoril", kAskBayCount},
         {110, 100},
         {65535, 65535},
         fields(untouched_psu())},
        {"performance",
         [this](int32_t minutes, int32_t samples) { return ask_perf(minutes, samples); },
         [this](int32_t minutes, int32_t samples) {
             return pwrmgt_get_history_performance_by_tm(kEnd, minutes, samples, nullptr, &count);
         },
         [this] { return pwrmgt_get_history_performance_by_tm(kEnd, 1, 1, perf.data(), nullptr); },
         [this] { return fields(perf[0]); },
         {"quoril"},
         {40, 60, 20, 41, 42, 43},
         {255, 255, 255, 255, 255, 255},
         fields(untouched_perf())},
    };
};

// -- checks, each before the next

TEST_F(ByWindow, NullEntriesAre1BeforeAnyOtherCheck) {
    for_each_query([this](const Query& query) {
        platform().quoril = true;

        EXPECT_EQ(query.run_without_entries(1441, 0), 1U);

        EXPECT_THAT(platform().calls, testing::IsEmpty());
        EXPECT_EQ(count, 77U);
    });
}

TEST_F(ByWindow, GateRefusesBeforeTheWindowIsLookedAt) {
    policy_is_read(2);
    for_each_query([this](const Query& query) {
        EXPECT_EQ(query.run(1441, 0), 10U);

        EXPECT_EQ(platform().calls, Calls{"quoril"});
        EXPECT_EQ(count, 77U);
        EXPECT_EQ(query.first_entry(), query.untouched);
    });
}

TEST_F(ByWindow, EmptyNameAtTheGateIsRefusedOnQuoril) {
    for_each_query([](const Query& query) {
        platform().quoril = true;

        EXPECT_EQ(query.run(5, 1), 10U);

        EXPECT_EQ(platform().calls, Calls{"quoril"});
    });
}

TEST_F(ByWindow, SamplesOutside1To24Are11OnceTheGateIsPassed) {
    for (const int32_t samples : {0, 25, -1, INT32_MIN, INT32_MAX}) {
        for_each_query([this, samples](const Query& query) {
            EXPECT_EQ(query.run(5, samples), 11U) << samples;

            EXPECT_EQ(platform().calls, Calls{"quoril"});
            EXPECT_EQ(count, 77U);
            EXPECT_EQ(query.first_entry(), query.untouched);
        });
    }
}

TEST_F(ByWindow, MinutesAbove1440Are11OnceTheGateIsPassed) {
    for (const int32_t minutes : {1441, INT32_MAX}) {
        for_each_query([this, minutes](const Query& query) {
            EXPECT_EQ(query.run(minutes, 24), 11U) << minutes;

            EXPECT_EQ(platform().calls, Calls{"quoril"});
            EXPECT_EQ(count, 77U);
        });
    }
}

TEST_F(ByWindow, BadWindowIsFoundBeforeTheBay) {
    EXPECT_EQ(ask_psu(13, 1441, 1), 11U);
    EXPECT_EQ(ask_psu(13, 5, 25), 11U);

    EXPECT_EQ(platform().count("byte"), 0U);
}

TEST_F(ByWindow, NoConnectionIs2) {
    for_each_query([this](const Query& query) {
        platform().fail(Operation::open);
        Calls expected = query.before_the_connection;
        expected.push_back(kOpen);

        EXPECT_EQ(query.run(5, 1), 2U);

        EXPECT_EQ(platform().calls, expected);
        EXPECT_EQ(count, 77U);
        EXPECT_EQ(query.first_entry(), query.untouched);
    });
}

TEST_F(ByWindow, NoConnectionIsFoundBeforeAnUnknownDomainOrBay) {
    platform().fail(Operation::open, 0, 1);
    EXPECT_EQ(ask_power(3, 5, 1), 2U);

    platform().fail(Operation::open, 0, 2);
    EXPECT_EQ(ask_psu(0, 5, 1), 2U);
}

TEST_F(ByWindow, UnknownDomainIs3OnceTheConnectionIsOpen) {
    for (const uint32_t domain : {3U, 4U, 4'294'967'295U}) {
        platform().calls.clear();

        EXPECT_EQ(ask_power(domain, 5, 1), 3U);

        EXPECT_EQ(platform().calls, (Calls{"quoril", kOpen, "close"}));
        EXPECT_EQ(count, 77U);
    }
}

TEST_F(ByWindow, UnknownBayIs3OnceTheConnectionIsOpen) {
    platform().set_property(kBayCount, 12);
    for (const int32_t bay : {0, 13, -1, INT32_MIN, INT32_MAX}) {
        platform().calls.clear();

        EXPECT_EQ(ask_psu(bay, 5, 1), 3U);

        EXPECT_EQ(platform().calls, (Calls{"quoril", kAskBayCount, kOpen, "close"}));
        EXPECT_EQ(count, 77U);
    }
}

TEST_F(ByWindow, FailedQueryIs3HoweverItFails) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        for_each_query([this, mode](const Query& query) {
            platform().fail(Operation::query, -1, 1, mode);

            EXPECT_EQ(query.run(5, 1), 3U);

            EXPECT_EQ(platform().count("step"), 0U);
            EXPECT_EQ(platform().count("free_result"), mode == Mode::error_with_handle ? 1U : 0U);
            EXPECT_EQ(platform().calls.back(), "close");
            EXPECT_EQ(count, 77U);
            EXPECT_EQ(query.first_entry(), query.untouched);
        });
    }
}

// -- once the rows are there

TEST_F(ByWindow, CountIsStoredAlsoWithoutAnyData) {
    for_each_query([this](const Query& query) {
        EXPECT_EQ(query.run(5, 3), 8U);

        EXPECT_EQ(count, 3U);
    });
}

TEST_F(ByWindow, NullCountIsNotWrittenAndChangesNothing) {
    for_each_query([](const Query& query) {
        platform().answer_rows(steady_rows(1'699'999'980, 1, query.valid));

        EXPECT_EQ(query.run_without_count(), 0U);

        EXPECT_EQ(query.first_entry()[2], query.valid[0]);
    });
}

TEST_F(ByWindow, NoValidSampleIs8WithTheEntriesMarkedAndTheCountStored) {
    for_each_query([this](const Query& query) {
        platform().answer_rows(steady_rows(1'699'999'980, 1, query.marked));

        EXPECT_EQ(query.run(1, 2), 8U);

        EXPECT_EQ(query.first_entry()[1], 1'699'999'980);
        EXPECT_EQ(query.first_entry()[2], query.marked[0]);
        EXPECT_EQ(count, 1U);
    });
}

TEST_F(ByWindow, FailingStepIs8WithTheEarlierEntriesKeptAndTheCountStored) {
    for_each_query([this](const Query& query) {
        platform().answer_rows(Rows{steady_rows(1'699'999'980, 2, query.valid), 3, {}});

        EXPECT_EQ(query.run(1, 1), 8U);

        EXPECT_EQ(query.first_entry()[2], query.valid[0]);
        EXPECT_EQ(count, 2U);
    });
}

TEST_F(ByWindow, RowCountIsNotAskedFor) {
    for_each_query([](const Query& query) {
        platform().answer_rows(Rows{steady_rows(1'699'999'980, 1, query.valid), 10, 0});

        EXPECT_EQ(query.run(1, 1), 0U);

        EXPECT_EQ(platform().count("row_count"), 0U);
    });
}

}  // namespace by_window_tests

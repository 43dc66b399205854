// SPDX-License-Identifier: Apache-2.0
// The three queries by period: their checks in order, and every status.
#include "builders.h"
#include "platform_test.h"

#include <functional>

using namespace pwrmgt::test;

namespace {

// One of the three queries over one valid row, told apart only by what differs.
struct Query {
    const char* name;
    std::function<uint32_t(uint32_t period, uint32_t count)> run;
    std::function<uint32_t(uint32_t period, uint32_t count)> run_without_entries;
    std::function<Row()> first_entry;
    Row valid;
    Row marked;
    Row untouched;
    uint32_t when_empty;
};

}  // namespace

class ByPeriod : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
        start_over();
    }

    void start_over() {
        platform().reset();
        power.assign(121, untouched_power());
        psu.assign(121, untouched_psu());
        perf.assign(121, untouched_perf());
    }

    uint32_t ask_power(uint32_t domain, uint32_t period, uint32_t count) {
        return pwrmgt_get_history_power(static_cast<pwrmgt_pwr_domain>(domain), period,
                                        power.data(), count);
    }
    uint32_t ask_psu(uint32_t bay, uint32_t period, uint32_t count) {
        return pwrmgt_get_history_psu_powers(bay, period, psu.data(), count);
    }
    uint32_t ask_perf(uint32_t period, uint32_t count) {
        return pwrmgt_get_history_performance(period, perf.data(), count);
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

    std::vector<pwrmgt_hist_pwr_sample_t> power;
    std::vector<pwrmgt_hist_psu_sample_t> psu;
    std::vector<pwrmgt_hist_perf_sample_t> perf;

    const std::vector<Query> queries{
        {"power",
         [this](uint32_t period, uint32_t count) { return ask_power(1, period, count); },
         [](uint32_t period, uint32_t count) {
             return pwrmgt_get_history_power(PWRMGT_DOMAIN_PSU, period, nullptr, count);
         },
         [this] { return fields(power[0]); },
         {100, 120, 80},
         {65535, 65535, 65535},
         fields(untouched_power()),
         8},
        {"supply",
         [this](uint32_t period, uint32_t count) { return ask_psu(1, period, count); },
         [](uint32_t period, uint32_t count) {
             return pwrmgt_get_history_psu_powers(13, period, nullptr, count);
         },
         [this] { return fields(psu[0]); },
         {110, 100},
         {65535, 65535},
         fields(untouched_psu()),
         8},
        {"performance",
         [this](uint32_t period, uint32_t count) { return ask_perf(period, count); },
         [](uint32_t period, uint32_t count) {
             return pwrmgt_get_history_performance(period, nullptr, count);
         },
         [this] { return fields(perf[0]); },
         {40, 60, 20, 41, 42, 43},
         {255, 255, 255, 255, 255, 255},
         fields(untouched_perf()),
         31},
    };
};

// -- checks, each before the next

TEST_F(ByPeriod, NullEntriesAre1BeforeAnyOtherCheck) {
    for_each_query([](const Query& query) {
        platform().quoril = true;

        EXPECT_EQ(query.run_without_entries(4, 121), 1U);

        EXPECT_THAT(platform().calls, testing::IsEmpty());
    });
}

TEST_F(ByPeriod, CountAbove120IsRefusedBeforeTheGate) {
    for_each_query([](const Query& query) {
        EXPECT_EQ(query.run(4, 121), 10U);
        EXPECT_EQ(query.run(0, UINT32_MAX), 10U);

        EXPECT_THAT(platform().calls, testing::IsEmpty());
        EXPECT_EQ(query.first_entry(), query.untouched);
    });
}

TEST_F(ByPeriod, CountOf120IsAccepted) {
    for_each_query([](const Query& query) {
        platform().answer_rows(steady_rows(1'699'999'980, 1, query.valid));

        EXPECT_EQ(query.run(0, 120), 0U);
    });
}

TEST_F(ByPeriod, GateRefusesBeforeTheConnection) {
    policy_is_read(2);
    for_each_query([](const Query& query) {
        EXPECT_EQ(query.run(4, 60), 10U);

        EXPECT_EQ(platform().calls, Calls{"quoril"});
        EXPECT_EQ(query.first_entry(), query.untouched);
    });
}

TEST_F(ByPeriod, GateIsAskedWithTheEmptyName) {
    platform().quoril = true;
    platform().answer_rows(steady_rows(1'699'999'980, 1, {100, 120, 80}));

    EXPECT_EQ(ask_power(1, 0, 1), 0U);

    platform().calls.clear();
    EXPECT_EQ(ask_psu(1, 0, 1), 10U);
    EXPECT_EQ(ask_perf(0, 1), 10U);
    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril"}));
}

TEST_F(ByPeriod, NoConnectionIs2BeforeThePeriodAndTheClock) {
    for_each_query([](const Query& query) {
        platform().fail(Operation::open);

        EXPECT_EQ(query.run(4, 60), 2U);

        EXPECT_EQ(platform().calls, (Calls{"quoril", "open localhost root '' vek_pwr_db 0"}));
    });
}

TEST_F(ByPeriod, BadPeriodIs31OnceTheConnectionIsOpen) {
    for_each_query([](const Query& query) {
        EXPECT_EQ(query.run(4, 60), 31U);

        EXPECT_EQ(platform().calls,
                  (Calls{"quoril", "open localhost root '' vek_pwr_db 0", "time", "close"}));
        EXPECT_EQ(query.first_entry(), query.untouched);
    });
}

TEST_F(ByPeriod, ClockThatIsNotPositiveIs31) {
    for (const int64_t clock : {int64_t{-1}, int64_t{0}, int64_t{2'147'483'648}}) {
        for_each_query([clock](const Query& query) {
            platform().clock = clock;

            EXPECT_EQ(query.run(0, 60), 31U);

            EXPECT_EQ(platform().count("query"), 0U);
            EXPECT_EQ(platform().count("close"), 1U);
        });
    }
}

TEST_F(ByPeriod, BadPeriodIsFoundBeforeABadDomainOrBay) {
    EXPECT_EQ(ask_power(3, 4, 60), 31U);
    EXPECT_EQ(ask_psu(13, 4, 60), 31U);
}

TEST_F(ByPeriod, UnknownDomainIs3OnceTheWindowIsBuilt) {
    for (const uint32_t domain : {3U, 4U, 4'294'967'295U}) {
        platform().calls.clear();

        EXPECT_EQ(ask_power(domain, 0, 60), 3U);

        EXPECT_EQ(platform().calls,
                  (Calls{"quoril", "open localhost root '' vek_pwr_db 0", "time", "close"}));
    }
}

TEST_F(ByPeriod, UnknownBayIs3OnceTheWindowIsBuilt) {
    for (const uint32_t bay : {0U, 13U, 4'294'967'295U}) {
        platform().calls.clear();

        EXPECT_EQ(ask_psu(bay, 0, 60), 3U);

        EXPECT_EQ(platform().calls,
                  (Calls{"quoril", "open localhost root '' vek_pwr_db 0", "time", "close"}));
    }
}

TEST_F(ByPeriod, FailedQueryIs3HoweverItFails) {
    for (const Mode mode : {Mode::error, Mode::error_with_handle, Mode::no_handle}) {
        for_each_query([mode](const Query& query) {
            platform().fail(Operation::query, -1, 1, mode);

            EXPECT_EQ(query.run(0, 60), 3U);

            EXPECT_EQ(platform().count("row_count"), 0U);
            EXPECT_EQ(platform().count("free_result"), mode == Mode::error_with_handle ? 1U : 0U);
            EXPECT_EQ(platform().calls.back(), "close");
        });
    }
}

TEST_F(ByPeriod, EmptyWindowOfPowerAndSuppliesIs8AndLeavesTheEntries) {
    EXPECT_EQ(ask_power(0, 0, 60), 8U);
    EXPECT_EQ(ask_psu(1, 0, 60), 8U);

    EXPECT_EQ(fields(power[0]), fields(untouched_power()));
    EXPECT_EQ(fields(psu[0]), fields(untouched_psu()));
    EXPECT_EQ(platform().count("step"), 0U);
}

TEST_F(ByPeriod, EmptyPerformanceWindowIs31) {
    EXPECT_EQ(ask_perf(0, 60), 31U);

    EXPECT_EQ(fields(perf[0]), fields(untouched_perf()));
    EXPECT_EQ(platform().count("step"), 0U);
}

TEST_F(ByPeriod, RowCountBelowZeroCountsAsEmpty) {
    for_each_query([](const Query& query) {
        platform().fail(Operation::row_count);

        EXPECT_EQ(query.run(0, 60), query.when_empty);

        EXPECT_EQ(platform().count("step"), 0U);
    });
}

TEST_F(ByPeriod, NoValidSampleIs8WithTheEntriesMarked) {
    for_each_query([](const Query& query) {
        platform().answer_rows(steady_rows(1'699'999'980, 1, query.marked));

        EXPECT_EQ(query.run(0, 1), 8U);

        EXPECT_THAT(query.first_entry()[1], 1'699'999'980);
        EXPECT_EQ(query.first_entry()[2], query.marked[0]);
    });
}

TEST_F(ByPeriod, CountOfZeroFillsNothingAndIs8) {
    for_each_query([](const Query& query) {
        platform().answer_rows(steady_rows(1'699'999'980, 1, query.valid));

        EXPECT_EQ(query.run(0, 0), 8U);

        EXPECT_EQ(query.first_entry(), query.untouched);
    });
}

TEST_F(ByPeriod, FailingStepIs8WithTheEarlierEntriesKept) {
    for_each_query([](const Query& query) {
        platform().answer_rows(Rows{steady_rows(1'699'999'980, 2, query.valid), 3, {}});

        EXPECT_EQ(query.run(0, 2), 8U);

        EXPECT_EQ(query.first_entry()[2], query.valid[0]);
    });
}

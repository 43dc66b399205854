// SPDX-License-Identifier: Apache-2.0
// Single columns of the policy row: the maximizer status and the unstress powers.
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

const std::string kMaximQuery = "query PowerPolicy [MaximStatus] where null order null";

// The unstress powers, which differ in their column alone.
struct Unstress {
    std::string column;
    uint32_t (*get)(uint16_t* watts);
    uint32_t (*set)(uint16_t watts);
};
const std::vector<Unstress> kUnstress{
    {"UnstressAdapterPwr", pwrmgt_get_unstress_adapter_power, pwrmgt_set_unstress_adapter_power},
    {"UnstressHddPwr", pwrmgt_get_unstress_hdd_power, pwrmgt_set_unstress_hdd_power},
};

std::string query_of(const Unstress& unstress) {
    return "query PowerPolicy [" + unstress.column + "] where null order null";
}

void stores(Recorder& recorder, int64_t value) {
    recorder.answer_rows(std::vector<Row>{{value}});
}

const auto k300IsStored = [](Recorder& recorder) { stores(recorder, 300); };

}  // namespace

class Settings : public PlatformTest {
protected:
    uint16_t watts = 7777;
};

// -- maximizer

TEST_F(Settings, NewMaximizerStatusIsWrittenAfterTheResultIsFreed) {
    stores(platform(), 4);

    EXPECT_EQ(pwrmgt_set_maximzer_status(5), 0U);

    EXPECT_EQ(platform().calls, (Calls{kOpen, kMaximQuery, "row_count", "step", "uchar 0",
                                       "free_result", "content", "put_char MaximStatus 5",
                                       "update PowerPolicy where null", "free_content", "close"}));
}

TEST_F(Settings, StoredMaximizerStatusIsNotWrittenAgain) {
    for (const uint8_t status : {uint8_t{0}, uint8_t{5}, uint8_t{255}}) {
        platform().reset();
        stores(platform(), status);

        EXPECT_EQ(pwrmgt_set_maximzer_status(status), 0U);

        EXPECT_EQ(platform().calls, (Calls{kOpen, kMaximQuery, "row_count", "step", "uchar 0",
                                           "free_result", "close"}));
    }
}

TEST_F(Settings, StoredMaximizerStatusThatCannotBeReadCountsAs0) {
    for (const uint8_t status : {uint8_t{0}, uint8_t{1}}) {
        platform().reset();
        stores(platform(), 5);
        platform().fail(Operation::column);

        EXPECT_EQ(pwrmgt_set_maximzer_status(status), 0U);

        EXPECT_EQ(platform().count("update"), status) << int{status};
    }
}

TEST_F(Settings, MaximizerStatusIsPutSigned) {
    struct Case {
        uint8_t status;
        std::string put;
    };
    for (const Case& c :
         {Case{127, "put_char MaximStatus 127"}, Case{128, "put_char MaximStatus -128"},
          Case{255, "put_char MaximStatus -1"}}) {
        stores(platform(), 0);
        platform().calls.clear();

        EXPECT_EQ(pwrmgt_set_maximzer_status(c.status), 0U);

        EXPECT_EQ(platform().named("put_char"), Calls{c.put});
    }
}

TEST_F(Settings, SettingTheMaximizerAsksNoGate) {
    policy_is_read(2);
    platform().quoril = true;
    stores(platform(), 4);

    EXPECT_EQ(pwrmgt_set_maximzer_status(5), 0U);

    EXPECT_EQ(platform().count("quoril"), 0U);
}

TEST_F(Settings, EmptyTableRefusesAMaximizerStatusWith8) {
    EXPECT_EQ(pwrmgt_set_maximzer_status(0), 8U);

    EXPECT_EQ(platform().calls, (Calls{kOpen, kMaximQuery, "row_count", "free_result", "close"}));
}

// Open, select, row count, step, column, content, put, update.
TEST_F(Settings, EachFailingCallOfTheMaximizerSetterHasItsStatus) {
    const auto set = [] { return pwrmgt_set_maximzer_status(5); };

    EXPECT_EQ(swept_statuses(k300IsStored, set),
              (Outcomes{{2}, {3}, {8, 8, 8, 0}, {0}, {0}, {7}, {0}, {5}}));
    EXPECT_EQ(sweep_exceptions(k300IsStored, set), 8U);
}

// -- unstress powers: get

TEST_F(Settings, UnstressPowerIsReadFromItsColumn) {
    for (const Unstress& unstress : kUnstress) {
        platform().reset();
        stores(platform(), 549);

        EXPECT_EQ(unstress.get(&watts), 0U);

        EXPECT_EQ(watts, 549);
        EXPECT_EQ(platform().calls, (Calls{kOpen, query_of(unstress), "row_count", "step",
                                           "short_uint 0", "free_result", "close"}));
    }
}

TEST_F(Settings, UnstressPowerTakesItsWholeWidth) {
    for (const Unstress& unstress : kUnstress) {
        for (const uint16_t stored : {uint16_t{0}, uint16_t{32768}, uint16_t{65535}}) {
            stores(platform(), stored);

            EXPECT_EQ(unstress.get(&watts), 0U);

            EXPECT_EQ(watts, stored);
        }
    }
}

TEST_F(Settings, NullUnstressOutputMakesTheSameCalls) {
    for (const Unstress& unstress : kUnstress) {
        platform().reset();
        stores(platform(), 549);

        EXPECT_EQ(unstress.get(nullptr), 0U);

        EXPECT_EQ(platform().calls, (Calls{kOpen, query_of(unstress), "row_count", "step",
                                           "short_uint 0", "free_result", "close"}));
        EXPECT_EQ(unstress.get(nullptr), 8U);
    }
}

// Open, select, row count, step, column.
TEST_F(Settings, EachFailingCallOfAnUnstressGetterHasItsStatusAndLeavesTheOutput) {
    for (const Unstress& unstress : kUnstress) {
        const auto get = [&] {
            watts = 7777;
            return unstress.get(&watts);
        };

        EXPECT_EQ(swept_statuses(k300IsStored, get), (Outcomes{{2}, {3}, {8, 8, 8, 0}, {0}, {0}}));
        sweep_faults(k300IsStored, get, [&](const Faulted& faulted) {
            const bool read = faulted.mode == Mode::one_row_more;
            EXPECT_EQ(watts, read ? 300 : 7777) << faulted.at;
        });
        EXPECT_EQ(sweep_exceptions(k300IsStored, [&] { return unstress.get(&watts); }), 5U);
    }
}

// -- unstress powers: set

TEST_F(Settings, NewUnstressPowerIsWrittenAfterItsGetterClosed) {
    for (const Unstress& unstress : kUnstress) {
        platform().reset();
        stores(platform(), 300);

        EXPECT_EQ(unstress.set(40000), 0U);

        EXPECT_EQ(platform().calls,
                  (Calls{kOpen, kOpen, query_of(unstress), "row_count", "step", "short_uint 0",
                         "free_result", "close", "content",
                         "put_short_uint " + unstress.column + " 40000",
                         "update PowerPolicy where null", "free_content", "close"}));
    }
}

TEST_F(Settings, UnstressContentIsMadeBeforeTheComparison) {
    for (const Unstress& unstress : kUnstress) {
        platform().reset();
        stores(platform(), 300);

        EXPECT_EQ(unstress.set(300), 0U);

        EXPECT_EQ(platform().calls,
                  (Calls{kOpen, kOpen, query_of(unstress), "row_count", "step", "short_uint 0",
                         "free_result", "close", "content", "free_content", "close"}));

        stores(platform(), 300);
        platform().fail(Operation::content, 0, 2);
        EXPECT_EQ(unstress.set(300), 7U);
    }
}

TEST_F(Settings, EmptyTableRefusesAnUnstressPowerWith8) {
    for (const Unstress& unstress : kUnstress) {
        platform().reset();

        EXPECT_EQ(unstress.set(0), 8U);

        EXPECT_EQ(platform().calls, (Calls{kOpen, kOpen, query_of(unstress), "row_count",
                                           "free_result", "close", "close"}));
    }
}

TEST_F(Settings, UnreadableUnstressPowerCountsAs0) {
    for (const Unstress& unstress : kUnstress) {
        for (const auto& [watts_wanted, updates] : {std::pair{0, 0U}, std::pair{1, 1U}}) {
            platform().reset();
            stores(platform(), 300);
            platform().fail(Operation::column);

            EXPECT_EQ(unstress.set(static_cast<uint16_t>(watts_wanted)), 0U);

            EXPECT_EQ(platform().count("update"), updates) << watts_wanted;
        }
    }
}

// Open; the getter's open, select, row count, step, column; content, put, update.
TEST_F(Settings, EachFailingCallOfAnUnstressSetterHasItsStatus) {
    for (const Unstress& unstress : kUnstress) {
        const auto set = [&] { return unstress.set(40000); };

        EXPECT_EQ(swept_statuses(k300IsStored, set),
                  (Outcomes{{2}, {2}, {3}, {8, 8, 8, 0}, {0}, {0}, {7}, {0}, {5}}));
        EXPECT_EQ(sweep_exceptions(k300IsStored, set), 9U);
    }
}

TEST_F(Settings, UnstressPowersAskNoGate) {
    policy_is_read(2);
    platform().quoril = true;

    for (const Unstress& unstress : kUnstress) {
        stores(platform(), 1);
        EXPECT_EQ(unstress.get(&watts), 0U);
        stores(platform(), 1);
        EXPECT_EQ(unstress.set(2), 0U);
    }

    EXPECT_EQ(platform().count("quoril"), 0U);
}

// SPDX-License-Identifier: Apache-2.0
// Which table and columns each domain, bay and the percentages are read from.
#include "builders.h"
#include "platform_test.h"

using namespace pwrmgt::test;

namespace {

constexpr const char* kWindow =
    " where Timestamp>=1699996440 AND Timestamp<=1700000000 order Timestamp DESC";

}  // namespace

class Sources : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        policy_is_read();
    }

    static Calls queried_for_domain(uint32_t domain) {
        std::vector<pwrmgt_hist_pwr_sample_t> entries(60);
        pwrmgt_get_history_power(static_cast<pwrmgt_pwr_domain>(domain), 0, entries.data(), 60);
        return platform().named("query");
    }
    static Calls queried_for_psu(uint32_t psu) {
        platform().calls.clear();
        std::vector<pwrmgt_hist_psu_sample_t> entries(60);
        pwrmgt_get_history_psu_powers(psu, 0, entries.data(), 60);
        return platform().named("query");
    }
};

TEST_F(Sources, SystemIsSevenColumns) {
    EXPECT_EQ(queried_for_domain(0),
              Calls{std::string("query HistPowers24HrMem [Timestamp,SysAvgDc,SysMaxDc,SysMinDc,"
                                "SysAvgAc,SysMaxAc,SysMinAc]") +
                    kWindow});
}

TEST_F(Sources, ProcessorsAreFourColumns) {
    EXPECT_EQ(queried_for_domain(1),
              Calls{std::string("query HistPowers24HrMem [Timestamp,CpuAvgPwr,CpuMaxPwr,"
                                "CpuMinPwr]") +
                    kWindow});
}

TEST_F(Sources, MemoryIsFourColumns) {
    EXPECT_EQ(queried_for_domain(2),
              Calls{std::string("query HistPowers24HrMem [Timestamp,MemAvgPwr,MemMaxPwr,"
                                "MemMinPwr]") +
                    kWindow});
}

TEST_F(Sources, DomainAbove2IsNowhere) {
    EXPECT_THAT(queried_for_domain(3), testing::IsEmpty());
    EXPECT_THAT(queried_for_domain(UINT32_MAX), testing::IsEmpty());
}

TEST_F(Sources, FirstFourBaysStandInTheMainHistory) {
    const auto line = [](const std::string& pair) {
        return Calls{"query HistPowers24HrMem [Timestamp," + pair + "]" + kWindow};
    };

    EXPECT_EQ(queried_for_psu(1), line("Ps1AvgAc,Ps1AvgDc"));
    EXPECT_EQ(queried_for_psu(2), line("Ps2AvgAc,Ps2AvgDc"));
    EXPECT_EQ(queried_for_psu(3), line("Ps3AvgAc,Ps3AvgDc"));
    EXPECT_EQ(queried_for_psu(4), line("Ps4AvgAc,Ps4AvgDc"));
}

TEST_F(Sources, OtherBaysStandInTheExtraHistory) {
    const auto line = [](const std::string& pair) {
        return Calls{"query HistExtraPowers24HrMem [Timestamp," + pair + "]" + kWindow};
    };

    EXPECT_EQ(queried_for_psu(5), line("Ps5AvgAc,Ps5AvgDc"));
    EXPECT_EQ(queried_for_psu(6), line("Ps6AvgAc,Ps6AvgDc"));
    EXPECT_EQ(queried_for_psu(7), line("Ps7AvgAc,Ps7AvgDc"));
    EXPECT_EQ(queried_for_psu(8), line("Ps8AvgAc,Ps8AvgDc"));
    EXPECT_EQ(queried_for_psu(9), line("Ps9AvgAc,Ps9AvgDc"));
    EXPECT_EQ(queried_for_psu(10), line("Ps10AvgAc,Ps10AvgDc"));
    EXPECT_EQ(queried_for_psu(11), line("Ps11AvgAc,Ps11AvgDc"));
    EXPECT_EQ(queried_for_psu(12), line("Ps12AvgAc,Ps12AvgDc"));
}

TEST_F(Sources, BayOutside1To12IsNowhere) {
    EXPECT_THAT(queried_for_psu(0), testing::IsEmpty());
    EXPECT_THAT(queried_for_psu(13), testing::IsEmpty());
    EXPECT_THAT(queried_for_psu(UINT32_MAX), testing::IsEmpty());
}

TEST_F(Sources, PercentagesAreSevenColumns) {
    std::vector<pwrmgt_hist_perf_sample_t> entries(60);

    pwrmgt_get_history_performance(0, entries.data(), 60);

    EXPECT_EQ(platform().named("query"),
              Calls{std::string("query HistPowers24HrMem [Timestamp,SysAvgPtg,SysMaxPtg,SysMinPtg,"
                                "CpuAvgPtg,MemAvgPtg,IOAvgPtg]") +
                    kWindow});
}

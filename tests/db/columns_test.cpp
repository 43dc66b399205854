// SPDX-License-Identifier: Apache-2.0
// The column lists by name: a list is a run of one table, so a shifted start shows here.
#include "db/columns.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace pwrmgt::db;

namespace {

using Names = std::vector<std::string>;

Names names(const Columns& columns) {
    return {columns.begin(), columns.end()};
}

}  // namespace

TEST(Columns, SystemListIsStampThenDcThenAc) {
    EXPECT_EQ(names(kSystemColumns), (Names{"Timestamp", "SysAvgDc", "SysMaxDc", "SysMinDc",
                                            "SysAvgAc", "SysMaxAc", "SysMinAc"}));
}

TEST(Columns, ProcessorListIsStampThenThree) {
    EXPECT_EQ(names(kCpuColumns), (Names{"Timestamp", "CpuAvgPwr", "CpuMaxPwr", "CpuMinPwr"}));
}

TEST(Columns, MemoryListIsStampThenThree) {
    EXPECT_EQ(names(kMemoryColumns), (Names{"Timestamp", "MemAvgPwr", "MemMaxPwr", "MemMinPwr"}));
}

TEST(Columns, EachSupplyHasItsOwnPair) {
    EXPECT_EQ(names(psu_columns(1)), (Names{"Timestamp", "Ps1AvgAc", "Ps1AvgDc"}));
    EXPECT_EQ(names(psu_columns(2)), (Names{"Timestamp", "Ps2AvgAc", "Ps2AvgDc"}));
    EXPECT_EQ(names(psu_columns(3)), (Names{"Timestamp", "Ps3AvgAc", "Ps3AvgDc"}));
    EXPECT_EQ(names(psu_columns(4)), (Names{"Timestamp", "Ps4AvgAc", "Ps4AvgDc"}));
    EXPECT_EQ(names(psu_columns(5)), (Names{"Timestamp", "Ps5AvgAc", "Ps5AvgDc"}));
    EXPECT_EQ(names(psu_columns(6)), (Names{"Timestamp", "Ps6AvgAc", "Ps6AvgDc"}));
    EXPECT_EQ(names(psu_columns(7)), (Names{"Timestamp", "Ps7AvgAc", "Ps7AvgDc"}));
    EXPECT_EQ(names(psu_columns(8)), (Names{"Timestamp", "Ps8AvgAc", "Ps8AvgDc"}));
    EXPECT_EQ(names(psu_columns(9)), (Names{"Timestamp", "Ps9AvgAc", "Ps9AvgDc"}));
    EXPECT_EQ(names(psu_columns(10)), (Names{"Timestamp", "Ps10AvgAc", "Ps10AvgDc"}));
    EXPECT_EQ(names(psu_columns(11)), (Names{"Timestamp", "Ps11AvgAc", "Ps11AvgDc"}));
    EXPECT_EQ(names(psu_columns(12)), (Names{"Timestamp", "Ps12AvgAc", "Ps12AvgDc"}));
}

TEST(Columns, PercentageListIsStampThenSix) {
    EXPECT_EQ(names(kPercentColumns), (Names{"Timestamp", "SysAvgPtg", "SysMaxPtg", "SysMinPtg",
                                             "CpuAvgPtg", "MemAvgPtg", "IOAvgPtg"}));
}

TEST(Columns, PolicyListIsFifteenNames) {
    EXPECT_EQ(names(kPolicyColumns),
              (Names{"IsBlade", "RedunMode", "MaximStatus", "CapEnable", "CapMode", "CapValue",
                     "CapSoftAc", "CapMinAc", "CapMaxAc", "CapSoftDc", "CapMinDc", "CapMaxDc",
                     "UnstressAdapterPwr", "UnstressFanPwr", "UnstressHddPwr"}));
}

TEST(Columns, ValuesAreAListWithoutItsStamp) {
    EXPECT_EQ(names(kCpuColumns.values()), (Names{"CpuAvgPwr", "CpuMaxPwr", "CpuMinPwr"}));
}

TEST(Columns, AllColumnsIsNoList) {
    EXPECT_EQ(kAllColumns.first, nullptr);
    EXPECT_EQ(kAllColumns.count, 0);
}

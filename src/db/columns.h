// SPDX-License-Identifier: Apache-2.0
// Column names in one table of pointers; a list is its first name and its length.
#pragma once

#include <array>
#include <cstdint>

namespace pwrmgt::db {

// clang-format off
inline constexpr std::array kColumnNames{
    /*   0 */ "Timestamp", "SysAvgDc", "SysMaxDc", "SysMinDc", "SysAvgAc", "SysMaxAc", "SysMinAc",
    /*   7 */ "Timestamp", "CpuAvgPwr", "CpuMaxPwr", "CpuMinPwr",
    /*  11 */ "Timestamp", "MemAvgPwr", "MemMaxPwr", "MemMinPwr",
    /*  15 */ "Timestamp", "Ps1AvgAc", "Ps1AvgDc",
    /*  18 */ "Timestamp", "Ps2AvgAc", "Ps2AvgDc",
    /*  21 */ "Timestamp", "Ps3AvgAc", "Ps3AvgDc",
    /*  24 */ "Timestamp", "Ps4AvgAc", "Ps4AvgDc",
    /*  27 */ "Timestamp", "Ps5AvgAc", "Ps5AvgDc",
    /*  30 */ "Timestamp", "Ps6AvgAc", "Ps6AvgDc",
    /*  33 */ "Timestamp", "Ps7AvgAc", "Ps7AvgDc",
    /*  36 */ "Timestamp", "Ps8AvgAc", "Ps8AvgDc",
    /*  39 */ "Timestamp", "Ps9AvgAc", "Ps9AvgDc",
    /*  42 */ "Timestamp", "Ps10AvgAc", "Ps10AvgDc",
    /*  45 */ "Timestamp", "Ps11AvgAc", "Ps11AvgDc",
    /*  48 */ "Timestamp", "Ps12AvgAc", "Ps12AvgDc",
    /*  51 */ "Timestamp", "SysAvgPtg", "SysMaxPtg", "SysMinPtg", "CpuAvgPtg", "MemAvgPtg", "IOAvgPtg",
    /*  58 */ "IsBlade", "RedunMode", "MaximStatus", "CapEnable", "CapMode", "CapValue", "CapSoftAc",
              "CapMinAc", "CapMaxAc", "CapSoftDc", "CapMinDc", "CapMaxDc", "UnstressAdapterPwr",
              "UnstressFanPwr", "UnstressHddPwr",
    /*  73 */ "Timestamp", "Cpu1AvgPwr", "Cpu2AvgPwr", "Cpu3AvgPwr", "Cpu4AvgPwr", "Cpu5AvgPwr",
              "Cpu6AvgPwr", "Cpu7AvgPwr", "Cpu8AvgPwr",
    /*  82 */ "IsBlade", "RedunMode", "MaximStatus", "CapEnable", "CapMode", "CapValue", "CapSoftAc",
              "CapMinAc", "CapMaxAc", "CapSoftDc", "CapMinDc", "CapMaxDc", "UnstressAdapterPwr",
              "UnstressHddPwr",
    /*  96 */ "PsuId", "Present", "InputAcLost", "PsuFault", "InputVoltage", "InputLablePower",
              "OutputLablePower",
    /* 103 */ "CapSoftAc", "CapMinAc", "CapMaxAc", "CapSoftDc", "CapMinDc", "CapMaxDc",
              "UnstressAdapterPwr", "UnstressHddPwr",
};
// clang-format on

struct Columns {
    const char* const* first;
    int count;

    constexpr const char* operator[](int at) const { return first[at]; }
    constexpr const char* const* begin() const { return first; }
    constexpr const char* const* end() const { return first + count; }

    // A history list without its leading Timestamp: the columns that a writer puts.
    constexpr Columns values() const { return {first + 1, count - 1}; }
};

constexpr Columns column_list(uint32_t first, int count) {
    return {kColumnNames.data() + first, count};
}

inline constexpr Columns kAllColumns{nullptr, 0};
inline constexpr Columns kSystemColumns = column_list(0, 7);
inline constexpr Columns kCpuColumns = column_list(7, 4);
inline constexpr Columns kMemoryColumns = column_list(11, 4);
inline constexpr Columns kPercentColumns = column_list(51, 7);
inline constexpr Columns kPolicyColumns = column_list(58, 15);
inline constexpr Columns kMaximStatusColumn = column_list(60, 1);
inline constexpr Columns kUnstressAdapterColumn = column_list(70, 1);
inline constexpr Columns kUnstressHddColumn = column_list(72, 1);
inline constexpr Columns kEachCpuColumns = column_list(73, 9);
inline constexpr Columns kPolicyLimitColumns = column_list(82, 14);
inline constexpr Columns kPsuColumns = column_list(96, 7);
inline constexpr Columns kCappingRangeColumns = column_list(103, 8);

// `psu` is a bay, 1 to 12.
constexpr Columns psu_columns(uint32_t psu) {
    return column_list(15 + 3 * (psu - 1), 3);
}

inline constexpr const char* kId = "_id";
inline constexpr const char* kTimestamp = "Timestamp";

}  // namespace pwrmgt::db

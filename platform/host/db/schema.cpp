// SPDX-License-Identifier: Apache-2.0
// The catalogue of tables. Column order is behaviour: callers read `*` by place, and rows are
// copied between the two tables of a pair by place.
#include "schema.h"

#include <algorithm>
#include <array>

namespace pwrmgt::vekdb {

namespace {

// clang-format off
constexpr std::string_view kHistColumns =
    "_id,Timestamp,SysAvgDc,SysMaxDc,SysMinDc,SysAvgAc,SysMaxAc,SysMinAc,"
    "CpuAvgPwr,CpuMaxPwr,CpuMinPwr,MemAvgPwr,MemMaxPwr,MemMinPwr,"
    "Ps1AvgAc,Ps1AvgDc,Ps2AvgAc,Ps2AvgDc,Ps3AvgAc,Ps3AvgDc,Ps4AvgAc,Ps4AvgDc,"
    "SysAvgPtg,SysMaxPtg,SysMinPtg,CpuAvgPtg,MemAvgPtg,IOAvgPtg";
constexpr std::string_view kExtraColumns =
    "_id,Timestamp,Ps5AvgAc,Ps5AvgDc,Ps6AvgAc,Ps6AvgDc,Ps7AvgAc,Ps7AvgDc,Ps8AvgAc,Ps8AvgDc,"
    "Ps9AvgAc,Ps9AvgDc,Ps10AvgAc,Ps10AvgDc,Ps11AvgAc,Ps11AvgDc,Ps12AvgAc,Ps12AvgDc";
constexpr std::string_view kThermalColumns = "Timestamp,Type,InstNum,Value";
// The working tables lie in the order of time, as they are read; the persistent ones in the order of slots, as they are
// saved (a tenth of the bytes).
constexpr std::string_view kByTime = "Timestamp,_id";
constexpr std::string_view kBySlot = "_id,Timestamp";
constexpr TableIndex kSlot{"Slot", "_id"};
constexpr TableIndex kTime{"Time", "Timestamp"};
constexpr TableIndex kSensor{"Sensor", "Type,InstNum,Timestamp"};
constexpr TableIndex kNone{};

constexpr std::array<TableShape, 11> kTables{{
    {"HistPowers24HrMem", Store::memory, kHistColumns, kByTime, {kSlot, kNone}},
    {"HistPowers24Hr", Store::persistent, kHistColumns, kBySlot, {}},
    {"HistExtraPowers24HrMem", Store::memory, kExtraColumns, kByTime, {kSlot, kNone}},
    {"HistExtraPowers24Hr", Store::persistent, kExtraColumns, kBySlot, {}},
    {"HistCpuPowersMem", Store::memory,
     "_id,Timestamp,Cpu1AvgPwr,Cpu2AvgPwr,Cpu3AvgPwr,Cpu4AvgPwr,Cpu5AvgPwr,Cpu6AvgPwr,Cpu7AvgPwr,Cpu8AvgPwr",
     kByTime, {}},
    {"RealTimePowersMem", Store::memory,
     "_id,Timestamp,SysPwrAc,SysPwrDc,CpuPwrDc,MemPwrDc,SysPctg,CpuPctg,MemPctg,IOPctg", "", {}},
    {"PowerPolicy", Store::persistent,
     "_id,IsBlade,RedunMode,MaximStatus,CapEnable,CapMode,CapValue,CapSoftAc,CapMinAc,CapMaxAc,"
     "CapSoftDc,CapMinDc,CapMaxDc,UnstressAdapterPwr,UnstressFanPwr,UnstressHddPwr", "", {}},
    {"PsuPropertyMem", Store::memory,
     "PsuId,Present,InputAcLost,PsuFault,InputVoltage,InputLablePower,OutputLablePower", "", {}},
    {"HistThermal24HrMem", Store::memory, kThermalColumns, "", {kSensor, kTime}},
    {"HistThermal24Hr", Store::persistent, kThermalColumns, "", {kTime, kNone}},
    {"RealTimeThermalMem", Store::memory, kThermalColumns, "", {}},
}};

constexpr std::array<std::string_view, 85> kColumns{
    "CapEnable", "CapMaxAc", "CapMaxDc", "CapMinAc", "CapMinDc", "CapMode", "CapSoftAc", "CapSoftDc",
    "CapValue", "Cpu1AvgPwr", "Cpu2AvgPwr", "Cpu3AvgPwr", "Cpu4AvgPwr", "Cpu5AvgPwr", "Cpu6AvgPwr",
    "Cpu7AvgPwr", "Cpu8AvgPwr", "CpuAvgPtg", "CpuAvgPwr", "CpuMaxPwr", "CpuMinPwr", "CpuPctg", "CpuPwrDc",
    "IOAvgPtg", "IOPctg", "InputAcLost", "InputLablePower", "InputVoltage", "InstNum", "IsBlade", "MaximStatus",
    "MemAvgPtg", "MemAvgPwr", "MemMaxPwr", "MemMinPwr", "MemPctg", "MemPwrDc", "OutputLablePower", "Present",
    "Ps10AvgAc", "Ps10AvgDc", "Ps11AvgAc", "Ps11AvgDc", "Ps12AvgAc", "Ps12AvgDc", "Ps1AvgAc", "Ps1AvgDc",
    "Ps2AvgAc", "Ps2AvgDc", "Ps3AvgAc", "Ps3AvgDc", "Ps4AvgAc", "Ps4AvgDc", "Ps5AvgAc", "Ps5AvgDc", "Ps6AvgAc",
    "Ps6AvgDc", "Ps7AvgAc", "Ps7AvgDc", "Ps8AvgAc", "Ps8AvgDc", "Ps9AvgAc", "Ps9AvgDc", "PsuFault", "PsuId",
    "RedunMode", "SysAvgAc", "SysAvgDc", "SysAvgPtg", "SysMaxAc", "SysMaxDc", "SysMaxPtg", "SysMinAc",
    "SysMinDc", "SysMinPtg", "SysPctg", "SysPwrAc", "SysPwrDc", "Timestamp", "Type", "UnstressAdapterPwr",
    "UnstressFanPwr", "UnstressHddPwr", "Value", "_id",
};
// clang-format on

// Where a column's name is looked for: a table of its numbers, in the order in which their hashes
// fell into place.
constexpr std::size_t kPlaces = 256;
constexpr std::uint8_t kNobody = 255;
static_assert(kColumns.size() < kPlaces / 2);

constexpr std::size_t first_place(std::string_view name) {
    std::size_t hash = name.size();
    for (const char c : name) {
        hash = hash * 33 + static_cast<unsigned char>(c);
    }
    return hash % kPlaces;
}

constexpr auto kNumbers = [] {
    std::array<std::uint8_t, kPlaces> numbers{};
    numbers.fill(kNobody);
    for (std::size_t number = 0; number < kColumns.size(); ++number) {
        std::size_t place = first_place(kColumns[number]);
        while (numbers[place] != kNobody) {
            place = (place + 1) % kPlaces;
        }
        numbers[place] = static_cast<std::uint8_t>(number);
    }
    return numbers;
}();

}  // namespace

std::span<const TableShape> tables() noexcept {
    return kTables;
}

const TableShape* find_table(std::string_view name) noexcept {
    const auto* found =
        std::find_if(kTables.begin(), kTables.end(),
                     [name](const TableShape& table) { return name == table.name; });
    return found == kTables.end() ? nullptr : found;
}

const char* known_table(std::string_view name) noexcept {
    const TableShape* found = find_table(name);
    return found == nullptr ? nullptr : found->name;
}

std::string typed_columns(std::string_view names, std::string_view type) {
    std::string text;
    while (!names.empty()) {
        const std::size_t end = std::min(names.find(','), names.size());
        if (!text.empty()) text += ',';
        text.append(names.substr(0, end)).append(" ").append(type);
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return text;
}

std::optional<std::uint16_t> column_number(std::string_view name) noexcept {
    for (std::size_t place = first_place(name); kNumbers[place] != kNobody;) {
        if (kColumns[kNumbers[place]] == name) return kNumbers[place];
        place = (place + 1) % kPlaces;
    }
    return std::nullopt;
}

std::string_view column_name(std::uint16_t number) noexcept {
    return kColumns[number];
}

}  // namespace pwrmgt::vekdb

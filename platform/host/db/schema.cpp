// SPDX-License-Identifier: Apache-2.0
// The catalogue of tables. Column order is behaviour: callers read `*` by place, and rows are
// copied between the two tables of a pair by place.
#include "schema.h"

#include <algorithm>
#include <array>

namespace pwrmgt::vekdb {

namespace {

// clang-format off
#define VEKDB_HIST_COLUMNS \
    "_id INTEGER, Timestamp INTEGER," \
    "SysAvgDc INTEGER, SysMaxDc INTEGER, SysMinDc INTEGER, SysAvgAc INTEGER, SysMaxAc INTEGER, SysMinAc INTEGER," \
    "CpuAvgPwr INTEGER, CpuMaxPwr INTEGER, CpuMinPwr INTEGER, MemAvgPwr INTEGER, MemMaxPwr INTEGER, MemMinPwr INTEGER," \
    "Ps1AvgAc INTEGER, Ps1AvgDc INTEGER, Ps2AvgAc INTEGER, Ps2AvgDc INTEGER," \
    "Ps3AvgAc INTEGER, Ps3AvgDc INTEGER, Ps4AvgAc INTEGER, Ps4AvgDc INTEGER," \
    "SysAvgPtg INTEGER, SysMaxPtg INTEGER, SysMinPtg INTEGER, CpuAvgPtg INTEGER, MemAvgPtg INTEGER, IOAvgPtg INTEGER,"
#define VEKDB_EXTRA_COLUMNS \
    "_id INTEGER, Timestamp INTEGER," \
    "Ps5AvgAc INTEGER, Ps5AvgDc INTEGER, Ps6AvgAc INTEGER, Ps6AvgDc INTEGER," \
    "Ps7AvgAc INTEGER, Ps7AvgDc INTEGER, Ps8AvgAc INTEGER, Ps8AvgDc INTEGER," \
    "Ps9AvgAc INTEGER, Ps9AvgDc INTEGER, Ps10AvgAc INTEGER, Ps10AvgDc INTEGER," \
    "Ps11AvgAc INTEGER, Ps11AvgDc INTEGER, Ps12AvgAc INTEGER, Ps12AvgDc INTEGER,"
#define VEKDB_THERMAL_COLUMNS "Timestamp INTEGER, Type INTEGER, InstNum INTEGER, Value INTEGER"
// A row equal in slot and time replaces the stored one. The working tables lie in the order of time, as
// they are read; the persistent ones in the order of slots, as they are saved (a tenth of the bytes).
#define VEKDB_BY_TIME "PRIMARY KEY (Timestamp, _id) ON CONFLICT REPLACE) WITHOUT ROWID;"
#define VEKDB_BY_SLOT "PRIMARY KEY (_id, Timestamp) ON CONFLICT REPLACE) WITHOUT ROWID;"

constexpr const char* kMemorySchema =
    "CREATE TABLE HistPowers24HrMem (" VEKDB_HIST_COLUMNS VEKDB_BY_TIME
    "CREATE INDEX HistPowers24HrMemSlot ON HistPowers24HrMem (_id);"
    "CREATE TABLE HistExtraPowers24HrMem (" VEKDB_EXTRA_COLUMNS VEKDB_BY_TIME
    "CREATE INDEX HistExtraPowers24HrMemSlot ON HistExtraPowers24HrMem (_id);"
    "CREATE TABLE HistCpuPowersMem (_id INTEGER, Timestamp INTEGER,"
    "Cpu1AvgPwr INTEGER, Cpu2AvgPwr INTEGER, Cpu3AvgPwr INTEGER, Cpu4AvgPwr INTEGER,"
    "Cpu5AvgPwr INTEGER, Cpu6AvgPwr INTEGER, Cpu7AvgPwr INTEGER, Cpu8AvgPwr INTEGER," VEKDB_BY_TIME
    "CREATE TABLE RealTimePowersMem (_id INTEGER, Timestamp INTEGER,"
    "SysPwrAc INTEGER, SysPwrDc INTEGER, CpuPwrDc INTEGER, MemPwrDc INTEGER,"
    "SysPctg INTEGER, CpuPctg INTEGER, MemPctg INTEGER, IOPctg INTEGER);"
    "CREATE TABLE PsuPropertyMem (PsuId INTEGER, Present INTEGER, InputAcLost INTEGER, PsuFault INTEGER,"
    "InputVoltage INTEGER, InputLablePower INTEGER, OutputLablePower INTEGER);"
    // The thermal tables keep equal rows, so they have a row number of their own that `*` does not show.
    "CREATE TABLE HistThermal24HrMem (" VEKDB_THERMAL_COLUMNS ");"
    "CREATE INDEX HistThermal24HrMemSensor ON HistThermal24HrMem (Type, InstNum, Timestamp);"
    "CREATE INDEX HistThermal24HrMemTime ON HistThermal24HrMem (Timestamp);"
    "CREATE TABLE RealTimeThermalMem (" VEKDB_THERMAL_COLUMNS ");";

constexpr const char* kPersistentSchema =
    "CREATE TABLE HistPowers24Hr (" VEKDB_HIST_COLUMNS VEKDB_BY_SLOT
    "CREATE TABLE HistExtraPowers24Hr (" VEKDB_EXTRA_COLUMNS VEKDB_BY_SLOT
    "CREATE TABLE PowerPolicy (_id INTEGER, IsBlade INTEGER, RedunMode INTEGER, MaximStatus INTEGER,"
    "CapEnable INTEGER, CapMode INTEGER, CapValue INTEGER,"
    "CapSoftAc INTEGER, CapMinAc INTEGER, CapMaxAc INTEGER, CapSoftDc INTEGER, CapMinDc INTEGER, CapMaxDc INTEGER,"
    "UnstressAdapterPwr INTEGER, UnstressFanPwr INTEGER, UnstressHddPwr INTEGER);"
    "CREATE TABLE HistThermal24Hr (" VEKDB_THERMAL_COLUMNS ");"
    "CREATE INDEX HistThermal24HrTime ON HistThermal24Hr (Timestamp);";

#undef VEKDB_BY_SLOT
#undef VEKDB_BY_TIME
#undef VEKDB_THERMAL_COLUMNS
#undef VEKDB_EXTRA_COLUMNS
#undef VEKDB_HIST_COLUMNS

constexpr std::array<const char*, 11> kTables{
    "HistPowers24HrMem", "HistPowers24Hr", "HistExtraPowers24HrMem", "HistExtraPowers24Hr", "HistCpuPowersMem",
    "RealTimePowersMem", "PowerPolicy", "PsuPropertyMem", "HistThermal24HrMem", "HistThermal24Hr", "RealTimeThermalMem",
};

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

const char* schema_of(Store store) noexcept {
    return store == Store::memory ? kMemorySchema : kPersistentSchema;
}

const char* known_table(std::string_view name) noexcept {
    const auto* found = std::find(kTables.begin(), kTables.end(), name);
    return found == kTables.end() ? nullptr : *found;
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

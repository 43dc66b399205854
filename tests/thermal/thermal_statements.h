// SPDX-License-Identifier: Apache-2.0
// The twenty statements of a thermal query, in their order.
#pragma once

#include <array>
#include <string>

#include "platform_test.h"

namespace pwrmgt::test {

// With 16 memory modules per socket.
inline constexpr std::array<const char*, 20> kSensorFilters{
    "Type=1 and InstNum=1",
    "Type=1 and InstNum=2",
    "Type=4 and InstNum=1",
    "Type=4 and InstNum=2",
    "Type=2 and InstNum=1",
    "Type=2 and InstNum=2",
    "Type=2 and InstNum=3",
    "Type=2 and InstNum=4",
    "Type=2 and InstNum=5",
    "Type=2 and InstNum=6",
    "Type=2 and InstNum=7",
    "Type=2 and InstNum=8",
    "Type=3 and InstNum>=1 and InstNum<=16",
    "Type=3 and InstNum>=17 and InstNum<=32",
    "Type=3 and InstNum>=33 and InstNum<=48",
    "Type=3 and InstNum>=49 and InstNum<=64",
    "Type=3 and InstNum>=65 and InstNum<=80",
    "Type=3 and InstNum>=81 and InstNum<=96",
    "Type=3 and InstNum>=97 and InstNum<=112",
    "Type=3 and InstNum>=113 and InstNum<=128",
};

// `span` is the filter's end, from "Timestamp>=" on.
inline std::string select_of(const std::string& sensor, const std::string& span) {
    return "raw select * from HistThermal24HrMem where " + sensor + " and " + span +
           " order by Timestamp ASC";
}

// Every call of a query that finds no row.
inline Calls calls_without_rows(const std::string& span) {
    Calls calls{"open localhost root '' vek_pwr_db 0", "time",
                "byte /dc/tavn/dm/planar/dimm_per_socket"};
    for (const char* const sensor : kSensorFilters) {
        calls.insert(calls.end(), {select_of(sensor, span), "row_count", "free_result"});
    }
    calls.push_back("close");
    return calls;
}

}  // namespace pwrmgt::test

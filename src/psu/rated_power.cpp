// SPDX-License-Identifier: Apache-2.0
// Reads the rated-power file: one number per line, the last one counts.
#include "psu/rated_power.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

namespace pwrmgt::psu {

namespace {

// 32 bits on every machine: a minus sign wraps, a magnitude above 32 bits is out of range.
uint32_t to_watts(const std::string& line) {
    const uint64_t value = std::stoull(line);
    const bool negative = line.find('-') < line.find_first_of("0123456789");
    const uint64_t magnitude = negative ? 0 - value : value;
    if (magnitude > UINT32_MAX) throw std::out_of_range{line};
    return static_cast<uint32_t>(value);
}

uint32_t complain(const char* what, const std::string& line) {
    std::fprintf(stderr, "%s%s\n", what, line.c_str());
    return 0;
}

}  // namespace

uint32_t read_rated_power_file(const char* path) {
    std::ifstream file{path};
    if (!file.is_open()) return complain("can not open file: ", path);
    uint32_t watts = 0;
    std::string line;
    while (std::getline(file, line)) {
        try {
            watts = to_watts(line);
        } catch (const std::invalid_argument&) {
            return complain("invalid input: ", line);
        } catch (const std::out_of_range&) {
            return complain("out of range: ", line);
        }
    }
    return watts;
}

}  // namespace pwrmgt::psu

// SPDX-License-Identifier: Apache-2.0
// Reads the rated-power file: one number per line, the last one counts.
#include "psu/rated_power.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace pwrmgt::psu {

namespace {

// The C library's own reader of lines makes room for one of any length.
class Lines {
public:
    explicit Lines(const char* path) : file_{std::fopen(path, "re")} {}
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;
    ~Lines() {
        if (file_ != nullptr) std::fclose(file_);
        std::free(line_);
    }

    bool open() const { return file_ != nullptr; }

    // Without its newline; null after the last one.
    const char* next() {
        const auto length = getline(&line_, &room_, file_);
        if (length < 0) return nullptr;
        if (line_[length - 1] == '\n') line_[length - 1] = '\0';
        return line_;
    }

private:
    std::FILE* file_;
    char* line_ = nullptr;
    size_t room_ = 0;
};

enum class Number { read, missing, too_big };

// 32 bits on every machine: a minus sign wraps, a magnitude above 32 bits is too big.
Number to_watts(const char* line, uint32_t& watts) {
    char* end = nullptr;
    errno = 0;
    const uint64_t value = std::strtoull(line, &end, 10);
    if (end == line) return Number::missing;
    const bool negative = line[std::strcspn(line, "-0123456789")] == '-';
    const uint64_t magnitude = negative ? 0 - value : value;
    if (errno == ERANGE || magnitude > UINT32_MAX) return Number::too_big;
    watts = static_cast<uint32_t>(value);
    return Number::read;
}

uint32_t complain(const char* what, const char* line) {
    std::fprintf(stderr, "%s%s\n", what, line);
    return 0;
}

}  // namespace

uint32_t read_rated_power_file(const char* path) {
    Lines lines{path};
    if (!lines.open()) return complain("can not open file: ", path);
    uint32_t watts = 0;
    while (const char* line = lines.next()) {
        const Number number = to_watts(line, watts);
        if (number == Number::missing) return complain("invalid input: ", line);
        if (number == Number::too_big) return complain("out of range: ", line);
    }
    return watts;
}

}  // namespace pwrmgt::psu

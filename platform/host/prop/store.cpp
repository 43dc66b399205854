// SPDX-License-Identifier: Apache-2.0
#include "store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <system_error>
#include <utility>

#include "vekdb_prop.h"

namespace pwrmgt::prop {
namespace {

constexpr const char* kDefaultPath = "/etc/vekdb/properties.conf";
constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// A regular file, open for reading; anything else that the path names counts as no file.
class File {
public:
    // Without O_NONBLOCK a FIFO in the file's place would hold the caller until somebody writes.
    explicit File(const char* path)
        : fd_(open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
        struct stat status {};
        regular_ = fd_ >= 0 && fstat(fd_, &status) == 0 && S_ISREG(status.st_mode);
    }
    ~File() {
        if (fd_ >= 0) close(fd_);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool readable() const { return regular_; }

    // Bytes read, 0 at the end, negative for a failure.
    ssize_t read_some(std::array<char, 4096>& chunk) const {
        ssize_t got = 0;
        do {
            got = read(fd_, chunk.data(), chunk.size());
        } while (got < 0 && errno == EINTR);
        return got;
    }

private:
    int fd_;
    bool regular_ = false;
};

Lookup to_number(std::string_view text, std::uint32_t max, std::uint32_t& value) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint32_t read = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read, base);
    if (error == std::errc::invalid_argument || end != text.data() + text.size()) {
        return Lookup::not_a_number;
    }
    if (error == std::errc::result_out_of_range || read > max) return Lookup::too_wide;
    value = read;
    return Lookup::found;
}

// Searches for a key in a text that comes in pieces, a line at a time, in a fixed space.
class Search {
public:
    Search(std::string_view key, std::uint32_t max) : key_(key), max_(max) {}

    void feed(std::string_view piece) {
        for (const char c : piece) {
            if (c == '\n') {
                end_line();
            } else if (length_ < line_.size()) {
                line_[length_++] = c;
            } else {
                overlong_ = true;
            }
        }
    }

    Lookup finish(std::uint32_t& value) {
        end_line();
        if (last_ == Lookup::found) value = value_;
        return last_;
    }

private:
    void end_line() {
        std::string_view line(line_.data(), length_);
        length_ = 0;
        if (std::exchange(overlong_, false)) return;
        line = line.substr(0, line.find('#'));
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos || trimmed(line.substr(0, equals)) != key_) return;
        last_ = to_number(trimmed(line.substr(equals + 1)), max_, value_);
    }

    std::string_view key_;
    std::uint32_t max_;
    std::array<char, kMaxLineBytes> line_{};
    std::size_t length_ = 0;
    bool overlong_ = false;
    Lookup last_ = Lookup::no_key;
    std::uint32_t value_ = 0;
};

template <class Number>
int get(const char* key, Number* out) {
    if (key == nullptr || out == nullptr) return static_cast<int>(Lookup::null_argument);
    std::uint32_t value = 0;
    const Lookup result = look_up(file_path(), key, std::numeric_limits<Number>::max(), value);
    if (result == Lookup::found) *out = static_cast<Number>(value);
    return static_cast<int>(result);
}

}  // namespace

const char* file_path() {
    const char* chosen = secure_getenv("VEKDB_PROPS");
    return chosen != nullptr && *chosen != '\0' ? chosen : kDefaultPath;
}

Lookup look_up(const char* path, std::string_view key, std::uint32_t max, std::uint32_t& value) {
    const File file(path);
    if (!file.readable()) return Lookup::no_file;
    if (key.empty()) return Lookup::no_key;

    Search search(key, max);
    std::array<char, 4096> chunk;
    std::size_t total = 0;
    for (;;) {
        const ssize_t got = file.read_some(chunk);
        if (got == 0) return search.finish(value);
        if (got < 0) return Lookup::no_file;
        total += static_cast<std::size_t>(got);
        if (total > kMaxFileBytes) return Lookup::no_file;
        search.feed({chunk.data(), static_cast<std::size_t>(got)});
    }
}

}  // namespace pwrmgt::prop

extern "C" {

[[gnu::visibility("default")]] int propdb_get_byte(const char* path, uint8_t* out) {
    return pwrmgt::prop::get(path, out);
}

[[gnu::visibility("default")]] int propdb_get_word(const char* path, uint16_t* out) {
    return pwrmgt::prop::get(path, out);
}

[[gnu::visibility("default")]] int propdb_get_dword(const char* path, uint32_t* out) {
    return pwrmgt::prop::get(path, out);
}

}  // extern "C"

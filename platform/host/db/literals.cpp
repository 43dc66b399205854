// SPDX-License-Identifier: Apache-2.0
// A scan over the tokens of a statement. It only has to know enough of the language to tell an
// integer from everything that merely contains digits.
#include "literals.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace pwrmgt::vekdb {

namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Bytes above ASCII are part of a name, as they are to the engine.
bool in_name(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || is_digit(c) || c == '_' ||
           c == '$' || static_cast<unsigned char>(c) >= 0x80;
}

std::string lower(std::string_view text) {
    std::string out{text};
    std::transform(out.begin(), out.end(), out.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return out;
}

std::size_t name_end(std::string_view sql, std::size_t at) {
    while (at < sql.size() && in_name(sql[at]))
        ++at;
    return at;
}

// A text, a quoted name or a comment that starts at `at` ends here; `at` itself when none starts.
std::size_t opaque_end(std::string_view sql, std::size_t at) {
    const auto behind = [&](std::string_view end, std::size_t from) {
        const std::size_t found = sql.find(end, from);
        return found == std::string_view::npos ? sql.size() : found + end.size();
    };
    const char c = sql[at];
    if (c == '\'' || c == '"' || c == '`') return behind(std::string_view{&sql[at], 1}, at + 1);
    if (c == '[') return behind("]", at + 1);
    if (sql.substr(at, 2) == "--") return behind("\n", at + 2);
    if (sql.substr(at, 2) == "/*") return behind("*/", at + 2);
    return at;
}

// A number that starts at `at`: its end, and whether it is a plain decimal integer.
std::size_t number_end(std::string_view sql, std::size_t at, bool& plain) {
    std::size_t end = at;
    while (end < sql.size() && is_digit(sql[end]))
        ++end;
    plain = end == sql.size() || (sql[end] != '.' && !in_name(sql[end]));
    while (end < sql.size() && (in_name(sql[end]) || sql[end] == '.'))
        ++end;
    return end;
}

class Scan {
public:
    explicit Scan(std::string_view sql) : sql_{sql} { out_.text.reserve(sql.size()); }

    // False when the text brings parameters of its own.
    bool run() {
        while (at_ < sql_.size()) {
            const char c = sql_[at_];
            if (c == '?' || c == ':' || c == '@' || c == '$') return false;
            if (is_digit(c) || (c == '.' && at_ + 1 < sql_.size() && is_digit(sql_[at_ + 1]))) {
                number();
            } else if (in_name(c)) {
                name();
            } else {
                copy_to(std::max(at_ + 1, opaque_end(sql_, at_)));
            }
        }
        return true;
    }

    Template take() { return std::move(out_); }

private:
    void copy_to(std::size_t end) {
        out_.text.append(sql_.substr(at_, end - at_));
        at_ = end;
    }

    void name() {
        const std::size_t end = name_end(sql_, at_);
        const std::size_t length = end - at_;
        if (length == 2 || length == 5) {
            const std::string word = lower(sql_.substr(at_, length));
            if (word == "by") ordinals_ = true;
            if (word == "limit") ordinals_ = false;
        }
        copy_to(end);
    }

    void number() {
        bool plain = false;
        const std::size_t end = number_end(sql_, at_, plain);
        std::int64_t value = 0;
        const auto [stop, error] = std::from_chars(sql_.data() + at_, sql_.data() + end, value);
        if (!plain || ordinals_ || error != std::errc{} || stop != sql_.data() + end) {
            return copy_to(end);
        }
        out_.text += '?';
        out_.values.push_back(value);
        at_ = end;
    }

    std::string_view sql_;
    std::size_t at_ = 0;
    bool ordinals_ = false;
    Template out_;
};

}  // namespace

std::string first_word(std::string_view sql) {
    std::size_t at = 0;
    while (at < sql.size() && (sql[at] == ' ' || (sql[at] >= '\t' && sql[at] <= '\r')))
        ++at;
    return lower(sql.substr(at, name_end(sql, at) - at));
}

Template take_literals(std::string_view sql) {
    constexpr std::array<std::string_view, 5> kSharable{"select", "insert", "update", "delete",
                                                        "replace"};
    if (std::find(kSharable.begin(), kSharable.end(), first_word(sql)) != kSharable.end()) {
        Scan scan{sql};
        if (scan.run()) return scan.take();
    }
    return {std::string{sql}, {}};
}

}  // namespace pwrmgt::vekdb

// SPDX-License-Identifier: Apache-2.0
// A scan over the tokens of a statement. It only has to know enough of the language to tell an
// integer from everything that merely contains digits.
#include "literals.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace pwrmgt::vekdb {

namespace {

// What a character can begin. Bytes above ASCII are part of a name, as they are to the engine.
enum class Sort : std::uint8_t { plain, letter, digit, dot, opaque, parameter };

constexpr std::size_t index_of(char c) {
    return static_cast<unsigned char>(c);
}

constexpr auto kSorts = [] {
    std::array<Sort, 256> sorts{};
    for (std::size_t c = 0; c < sorts.size(); ++c) {
        const bool small = c >= 'a' && c <= 'z';
        const bool big = c >= 'A' && c <= 'Z';
        if (small || big || c == '_' || c >= 0x80) sorts[c] = Sort::letter;
        if (c >= '0' && c <= '9') sorts[c] = Sort::digit;
    }
    for (const char c : std::string_view{"'\"`[-/"}) {
        sorts[index_of(c)] = Sort::opaque;
    }
    for (const char c : std::string_view{"?:@$"}) {
        sorts[index_of(c)] = Sort::parameter;
    }
    sorts['.'] = Sort::dot;
    return sorts;
}();

Sort sort_of(char c) {
    return kSorts[index_of(c)];
}

bool is_digit(char c) {
    return sort_of(c) == Sort::digit;
}

bool in_name(char c) {
    return sort_of(c) == Sort::letter || is_digit(c) || c == '$';
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

// A text, a quoted name or a comment that starts at `at` ends here; the next character when none
// starts.
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
    return at + 1;
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
    Scan(std::string_view sql, std::size_t start) : sql_{sql}, at_{start} {}

    // False when the text brings parameters of its own.
    bool run() {
        while (at_ < sql_.size()) {
            switch (sort_of(sql_[at_])) {
                case Sort::parameter:
                    return false;
                case Sort::letter:
                    name();
                    break;
                case Sort::digit:
                    number();
                    break;
                case Sort::dot:
                    at_ + 1 < sql_.size() && is_digit(sql_[at_ + 1]) ? number() : skip_to(at_ + 1);
                    break;
                case Sort::opaque:
                    skip_to(opaque_end(sql_, at_));
                    break;
                case Sort::plain:
                    skip_to(at_ + 1);
            }
        }
        copy_up_to(at_);
        return true;
    }

    Template take() { return std::move(out_); }

private:
    void skip_to(std::size_t end) { at_ = end; }

    void copy_up_to(std::size_t end) {
        out_.text.append(sql_.substr(copied_, end - copied_));
        copied_ = end;
    }

    void name() {
        const std::size_t end = name_end(sql_, at_);
        const std::size_t length = end - at_;
        if (length == 2 || length == 5) {
            const std::string word = lower(sql_.substr(at_, length));
            if (word == "by") ordinals_ = true;
            if (word == "limit") ordinals_ = false;
        }
        skip_to(end);
    }

    void number() {
        bool plain = false;
        const std::size_t end = number_end(sql_, at_, plain);
        std::int64_t value = 0;
        const auto [stop, error] = std::from_chars(sql_.data() + at_, sql_.data() + end, value);
        if (plain && !ordinals_ && error == std::errc{} && stop == sql_.data() + end) {
            copy_up_to(at_);
            out_.text += '?';
            out_.values.push_back(value);
            copied_ = end;
        }
        skip_to(end);
    }

    std::string_view sql_;
    std::size_t at_;
    std::size_t copied_ = 0;  // up to here the text is taken over
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
        return take_literals_from(sql, 0);
    }
    return {std::string{sql}, {}};
}

Template take_literals_from(std::string_view sql, std::size_t start) {
    Scan scan{sql, start};
    if (scan.run()) return scan.take();
    return {std::string{sql}, {}};
}

}  // namespace pwrmgt::vekdb

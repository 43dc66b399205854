// SPDX-License-Identifier: Apache-2.0
// Fixed-size formatted text for filters, orders and statements; longer text is cut.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace pwrmgt::db {

template <size_t N>
class Text {
public:
    [[gnu::format(printf, 2, 3)]] explicit Text(const char* format, ...) {
        va_list values;
        va_start(values, format);
        std::vsnprintf(text_, N, format, values);
        va_end(values);
    }

    const char* c_str() const { return text_; }
    uint32_t length() const { return static_cast<uint32_t>(std::strlen(text_)); }

private:
    char text_[N];
};

using Order = Text<32>;
using Filter = Text<256>;
using RowFilter = Text<32>;
using Statement = Text<256>;

}  // namespace pwrmgt::db

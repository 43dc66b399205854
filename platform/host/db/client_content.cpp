// SPDX-License-Identifier: Apache-2.0
// Contents: making, filling and handing them back.
#include <memory>

#include "content.h"
#include "fork_gate.h"
#include "guarded.h"
#include "handles.h"
#include "vekdb_client.h"

namespace pwrmgt::vekdb {

namespace {

// A signed value is stored with its sign, an unsigned one without.
template <class Int>
int put(std::uint32_t content, const char* column, Int value) noexcept {
    return guarded([&] {
        auto* pairs = static_cast<Content*>(content_handles.find(content));
        if (pairs == nullptr || column == nullptr) return Outcome::bad_argument;
        return pairs->put(column, value) ? Outcome::ok : Outcome::bad_argument;
    });
}

}  // namespace

// The list of exports can only pick from what is not hidden.
#pragma GCC visibility push(default)
extern "C" {

uint32_t vek_db_get_content_values(void) {
    const Operation operation;
    std::unique_ptr<Content> content{new (std::nothrow) Content};
    if (!content) return 0;
    const std::uint32_t handle = content_handles.add(content.get());
    if (handle != 0) static_cast<void>(content.release());
    return handle;
}

void vek_db_content_clear(uint32_t content) {
    auto* pairs = static_cast<Content*>(content_handles.find(content));
    if (pairs != nullptr) pairs->clear();
}

int vek_db_content_put_uint(uint32_t content, const char* column, uint32_t value) {
    return put(content, column, value);
}

int vek_db_content_put_int(uint32_t content, const char* column, int32_t value) {
    return put(content, column, value);
}

int vek_db_content_put_short_uint(uint32_t content, const char* column, uint16_t value) {
    return put(content, column, value);
}

int vek_db_content_put_short_int(uint32_t content, const char* column, int16_t value) {
    return put(content, column, value);
}

int vek_db_content_put_uchar(uint32_t content, const char* column, uint8_t value) {
    return put(content, column, value);
}

int vek_db_content_put_char(uint32_t content, const char* column, int8_t value) {
    return put(content, column, value);
}

void vek_db_free_content_values(uint32_t content) {
    const Operation operation;
    const std::unique_ptr<Content> pairs{static_cast<Content*>(content_handles.take(content))};
}

}  // extern "C"
#pragma GCC visibility pop

}  // namespace pwrmgt::vekdb

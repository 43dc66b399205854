// SPDX-License-Identifier: Apache-2.0
// The platform functions of the program, each a line or two.
#include "fixed_platform.h"

#include <cstdlib>
#include <cstring>

#include "ipmiraw.h"
#include "platform_id.h"
#include "vekdb_client.h"
#include "vekdb_prop.h"

using pwrmgt::test::fixed_platform;

namespace {

constexpr uint32_t kHandle = 1;

int g_row = -1;

// Where the allocation asked for goes, so that the compiler cannot leave it out.
void* volatile g_kept;

int done() {
    ++fixed_platform().calls;
    return 0;
}

int select(uint32_t* result) {
    g_row = -1;
    if (result != nullptr) *result = kHandle;
    return done();
}

template <class T>
int column(int at, T* out) {
    const uint32_t stamp = fixed_platform().newest - 30 * static_cast<uint32_t>(g_row);
    *out = static_cast<T>(at == 0 ? stamp : 1);
    return done();
}

}  // namespace

namespace pwrmgt::test {

FixedPlatform& fixed_platform() {
    static FixedPlatform platform;
    return platform;
}

}  // namespace pwrmgt::test

extern "C" {

uint32_t vek_db_open(const char*, const char*, const char*, const char*, int) {
    done();
    if (fixed_platform().allocates_on_open) {
        g_kept = strdup("something");
        std::free(g_kept);
    }
    return kHandle;
}
void vek_db_close(uint32_t) {}
int vek_db_query(uint32_t, const char*, const char* const*, int, const char*, int, int, const char*,
                 uint32_t* result) {
    return select(result);
}
int vek_db_raw_query(uint32_t, const char*, uint32_t, uint32_t* result) {
    return select(result);
}
int vek_db_insert(uint32_t, const char*, uint32_t, int, int) {
    return done();
}
int vek_db_update(uint32_t, const char*, uint32_t, const char*, int, int) {
    return done();
}
int vek_db_delete(uint32_t, const char*, const char*) {
    return done();
}
int vek_db_result_step(uint32_t) {
    done();
    return ++g_row < fixed_platform().rows ? 9 : 10;
}
int vek_db_result_row_count(uint32_t) {
    return fixed_platform().rows;
}
int vek_db_result_column_int(uint32_t, int at, int32_t* out) {
    return column(at, out);
}
int vek_db_result_column_uint(uint32_t, int at, uint32_t* out) {
    return column(at, out);
}
int vek_db_result_column_short_int(uint32_t, int at, int16_t* out) {
    return column(at, out);
}
int vek_db_result_column_short_uint(uint32_t, int at, uint16_t* out) {
    return column(at, out);
}
int vek_db_result_column_uchar(uint32_t, int at, uint8_t* out) {
    return column(at, out);
}
void vek_db_free_result(uint32_t) {}
uint32_t vek_db_get_content_values(void) {
    return kHandle;
}
void vek_db_content_clear(uint32_t) {}
int vek_db_content_put_uint(uint32_t, const char*, uint32_t) {
    return done();
}
int vek_db_content_put_int(uint32_t, const char*, int32_t) {
    return done();
}
int vek_db_content_put_short_uint(uint32_t, const char*, uint16_t) {
    return done();
}
int vek_db_content_put_short_int(uint32_t, const char*, int16_t) {
    return done();
}
int vek_db_content_put_uchar(uint32_t, const char*, uint8_t) {
    return done();
}
int vek_db_content_put_char(uint32_t, const char*, int8_t) {
    return done();
}
void vek_db_free_content_values(uint32_t) {}

int propdb_get_byte(const char*, uint8_t* out) {
    *out = 12;
    return done();
}
int propdb_get_word(const char*, uint16_t* out) {
    *out = 12;
    return done();
}
int propdb_get_dword(const char*, uint32_t* out) {
    *out = 12;
    return done();
}

// A completed exchange of the 17 bytes that the live reading takes.
int send_ipmi_cmd(const uint8_t*, uint32_t*, uint8_t* response, uint32_t* response_length) {
    std::memset(response, 0, 17);
    *response_length = 17;
    return done();
}

int is_quoril_platform(void) {
    return 0;
}

}  // extern "C"

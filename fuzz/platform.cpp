// SPDX-License-Identifier: Apache-2.0
#include "platform.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "ipmiraw.h"
#include "platform_id.h"
#include "vekdb_client.h"
#include "vekdb_prop.h"

namespace pwrmgt::fuzz {
namespace {

constexpr std::int64_t kNow = 1'700'000'000;
// Enough for a full ring, and an end for a script that never gives one.
constexpr int kMostRows = 3000;

Script* script = nullptr;
std::array<int, 3> live{};  // connections, results, contents
int rows = 0;

enum Kind : std::size_t { connection, result, content };

std::uint32_t handed_out(Kind kind) {
    ++live[kind];
    return static_cast<std::uint32_t>(kind + 1);
}

void handed_back(Kind kind, std::uint32_t handle) {
    if (handle == 0) return;
    if (handle != kind + 1 || live[kind] == 0) {
        std::fputs("a handle came back that was not out\n", stderr);
        std::abort();
    }
    --live[kind];
}

int outcome() {
    return script->fails() ? 1 + script->u8() % 8 : 0;
}

// Fails without a result, fails with one all the same, succeeds without one, or is as it should be.
int selected(std::uint32_t* out) {
    const std::uint8_t how = script->u8() % 16;
    rows = 0;
    if (out != nullptr && how != 13 && how != 14) *out = handed_out(result);
    return how == 14 || how == 15 ? 3 : 0;
}

// Times mostly go on in steps of a slot, as rows do; other numbers are any.
std::uint32_t cell() {
    const std::uint8_t how = script->u8();
    if (how < 128) {
        const int direction = how % 2 == 0 ? -30 : 30;
        return static_cast<std::uint32_t>(kNow + direction * rows + how / 32);
    }
    return how < 224 ? script->u16() : script->u32();
}

template <class Value>
int read(Value* out) {
    if (script->fails()) return 1;
    *out = static_cast<Value>(cell());
    return 0;
}

template <class Value>
int property(Value* out) {
    if (script->fails()) return 1;
    *out = static_cast<Value>(script->u8() < 200 ? script->u8() % 16 : script->u32());
    return 0;
}

}  // namespace

ScriptedPlatform::ScriptedPlatform(Script& input) {
    script = &input;
    live = {};
}

ScriptedPlatform::~ScriptedPlatform() {
    if (std::any_of(live.begin(), live.end(), [](int count) { return count != 0; })) {
        std::fputs("a handle did not come back\n", stderr);
        std::abort();
    }
    script = nullptr;
}

std::uint32_t open_result() {
    rows = 0;
    return handed_out(result);
}

void quiet() {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
}

}  // namespace pwrmgt::fuzz

using namespace pwrmgt::fuzz;

extern "C" {

std::uint32_t vek_db_open(const char*, const char*, const char*, const char*, int) {
    return script->fails() ? 0 : handed_out(connection);
}
void vek_db_close(std::uint32_t handle) {
    handed_back(connection, handle);
}
int vek_db_query(std::uint32_t, const char*, const char* const*, int, const char*, int, int,
                 const char*, std::uint32_t* out) {
    return selected(out);
}
int vek_db_raw_query(std::uint32_t, const char*, std::uint32_t, std::uint32_t* out) {
    return out != nullptr ? selected(out) : outcome();
}
int vek_db_insert(std::uint32_t, const char*, std::uint32_t, int, int) {
    return outcome();
}
int vek_db_update(std::uint32_t, const char*, std::uint32_t, const char*, int, int) {
    return outcome();
}
int vek_db_delete(std::uint32_t, const char*, const char*) {
    return outcome();
}
int vek_db_result_step(std::uint32_t) {
    if (script->ended() || ++rows > kMostRows) return 10;
    const std::uint8_t step = script->u8();
    if (step < 224) return 9;
    return step < 240 ? 10 : step;
}
int vek_db_result_row_count(std::uint32_t) {
    return script->fails() ? script->i32() % 4096 : script->u8();
}
int vek_db_result_column_int(std::uint32_t, int, std::int32_t* out) {
    return read(out);
}
int vek_db_result_column_uint(std::uint32_t, int, std::uint32_t* out) {
    return read(out);
}
int vek_db_result_column_short_int(std::uint32_t, int, std::int16_t* out) {
    return read(out);
}
int vek_db_result_column_short_uint(std::uint32_t, int, std::uint16_t* out) {
    return read(out);
}
int vek_db_result_column_uchar(std::uint32_t, int, std::uint8_t* out) {
    return read(out);
}
void vek_db_free_result(std::uint32_t handle) {
    handed_back(result, handle);
}

std::uint32_t vek_db_get_content_values(void) {
    return script->fails() ? 0 : handed_out(content);
}
void vek_db_content_clear(std::uint32_t) {}
int vek_db_content_put_uint(std::uint32_t, const char*, std::uint32_t) {
    return outcome();
}
int vek_db_content_put_int(std::uint32_t, const char*, std::int32_t) {
    return outcome();
}
int vek_db_content_put_short_uint(std::uint32_t, const char*, std::uint16_t) {
    return outcome();
}
int vek_db_content_put_short_int(std::uint32_t, const char*, std::int16_t) {
    return outcome();
}
int vek_db_content_put_uchar(std::uint32_t, const char*, std::uint8_t) {
    return outcome();
}
int vek_db_content_put_char(std::uint32_t, const char*, std::int8_t) {
    return outcome();
}
void vek_db_free_content_values(std::uint32_t handle) {
    handed_back(content, handle);
}

int propdb_get_byte(const char*, std::uint8_t* out) {
    return property(out);
}
int propdb_get_word(const char*, std::uint16_t* out) {
    return property(out);
}
int propdb_get_dword(const char*, std::uint32_t* out) {
    return property(out);
}
int is_quoril_platform(void) {
    return script->u8() >= 240 ? 1 : 0;
}

// A length told need not be the one that was written; more than 256 bytes are not.
int send_ipmi_cmd(const std::uint8_t* request, std::uint32_t* request_length,
                  std::uint8_t* response, std::uint32_t* response_length) {
    volatile std::uint8_t seen = 0;
    for (std::uint32_t i = 0; i < *request_length; ++i)
        seen = request[i];
    static_cast<void>(seen);
    if (script->fails()) return script->i32() | 1;
    constexpr std::array<std::uint16_t, 8> kUsual{1, 2, 3, 6, 15, 17, 18, 206};
    const std::uint8_t how = script->u8();
    const std::size_t length = how < 192 ? kUsual[how % kUsual.size()] : script->u16() % 257;
    const auto answer = script->bytes(length);
    std::copy(answer.begin(), answer.end(), response);
    *response_length = how < 248 ? static_cast<std::uint32_t>(length) : script->u32();
    return 0;
}

// What the library's clock and log are here.
long time(long* out) {
    const long now = static_cast<long>(
        script != nullptr && script->u8() >= 250 ? script->i32() : pwrmgt::fuzz::kNow);
    if (out != nullptr) *out = now;
    return now;
}
void syslog(int, const char*, ...) {}
void __syslog_chk(int, int, const char*, ...) {}

}  // extern "C"

// SPDX-License-Identifier: Apache-2.0
// Settings walk: the first block of a file in the firmware's data store, read with two exchanges
// that are traced byte by byte.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>

#include "db/status.h"
#include "ipmiraw.h"
#include "policy/ipmi.h"
#include "vekdb_pwrmgt.h"

#ifndef PWRMGT_IANA_ENTERPRISE
#define PWRMGT_IANA_ENTERPRISE 0
#endif

using namespace pwrmgt::db;
using namespace pwrmgt::policy;

namespace {

constexpr uint32_t kEnterprise = PWRMGT_IANA_ENTERPRISE;
static_assert(kEnterprise <= 0xFFFFFF, "an enterprise number has three bytes in a frame");
constexpr uint8_t kOpen = 0x01;
constexpr uint8_t kRead = 0x02;
constexpr uint16_t kWantedBytes = 200;

// Places in an answer.
constexpr size_t kHandleAt = 4;
constexpr size_t kSizeAt = 4;
constexpr size_t kDataAt = 6;

Request store_request(uint8_t operation) {
    Request request(kGroupNetfn, kStoreCommand);
    request.u8(static_cast<uint8_t>(kEnterprise))
        .u8(static_cast<uint8_t>(kEnterprise >> 8))
        .u8(static_cast<uint8_t>(kEnterprise >> 16))
        .u8(operation);
    return request;
}

void trace_bytes(const char* label, std::span<const uint8_t> bytes) {
    std::printf("%s", label);
    for (const uint8_t byte : bytes) {
        std::printf("%02X ", byte);
    }
}

// Straight into the caller's buffer, which is neither cleared nor bounded here.
int send(const Request& request, uint8_t* buffer, uint32_t& told) {
    uint32_t length = request.length();
    return send_ipmi_cmd(request.data(), &length, buffer, &told);
}

Status open_file(std::span<const uint8_t> name, uint8_t* buffer, uint32_t& told) {
    Request request = store_request(kOpen);
    request.u8(0x01).u8(0x01).u8(0xF0).u8(0x00).zeros(4).bytes(name);
    trace_bytes("<>Req cmd/open file: ", request.frame());
    std::printf("\n");
    const int failed = send(request, buffer, told);
    if (failed != 0 || buffer[0] != kCompleted) {
        std::printf("rc:%d, faild code:0x%x", failed, buffer[0]);
        return Status::exchange_failed;
    }
    trace_bytes("Recv: ", {buffer, std::min<size_t>(told, Reply::kCapacity)});
    return Status::ok;
}

Status read_file(uint8_t* buffer, uint32_t& told) {
    Request request = store_request(kRead);
    request.bytes({buffer + kHandleAt, 4}).zeros(4).le16(kWantedBytes);
    trace_bytes("Req cmd/read file: ", request.frame());
    std::printf("\n");
    // Kept: the length told is not set back between the two exchanges.
    // [LengthToldIsNotResetBeforeTheRead]
    const int failed = send(request, buffer, told);
    return failed == 0 && buffer[0] == kCompleted ? Status::ok : Status::exchange_failed;
}

void dump(std::span<const uint8_t> data) {
    size_t printed = 0;
    for (const uint8_t byte : data) {
        std::printf("%02X", byte);
        ++printed;
        if (printed % 2 == 0) std::printf(" ");
        if (printed % 16 == 0) std::printf("\n");
    }
    std::printf("\n");
}

}  // namespace

extern "C" uint32_t pwrmgt_ds_file_read(const char* name, uint8_t* buffer, int32_t buffer_size) {
    if (name == nullptr || buffer == nullptr) return code(Status::null_argument);
    const size_t length = std::strlen(name);
    std::printf("pwrmgt_ds_file_read() filename_sz:%d.\n", static_cast<int>(length));
    if (length > PWRMGT_MAX_STORE_NAME) return code(Status::exchange_failed);

    uint32_t told = 0;
    const Status opened = open_file({reinterpret_cast<const uint8_t*>(name), length}, buffer, told);
    if (opened != Status::ok) return code(opened);
    const Status read = read_file(buffer, told);
    if (read != Status::ok) return code(read);

    const int32_t received = buffer[kSizeAt] | buffer[kSizeAt + 1] << 8;
    std::printf("recv_data_sz is 0x%x \n", static_cast<unsigned>(received));
    // Kept: compared signed: below 6 no answer fits, however small. [SizeIsComparedSigned]
    if (received >= int64_t{buffer_size} - 5) {
        std::printf("There will be an array overflow.\n");
        return code(Status::exchange_failed);
    }
    dump({buffer + kDataAt, static_cast<size_t>(received)});
    return code(Status::ok);
}

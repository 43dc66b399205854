// SPDX-License-Identifier: Apache-2.0
// A data-store read on the recorder: its answers, its buffer, and what it prints.
#pragma once

#include <string>
#include <vector>

#include "captured_output.h"
#include "platform_test.h"

namespace pwrmgt::test {

// The answer to an open: completion code, three bytes, the handle 11 22 33 44.
inline const std::vector<uint8_t> kOpened{0x00, 0xA1, 0xA2, 0xA3, 0x11, 0x22, 0x33, 0x44};

// The answer to a read of `size` bytes: 00, 01, 02 ...
inline std::vector<uint8_t> store_answer(uint32_t size) {
    std::vector<uint8_t> bytes{
        0, 0xA1, 0xA2, 0xA3, static_cast<uint8_t>(size), static_cast<uint8_t>(size >> 8)};
    for (uint32_t at = 0; at < size; ++at) {
        bytes.push_back(static_cast<uint8_t>(at));
    }
    return bytes;
}

class StoreTest : public PlatformTest {
protected:
    struct Outcome {
        uint32_t status;
        std::string printed;
    };

    // One read on the answers that the recorder holds.
    Outcome read(const char* name, int32_t buffer_size) {
        CapturedOutput output;
        const uint32_t status = pwrmgt_ds_file_read(name, buffer.data(), buffer_size);
        return {status, output.text()};
    }

    // A read that opens the file "a" and is answered with `answer`.
    Outcome read_answered(std::vector<uint8_t> answer, int32_t buffer_size) {
        platform().answer_ipmi({.bytes = kOpened});
        platform().answer_ipmi({.bytes = std::move(answer)});
        return read("a", buffer_size);
    }

    std::vector<uint8_t> buffer = std::vector<uint8_t>(256, 0xEE);
};

}  // namespace pwrmgt::test

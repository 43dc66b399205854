// SPDX-License-Identifier: Apache-2.0
#include "ipmi/frame.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using pwrmgt::ipmi::Request;
using pwrmgt::ipmi::Response;

TEST(Frame, RequestIsReadFromItsBytes) {
    const std::vector<std::uint8_t> frame{0x20, 0x3A, 0x01, 0x32, 0x03, 0x04};

    const Request request(frame);

    EXPECT_EQ(request.responder(), 0x20);
    EXPECT_EQ(request.netfn(), 0x3A);
    EXPECT_EQ(request.lun(), 0x01);
    EXPECT_EQ(request.command(), 0x32);
    EXPECT_EQ(request.length(), 6u);
    ASSERT_EQ(request.payload().size(), 2u);
    EXPECT_EQ(request.payload()[0], 0x03);
}

TEST(Frame, ResponseNumbersAreLittleEndian) {
    Response response;

    response.u8(0x01);
    response.le16(0x0302);
    response.le32(0x07060504);

    const std::vector<std::uint8_t> bytes(response.bytes().begin(), response.bytes().end());
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6, 7}));
}

TEST(Frame, BigEndianNumberAndBytesFollowOneAnother) {
    Response response;

    response.be16(0x0102);
    response.bytes(std::vector<std::uint8_t>{3, 4});

    const std::vector<std::uint8_t> bytes(response.bytes().begin(), response.bytes().end());
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{1, 2, 3, 4}));
}

TEST(Frame, ResponseIsCutAndOverwrittenWithinItsLengthOnly) {
    Response response;
    response.le32(0x04030201);

    response.cut_to(5);
    response.cut_to(2);
    response.overwrite(1, 0xEE);
    response.overwrite(2, 0xEE);

    const std::vector<std::uint8_t> bytes(response.bytes().begin(), response.bytes().end());
    EXPECT_EQ(bytes, (std::vector<std::uint8_t>{1, 0xEE}));
}

TEST(Frame, ResponseNeverGrowsBeyond256Bytes) {
    Response response;

    for (int i = 0; i < 255; ++i)
        response.u8(0x11);
    response.le16(0x2233);
    response.u8(0x44);

    EXPECT_EQ(response.bytes().size(), 256u);
    EXPECT_EQ(response.bytes()[255], 0x33);
}

}  // namespace

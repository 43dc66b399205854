// SPDX-License-Identifier: Apache-2.0
// The data-store read built for a firmware maker: this program compiles it with the number
// 0x123456.
#include "store_answers.h"

using namespace pwrmgt::test;

class EnterpriseNumber : public StoreTest {};

TEST_F(EnterpriseNumber, StandsInBothRequestsLeastSignificantByteFirst) {
    EXPECT_EQ(read_answered(store_answer(0), 256).status, 0U);

    EXPECT_EQ(platform().calls,
              (Calls{"ipmi 20 2E 00 90 56 34 12 01 01 01 F0 00 00 00 00 00 61 told 0",
                     "ipmi 20 2E 00 90 56 34 12 02 11 22 33 44 00 00 00 00 C8 00 told 8"}));
}

TEST_F(EnterpriseNumber, IsTracedWithBothRequests) {
    EXPECT_EQ(read_answered(store_answer(0), 256).printed,
              "pwrmgt_ds_file_read() filename_sz:1.\n"
              "<>Req cmd/open file: 20 2E 00 90 56 34 12 01 01 01 F0 00 00 00 00 00 61 \n"
              "Recv: 00 A1 A2 A3 11 22 33 44 "
              "Req cmd/read file: 20 2E 00 90 56 34 12 02 11 22 33 44 00 00 00 00 C8 00 \n"
              "recv_data_sz is 0x0 \n\n");
}

// SPDX-License-Identifier: Apache-2.0
// Oversubscribed power, for every label: rounded to single precision, then cut to whole watts.
#include <bit>

#include "psu/power_tables.h"
#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

// The product of a factor, mantissa / 2^23 with a mantissa of 24 bits, and a whole number of watts,
// in integers: rounded to 24 bits, half to even, then cut.
uint32_t exact_product(uint64_t mantissa, uint64_t watts) {
    const uint64_t product = mantissa * watts;
    const int dropped = static_cast<int>(std::bit_width(product)) - 24;
    if (dropped <= 0) return static_cast<uint32_t>(product >> 23);
    uint64_t kept = product >> dropped;
    const uint64_t rest = product & ((uint64_t{1} << dropped) - 1);
    const uint64_t half = uint64_t{1} << (dropped - 1);
    if (rest > half || (rest == half && kept % 2 == 1)) ++kept;
    return static_cast<uint32_t>(kept << dropped >> 23);
}

constexpr uint64_t kMantissaOf1_2 = 10066330;  // 1.2 in single precision, times 2^23

uint32_t power_in(uint32_t mode, const std::vector<Row>& rows) {
    script_supplies(rows);
    platform().calls.clear();
    platform().operations.clear();
    uint32_t watts = 77;
    EXPECT_EQ(pwrmgt_get_powerInfo_perRedunMode(mode, nullptr, &watts, nullptr), 0U);
    return watts;
}

}  // namespace

class Products : public PsuTest {};

TEST_F(Products, OfOneSupplyForEveryLabel) {
    platform().quiet = true;
    for (uint32_t label_w = 1; label_w <= 8191; ++label_w) {
        ASSERT_EQ(power_in(1, bays_of_pattern(2, 3, label_w)),
                  exact_product(kMantissaOf1_2, label_w))
            << label_w;
    }
}

TEST_F(Products, OfTwoSuppliesForEveryLabel) {
    platform().quiet = true;
    for (uint32_t label_w = 1; label_w <= 8191; ++label_w) {
        ASSERT_EQ(power_in(1, bays_of_pattern(4, 15, label_w)),
                  exact_product(kMantissaOf1_2, 2 * label_w))
            << label_w;
    }
}

TEST_F(Products, OfThreeSuppliesForEveryLabel) {
    platform().quiet = true;
    std::vector<Row> rows(12, empty_bay());
    for (uint32_t label_w = 1; label_w <= 8191; ++label_w) {
        for (size_t index = 0; index < 4; ++index) {
            rows[index] = good_supply(static_cast<int64_t>(index) + 1, label_w);
        }

        ASSERT_EQ(power_in(4, rows), exact_product(kMantissaOf1_2, 3 * label_w)) << label_w;
    }
}

TEST_F(Products, OfUpToTwelveSuppliesForEveryLabel) {
    for (uint32_t units = 1; units <= 12; ++units) {
        for (uint32_t label_w = 1; label_w <= 8191; ++label_w) {
            ASSERT_EQ(pwrmgt::psu::oversubscribe(1.2F, units * label_w),
                      exact_product(kMantissaOf1_2, units * label_w))
                << units << " x " << label_w;
        }
    }
}

TEST_F(Products, FactorOf1_2GivesSixFifthsCut) {
    EXPECT_EQ(power_in(1, bays_of_pattern(2, 3, 1800)), 2160U);
    EXPECT_EQ(power_in(1, bays_of_pattern(2, 3, 1)), 1U);
    EXPECT_EQ(power_in(1, bays_of_pattern(2, 3, 4)), 4U);
    EXPECT_EQ(power_in(1, bays_of_pattern(2, 3, 5)), 6U);
    EXPECT_EQ(power_in(1, bays_of_pattern(2, 3, 1999)), 2398U);
    EXPECT_EQ(power_in(1, bays_of_pattern(2, 3, 8191)), 9829U);
    EXPECT_EQ(power_in(1, bays_of_pattern(4, 15, 8191)), 19658U);
}

// 0.7, 0.9 and 1.3 lie below their names in single precision: cut without rounding, or in double
// precision, each of these is one watt less.
TEST_F(Products, ProductIsRoundedToSinglePrecisionBeforeTheCut) {
    for (const auto& [factor, watts] : {std::pair{0.7F, 14U}, {0.9F, 18U}, {1.3F, 26U}}) {
        script_supplies(bays_of_pattern(8, 0b1111'1111, 5));
        uint32_t eight_w = 77;
        EXPECT_EQ(pwrmgt_8_psu_2_domain_power_info(1, &eight_w, nullptr, factor), 0);
        EXPECT_EQ(eight_w, watts);

        script_supplies(bays_of_pattern(12, 0b11'000011, 10));
        uint32_t twelve_w = 77;
        EXPECT_EQ(pwrmgt_12_psu_2_domain_power_info(1, &twelve_w, nullptr, factor), 0);
        EXPECT_EQ(twelve_w, watts);
    }
}

// SPDX-License-Identifier: Apache-2.0
// Power and state per status, mode, supply type and oversubscription support: the whole space.
#include <span>

#include "psu/power_tables.h"
#include "psu_test.h"

using namespace pwrmgt::test;

namespace {

struct Power {
    uint32_t watts;
    uint8_t state;
};

// What a status gives in a mode: oversubscribed, without its support, with CRPS supplies. One
// supply is 1801 W.
struct Case {
    uint32_t status;
    uint32_t mode;
    Power oversubscribed;
    Power exact;
    Power crps;
};

// clang-format off
constexpr Case kCases[] = {
    {0, 0, {1801, 0}, {1801, 0}, {1801, 0}},
    {1, 0, {1801, 1}, {1801, 1}, {1801, 1}},
    {2, 0, {1801, 0}, {1801, 0}, {1801, 0}},
    {3, 0, {3602, 0}, {3602, 0}, {3602, 0}},
    {4, 0, {1801, 1}, {1801, 1}, {1801, 1}},
    {5, 0, {65535, 15}, {65535, 15}, {65535, 15}},
    {6, 0, {65535, 15}, {65535, 15}, {65535, 15}},
    {0, 1, {1801, 0}, {1801, 0}, {1801, 0}},
    {1, 1, {2161, 1}, {1801, 1}, {1801, 1}},
    {2, 1, {1801, 0}, {1801, 0}, {1801, 0}},
    {3, 1, {3602, 0}, {3602, 0}, {1801, 1}},
    {4, 1, {2161, 1}, {1801, 1}, {1801, 1}},
    {5, 1, {4322, 1}, {3602, 1}, {1801, 2}},
    {6, 1, {4322, 2}, {3602, 2}, {3602, 2}},
    {0, 2, {1801, 0}, {1801, 0}, {1801, 0}},
    {1, 2, {3602, 0}, {3602, 0}, {3602, 0}},
    {2, 2, {1801, 0}, {1801, 0}, {1801, 0}},
    {3, 2, {3602, 0}, {3602, 0}, {3602, 0}},
    {4, 2, {3602, 0}, {3602, 0}, {3602, 0}},
    {5, 2, {5403, 0}, {5403, 0}, {5403, 0}},
    {6, 2, {7204, 0}, {7204, 0}, {7204, 0}},
};
constexpr Case kReserveCases[] = {
    {1, 4, {1801, 0}, {1801, 0}, {1801, 0}},
    {2, 4, {3602, 0}, {3602, 0}, {3602, 0}},
    {3, 4, {5403, 0}, {5403, 0}, {5403, 0}},
    {4, 4, {1801, 0}, {1801, 0}, {1801, 0}},
    {5, 4, {2161, 1}, {1801, 1}, {1801, 1}},
    {6, 4, {5403, 0}, {5403, 0}, {5403, 0}},
    {7, 4, {6483, 1}, {5403, 1}, {5403, 1}},
    {15, 4, {65535, 15}, {65535, 15}, {65535, 15}},
};
// clang-format on

// Supplies that have the status in modes 0 to 2.
std::vector<Row> bays_of_status(uint32_t status) {
    switch (status) {
        case 0:
            return bays_of_pattern(2, 0b01, 1801);
        case 1:
            return bays_of_pattern(2, 0b11, 1801);
        case 2:
            return bays_of_pattern(4, 0b0001, 1801);
        case 3:
            return bays_of_pattern(4, 0b0101, 1801);
        case 4:
            return bays_of_pattern(4, 0b0011, 1801);
        case 5:
            return bays_of_pattern(4, 0b0111, 1801);
        default:
            return bays_of_pattern(4, 0b1111, 1801);
    }
}

// Supplies that have the status in mode 4: 1 to 3 with the others faulted, from 4 on absent.
std::vector<Row> bays_of_reserve_status(uint32_t status) {
    if (status <= 3) return bays_of_pattern(12, (1U << status) - 1, 1801);
    std::vector<Row> rows(12, empty_bay());
    const uint32_t good = status == 15 ? 5 : status - 3;
    for (uint32_t index = 0; index < good; ++index) {
        rows[index] = good_supply(index + 1, 1801);
    }
    return rows;
}

void expect_power(const Case& c, uint32_t crps, uint32_t oversubscription) {
    fresh_process();
    platform().set_property(kTypeKey, crps);
    platform().set_property(kOversubscriptionKey, oversubscription);
    const Power& expected =
        crps == 1 ? c.crps : (oversubscription == 0 ? c.exact : c.oversubscribed);
    uint32_t watts = 77;
    uint8_t state = 77;

    EXPECT_EQ(pwrmgt_get_powerInfo_perRedunMode(c.mode, nullptr, &watts, &state), 0U);

    SCOPED_TRACE(testing::Message() << "status " << c.status << " mode " << c.mode << " crps "
                                    << crps << " oversubscription " << oversubscription);
    EXPECT_EQ(watts, expected.watts);
    EXPECT_EQ(state, expected.state);
}

}  // namespace

class ModePowerTables : public PsuTest {};

TEST_F(ModePowerTables, EveryStatusModeTypeAndSupportGivesItsPowerAndState) {
    for (const Case& c : kCases) {
        script_supplies(bays_of_status(c.status));
        for (const uint32_t crps : {0U, 1U}) {
            for (const uint32_t oversubscription : {0U, 1U, 2U, 255U}) {
                expect_power(c, crps, oversubscription);
            }
        }
    }
}

TEST_F(ModePowerTables, EveryStatusTypeAndSupportWithOneInReserve) {
    for (const Case& c : kReserveCases) {
        script_supplies(bays_of_reserve_status(c.status));
        for (const uint32_t crps : {0U, 1U}) {
            for (const uint32_t oversubscription : {0U, 1U, 2U, 255U}) {
                expect_power(c, crps, oversubscription);
            }
        }
    }
}

// Statuses that no table of supplies reaches together with a known label.
TEST_F(ModePowerTables, StatusWithoutARowIsUnknown) {
    using namespace pwrmgt::psu;
    for (const auto rows : {std::span<const Grant>{kMode0}, std::span<const Grant>{kMode1},
                            std::span<const Grant>{kMode1Crps}, std::span<const Grant>{kMode2}}) {
        for (const int32_t status : {-1, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, INT32_MAX}) {
            EXPECT_EQ(grant_of(rows, status).factor, Factor::unknown) << status;
            EXPECT_EQ(grant_of(rows, status).state, 15) << status;
        }
    }
    for (const int32_t status : {-1, 0, 8, 9, 14, 15, 16, INT32_MAX}) {
        EXPECT_EQ(grant_of(kReserveOne, status).factor, Factor::unknown) << status;
        EXPECT_EQ(grant_of(kReserveOne, status).state, 15) << status;
    }
}

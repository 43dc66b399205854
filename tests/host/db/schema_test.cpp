// SPDX-License-Identifier: Apache-2.0
#include "db/schema.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(Schema, EveryColumnNameIsFoundByItsOwnNumber) {
    for (std::uint16_t number = 0; number < 85; ++number) {
        const auto name = pwrmgt::vekdb::column_name(number);
        EXPECT_EQ(pwrmgt::vekdb::column_number(name), number) << name;
    }
    EXPECT_EQ(pwrmgt::vekdb::column_number("timestamp"), std::nullopt);
}

TEST(Schema, EveryColumnOfATableIsKnownAndStandsInItOnce) {
    for (const pwrmgt::vekdb::TableShape& table : pwrmgt::vekdb::tables()) {
        std::set<std::string> met;
        const std::string names{table.columns};
        for (std::size_t at = 0; at < names.size();) {
            const std::size_t end = std::min(names.find(',', at), names.size());
            const std::string name = names.substr(at, end - at);
            EXPECT_TRUE(pwrmgt::vekdb::column_number(name)) << table.name << " " << name;
            EXPECT_TRUE(met.insert(name).second) << table.name << " " << name;
            at = end + 1;
        }
        EXPECT_GE(met.size(), 4U) << table.name;
    }
}

TEST(Schema, TypeStandsBehindEachColumn) {
    EXPECT_EQ(pwrmgt::vekdb::typed_columns("a,b,c", "BIGINT"), "a BIGINT,b BIGINT,c BIGINT");
    EXPECT_EQ(pwrmgt::vekdb::typed_columns("a", "INTEGER"), "a INTEGER");
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include "print.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace pwrmgt::pwrmgtctl {
namespace {

TEST(Print, FirstColumnIsAlignedLeftAndTheOthersRight) {
    Table table({"Name", "W"});
    table.add({"a", "1"});
    table.add({"longer", "1234"});

    const std::string text = table.text();

    EXPECT_EQ(text,
              "Name       W\n"
              "a          1\n"
              "longer  1234\n");
}

TEST(Print, TableWithoutRowsIsItsHeader) {
    const Table table({"Name", "W"});

    EXPECT_EQ(table.text(), "Name  W\n");
}

TEST(Print, MissingCellIsADash) {
    EXPECT_EQ(cell(Value{}), "-");
}

TEST(Print, ZeroIsAReadingAndNoDash) {
    EXPECT_EQ(cell(Value{0}), "0");
}

TEST(Print, MissingValueIsNullInJson) {
    EXPECT_TRUE(json_value(Value{}).is_null());
}

TEST(Print, UtcTimeIsIso8601WithZ) {
    EXPECT_EQ(time_text(1700000010, Zone::utc), "2023-11-14T22:13:30Z");
}

TEST(Print, LastSecondOfThe32BitClockIsPrinted) {
    EXPECT_EQ(time_text(4294967295, Zone::utc), "2106-02-07T06:28:15Z");
}

TEST(Print, LocalTimeCarriesItsOffset) {
    setenv("TZ", "IST-5:30", 1);
    tzset();

    const std::string text = time_text(1700000010, Zone::local);

    setenv("TZ", "UTC", 1);
    tzset();
    EXPECT_EQ(text, "2023-11-15T03:43:30+05:30");
}

TEST(Print, SpansUseTheLargestWholeUnit) {
    EXPECT_EQ(span_text(30), "30 s");
    EXPECT_EQ(span_text(90), "90 s");
    EXPECT_EQ(span_text(720), "12 min");
    EXPECT_EQ(span_text(5400), "90 min");
    EXPECT_EQ(span_text(86400), "24 h");
}

TEST(Print, JsonKeepsTheOrderOfItsKeys) {
    Json document;
    document["schema"] = "x/1";
    document["entries"] = Json::array();
    document["a"] = nullptr;

    EXPECT_EQ(json_text(document, JsonForm::indented),
              "{\n  \"schema\": \"x/1\",\n  \"entries\": [],\n  \"a\": null\n}\n");
}

TEST(Print, BytesThatAreNoUtf8DoNotLoseTheDocument) {
    Json document;
    document["database"] = "/odd\xff/path";

    EXPECT_EQ(json_text(document, JsonForm::indented),
              "{\n  \"database\": \"/odd\xef\xbf\xbd/path\"\n}\n");
}

TEST(Print, TimingIsRoundedToAMicrosecond) {
    EXPECT_DOUBLE_EQ(rounded_ms(1.2345678), 1.235);
    EXPECT_EQ(timing_text(1.2345678), "The query took 1.23 ms.\n");
}

}  // namespace
}  // namespace pwrmgt::pwrmgtctl

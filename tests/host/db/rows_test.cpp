// SPDX-License-Identifier: Apache-2.0
#include "db/rows.h"

#include "database_test.h"

namespace {

class ResultRows : public OpenDatabaseTest {
protected:
    std::uint32_t select_one(const char* expression) {
        std::uint32_t result = 0;
        EXPECT_EQ(raw(db_, std::string{"select "} + expression, &result), 0);
        return result;
    }
};

TEST_F(ResultRows, CountIsKnownBeforeTheFirstStep) {
    for (std::uint16_t slot = 0; slot < 130; ++slot)
        insert_slot(db_, "HistPowers24HrMem", slot, 30u * slot, 1);
    std::uint32_t result = 0;
    raw(db_, "select * from HistPowers24HrMem", &result);

    EXPECT_EQ(vek_db_result_row_count(result), 130);
    EXPECT_EQ(rows_of(result, 1).size(), 130u);
}

TEST_F(ResultRows, StepEndsWithTenAndStaysThere) {
    const std::uint32_t result = select_one("1");

    EXPECT_EQ(vek_db_result_step(result), kRow);
    EXPECT_EQ(vek_db_result_step(result), kNoMoreRows);
    EXPECT_EQ(vek_db_result_step(result), kNoMoreRows);
    vek_db_free_result(result);
}

TEST_F(ResultRows, NoCellIsReadBeforeTheFirstAndBehindTheLastRow) {
    const std::uint32_t result = select_one("1");
    std::uint32_t cell = 77;

    EXPECT_NE(vek_db_result_column_uint(result, 0, &cell), 0);
    vek_db_result_step(result);
    vek_db_result_step(result);
    EXPECT_NE(vek_db_result_column_uint(result, 0, &cell), 0);
    EXPECT_EQ(cell, 77u);
    vek_db_free_result(result);
}

TEST_F(ResultRows, ColumnOutsideTheSelectedOnesIsRefused) {
    const std::uint32_t result = select_one("1,2");
    vek_db_result_step(result);
    std::uint32_t cell = 77;

    EXPECT_NE(vek_db_result_column_uint(result, 2, &cell), 0);
    EXPECT_NE(vek_db_result_column_uint(result, -1, &cell), 0);
    EXPECT_EQ(cell, 77u);
    EXPECT_EQ(vek_db_result_column_uint(result, 1, &cell), 0);
    EXPECT_EQ(cell, 2u);
    vek_db_free_result(result);
}

TEST_F(ResultRows, CellWithoutValueIsRefusedAndZeroIsRead) {
    const std::uint32_t result = select_one("null, 0");
    vek_db_result_step(result);
    std::uint32_t cell = 77;

    EXPECT_NE(vek_db_result_column_uint(result, 0, &cell), 0);
    EXPECT_EQ(cell, 77u);
    EXPECT_EQ(vek_db_result_column_uint(result, 1, &cell), 0);
    EXPECT_EQ(cell, 0u);
    vek_db_free_result(result);
}

TEST_F(ResultRows, EveryReaderKeepsTheLowBitsOfItsWidth) {
    const std::uint32_t result = select_one("4295032833+65280");  // 0x10001ff01
    vek_db_result_step(result);
    std::int32_t as_int = 0;
    std::uint32_t as_uint = 0;
    std::int16_t as_short = 0;
    std::uint16_t as_ushort = 0;
    std::uint8_t as_uchar = 0;
    vek_db_result_column_int(result, 0, &as_int);
    vek_db_result_column_uint(result, 0, &as_uint);
    vek_db_result_column_short_int(result, 0, &as_short);
    vek_db_result_column_short_uint(result, 0, &as_ushort);
    vek_db_result_column_uchar(result, 0, &as_uchar);

    EXPECT_EQ(as_int, 130817);
    EXPECT_EQ(as_uint, 130817u);
    EXPECT_EQ(as_short, -255);
    EXPECT_EQ(as_ushort, 65281);
    EXPECT_EQ(as_uchar, 1);
    vek_db_free_result(result);
}

TEST_F(ResultRows, NullOutputIsRefused) {
    const std::uint32_t result = select_one("1");
    vek_db_result_step(result);

    EXPECT_NE(vek_db_result_column_int(result, 0, nullptr), 0);
    EXPECT_NE(vek_db_result_column_uint(result, 0, nullptr), 0);
    EXPECT_NE(vek_db_result_column_short_int(result, 0, nullptr), 0);
    EXPECT_NE(vek_db_result_column_short_uint(result, 0, nullptr), 0);
    EXPECT_NE(vek_db_result_column_uchar(result, 0, nullptr), 0);
    vek_db_free_result(result);
}

TEST_F(ResultRows, ResultStaysReadableAfterItsConnectionIsClosed) {
    const std::uint32_t other = open_database();
    std::uint32_t result = 0;
    raw(other, "select 42", &result);
    vek_db_close(other);

    EXPECT_EQ(rows_of(result, 1), (Table{{42}}));
}

}  // namespace

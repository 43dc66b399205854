// SPDX-License-Identifier: Apache-2.0
// The platform functions of a machine that has none of it: everything fails. A program defines
// those it is about; the others stand here, because the library asks for all of them when it is
// loaded.
// clang-format off
#define ABSENT(name, answer) __attribute__((weak)) int name(void) { return answer; }
// clang-format on

ABSENT(vek_db_open, 0)
ABSENT(vek_db_close, 0)
ABSENT(vek_db_query, 1)
ABSENT(vek_db_raw_query, 1)
ABSENT(vek_db_insert, 1)
ABSENT(vek_db_update, 1)
ABSENT(vek_db_delete, 1)
ABSENT(vek_db_result_step, 1)
ABSENT(vek_db_result_row_count, -1)
ABSENT(vek_db_result_column_int, 1)
ABSENT(vek_db_result_column_uint, 1)
ABSENT(vek_db_result_column_short_int, 1)
ABSENT(vek_db_result_column_short_uint, 1)
ABSENT(vek_db_result_column_uchar, 1)
ABSENT(vek_db_free_result, 0)
ABSENT(vek_db_get_content_values, 0)
ABSENT(vek_db_content_clear, 0)
ABSENT(vek_db_content_put_int, 1)
ABSENT(vek_db_content_put_uint, 1)
ABSENT(vek_db_content_put_short_int, 1)
ABSENT(vek_db_content_put_short_uint, 1)
ABSENT(vek_db_content_put_uchar, 1)
ABSENT(vek_db_content_put_char, 1)
ABSENT(vek_db_free_content_values, 0)
ABSENT(propdb_get_byte, 2)
ABSENT(propdb_get_word, 2)
ABSENT(propdb_get_dword, 2)
ABSENT(send_ipmi_cmd, 5)
ABSENT(is_quoril_platform, 0)

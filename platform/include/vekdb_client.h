/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file
 * The database client that the power-management library calls.
 *
 * A controller brings its own implementation; the host platform in this
 * repository brings one over SQLite and MariaDB. Every handle is an opaque
 * 32-bit number, 0 means none. A handle handed out is handed back exactly
 * once, to the release function named with it. Passing a handle that is 0, was
 * already handed back, or never existed is an error return, never a crash.
 *
 * Functions that return `int` return 0 for success unless they say otherwise.
 */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * A connection to the database server.
 *
 * @param host      server, "localhost" on a controller
 * @param user      user name
 * @param password  may be the empty text
 * @param dbname    database, "vek_pwr_db"
 * @param flags     0
 * @return a connection, or 0 when the database cannot be reached
 *
 * Hand the connection back with vek_db_close().
 */
uint32_t vek_db_open(const char* host, const char* user, const char* password, const char* dbname,
                     int flags);

/** Closes a connection. Results and contents obtained through it stay valid. */
void vek_db_close(uint32_t conn);

/**
 * Selects rows of one table.
 *
 * @param conn       connection
 * @param table      table name
 * @param columns    names of the columns wanted, in this order; null = all
 * @param n_columns  length of `columns`; 0 = all
 * @param where      filter text without the word WHERE; null = every row
 * @param limit      rows at most; 0 = no limit
 * @param offset     rows skipped; 0 = none
 * @param order      ordering text without the words ORDER BY; null = none
 * @param result     [out] the rows; 0 when there is no result to hand out
 * @return 0 on success
 *
 * A non-zero return may still come with a result: free it.
 */
int vek_db_query(uint32_t conn, const char* table, const char* const* columns, int n_columns,
                 const char* where, int limit, int offset, const char* order, uint32_t* result);

/**
 * Runs one SQL statement.
 *
 * @param conn    connection
 * @param sql     statement text
 * @param length  its length in bytes, without a terminator
 * @param result  [out] the rows; null when no rows are wanted
 * @return 0 on success
 */
int vek_db_raw_query(uint32_t conn, const char* sql, uint32_t length, uint32_t* result);

/**
 * Inserts one row.
 *
 * @param conn     connection
 * @param table    table name
 * @param content  the row's columns; stays the caller's. Of two puts of one
 *                 column the last one holds.
 * @param a,b      0
 * @return 0 on success
 */
int vek_db_insert(uint32_t conn, const char* table, uint32_t content, int a, int b);

/**
 * Updates rows.
 *
 * @param conn     connection
 * @param table    table name
 * @param content  the columns to change; stays the caller's
 * @param where    filter text; null = every row
 * @param a,b      0
 * @return 0 on success, also when no row matches
 */
int vek_db_update(uint32_t conn, const char* table, uint32_t content, const char* where, int a,
                  int b);

/**
 * Deletes rows.
 *
 * @param conn   connection
 * @param table  table name
 * @param where  filter text; null = every row
 * @return 0 on success, also when no row matches
 */
int vek_db_delete(uint32_t conn, const char* table, const char* where);

/**
 * Goes to the next row; the first call goes to the first row.
 *
 * @return 9 a row is current, 10 no more rows, anything else a failure
 */
int vek_db_result_step(uint32_t result);

/** Number of rows in a result, known before the first step; negative for a bad handle. */
int vek_db_result_row_count(uint32_t result);

/**
 * Reads a column of the current row.
 *
 * @param result  result with a current row
 * @param column  0-based place in the selected columns
 * @param out     [out] the value's low bits in the width of `out`; untouched on failure
 * @return 0 on success; non-zero without a current row or without that column
 */
int vek_db_result_column_int(uint32_t result, int column, int32_t* out);
/** As vek_db_result_column_int(), unsigned 32 bits. */
int vek_db_result_column_uint(uint32_t result, int column, uint32_t* out);
/** As vek_db_result_column_int(), signed 16 bits. */
int vek_db_result_column_short_int(uint32_t result, int column, int16_t* out);
/** As vek_db_result_column_int(), unsigned 16 bits. */
int vek_db_result_column_short_uint(uint32_t result, int column, uint16_t* out);
/** As vek_db_result_column_int(), unsigned 8 bits. */
int vek_db_result_column_uchar(uint32_t result, int column, uint8_t* out);

/** Hands a result back. */
void vek_db_free_result(uint32_t result);

/**
 * A new, empty set of column/value pairs.
 *
 * @return a content, or 0 when none can be made
 *
 * Hand it back with vek_db_free_content_values().
 */
uint32_t vek_db_get_content_values(void);

/** Empties a content. */
void vek_db_content_clear(uint32_t content);

/**
 * Puts a column into a content. The column's type in the table follows the put.
 *
 * @return 0 on success
 */
int vek_db_content_put_uint(uint32_t content, const char* column, uint32_t value);
/** As vek_db_content_put_uint(), signed 32 bits. */
int vek_db_content_put_int(uint32_t content, const char* column, int32_t value);
/** As vek_db_content_put_uint(), unsigned 16 bits. */
int vek_db_content_put_short_uint(uint32_t content, const char* column, uint16_t value);
/** As vek_db_content_put_uint(), signed 16 bits. */
int vek_db_content_put_short_int(uint32_t content, const char* column, int16_t value);
/** As vek_db_content_put_uint(), unsigned 8 bits. */
int vek_db_content_put_uchar(uint32_t content, const char* column, uint8_t value);
/** As vek_db_content_put_uint(), signed 8 bits. */
int vek_db_content_put_char(uint32_t content, const char* column, int8_t value);

/** Hands a content back. */
void vek_db_free_content_values(uint32_t content);

#ifdef __cplusplus
}
#endif

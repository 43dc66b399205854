/* SPDX-License-Identifier: Apache-2.0 */
/* A plain C program that brings its own platform functions and shares the library's exported
 * globals with it. The argument names the behaviour to show; exit status 0 means that it was seen.
 */
#include <stdio.h>
#include <string.h>

#include "platform_id.h"
#include "vekdb_client.h"
#include "vekdb_pwrmgt.h"

enum { kConnection = 11, kResult = 12, kRow = 9 };

static int database_calls;
static uint8_t stored_is_blade;

int is_quoril_platform(void) {
    return 0;
}

uint32_t vek_db_open(const char* host, const char* user, const char* password, const char* dbname,
                     int flags) {
    (void)host, (void)user, (void)password, (void)dbname, (void)flags;
    ++database_calls;
    return kConnection;
}

void vek_db_close(uint32_t conn) {
    database_calls += conn == kConnection;
}

int vek_db_query(uint32_t conn, const char* table, const char* const* columns, int n_columns,
                 const char* where, int limit, int offset, const char* order, uint32_t* result) {
    (void)columns, (void)n_columns, (void)where, (void)limit, (void)offset, (void)order;
    ++database_calls;
    *result = kResult;
    return conn == kConnection && strcmp(table, "PowerPolicy") == 0 ? 0 : 1;
}

int vek_db_result_row_count(uint32_t result) {
    return result == kResult;
}

int vek_db_result_step(uint32_t result) {
    return result == kResult ? kRow : 1;
}

int vek_db_result_column_uchar(uint32_t result, int column, uint8_t* out) {
    *out = column == 0 ? stored_is_blade : 0;
    return result != kResult;
}

int vek_db_result_column_short_uint(uint32_t result, int column, uint16_t* out) {
    (void)column;
    *out = 0;
    return result != kResult;
}

void vek_db_free_result(uint32_t result) {
    database_calls += result == kResult;
}

static int check(int holds, const char* what) {
    if (!holds) fprintf(stderr, "does not hold: %s\n", what);
    return holds ? 0 : 1;
}

static int the_flag_starts_as_unread(void) {
    return check(g_power_policy_flag == 255, "g_power_policy_flag is 255 in a fresh process");
}

static int the_library_reads_what_the_program_writes(void) {
    int failures = 0;

    g_power_policy_flag = 2;
    failures += check(pwrmgt_unsupport_check("") == 1, "2 refuses");
    g_power_policy_flag = 1;
    failures += check(pwrmgt_unsupport_check("") == 0, "1 does not refuse");
    return failures + check(database_calls == 0, "the database was not asked");
}

static int the_program_reads_what_the_library_writes(void) {
    stored_is_blade = 2;

    const uint32_t verdict = pwrmgt_unsupport_check("");

    return check(verdict == 1, "the stored row's 2 refuses") +
           check(g_power_policy_flag == 2, "g_power_policy_flag is the stored 2") +
           check(database_calls > 0, "the program's own database functions were called");
}

int main(int argc, char** argv) {
    const char* const behaviour = argc == 2 ? argv[1] : "";

    if (strcmp(behaviour, "TheFlagStartsAsUnread") == 0) return the_flag_starts_as_unread();
    if (strcmp(behaviour, "TheLibraryReadsWhatTheProgramWrites") == 0) {
        return the_library_reads_what_the_program_writes();
    }
    if (strcmp(behaviour, "TheProgramReadsWhatTheLibraryWrites") == 0) {
        return the_program_reads_what_the_library_writes();
    }
    fprintf(stderr, "unknown behaviour: %s\n", behaviour);
    return 2;
}

/* SPDX-License-Identifier: Apache-2.0 */
/* A plain C program that brings its own platform functions and shares the library's exported
 * globals with it. The argument names the behaviour to show; exit status 0 means that it was seen.
 */
#include <stdio.h>
#include <string.h>

#include "platform_id.h"
#include "vekdb_client.h"
#include "vekdb_prop.h"
#include "vekdb_pwrmgt.h"

enum { kConnection = 11, kResult = 12, kRow = 9 };

static int database_calls;
static int property_calls;
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

int propdb_get_byte(const char* path, uint8_t* out) {
    ++property_calls;
    if (strcmp(path, "/ac/tavn/power/psu_installed") == 0) *out = 4;
    if (strcmp(path, "/ac/tavn/power/psu_config_info") == 0) *out = 12;
    return 0;
}

static int check(int holds, const char* what) {
    if (!holds) fprintf(stderr, "does not hold: %s\n", what);
    return holds ? 0 : 1;
}

static int the_caches_start_as_unread(void) {
    return check(g_power_policy_flag == 255, "g_power_policy_flag is 255 in a fresh process") +
           check(g_psu_installed == 15, "g_psu_installed is 15 in a fresh process") +
           check(g_psu_config_info == 255, "g_psu_config_info is 255 in a fresh process");
}

static int the_library_reads_the_flag_that_the_program_writes(void) {
    int failures = 0;

    g_power_policy_flag = 2;
    failures += check(pwrmgt_unsupport_check("") == 1, "2 refuses");
    g_power_policy_flag = 1;
    failures += check(pwrmgt_unsupport_check("") == 0, "1 does not refuse");
    return failures + check(database_calls == 0, "the database was not asked");
}

static int the_program_reads_the_flag_that_the_library_writes(void) {
    stored_is_blade = 2;

    const uint32_t verdict = pwrmgt_unsupport_check("");

    return check(verdict == 1, "the stored row's 2 refuses") +
           check(g_power_policy_flag == 2, "g_power_policy_flag is the stored 2") +
           check(database_calls > 0, "the program's own database functions were called");
}

static int the_library_reads_the_supply_codes_that_the_program_writes(void) {
    g_psu_installed = 7;
    g_psu_config_info = 8;

    return check(pwrmgt_get_psu_type_installed() == 7, "the type is the program's") +
           check(pwrmgt_get_psu_config_info() == 8, "the configuration is the program's") +
           check(property_calls == 0, "the properties were not asked");
}

static int the_program_reads_the_supply_codes_that_the_library_writes(void) {
    pwrmgt_get_psu_type_installed();
    pwrmgt_get_psu_config_info();

    return check(g_psu_installed == 4, "g_psu_installed is the property's 4") +
           check(g_psu_config_info == 12, "g_psu_config_info is the property's 12");
}

static int the_table_of_modes_is_the_programs_to_change(void) {
    pwrmgt_redun_mode_map_t* const first = &default_redun_mode_map[0];
    const pwrmgt_redun_mode_map_t* const last = &default_redun_mode_map[27];
    int failures = 0;

    failures += check(first->hw_config == 1 && first->output_label_power == 1800 &&
                          first->output_gpu_power == 700 && first->psu_present == 4 &&
                          first->redun_mode == 2,
                      "the first row is 1, 1800, 700, 4, 2");
    failures +=
        check(last->hw_config == 3 && last->output_label_power == 2600 &&
                  last->output_gpu_power == 600 && last->psu_present == 4 && last->redun_mode == 4,
              "the last row is 3, 2600, 600, 4, 4");
    first->redun_mode = 1;
    return failures + check(default_redun_mode_map[0].redun_mode == 1, "a row can be written");
}

static const struct {
    const char* name;
    int (*show)(void);
} kBehaviours[] = {
    {"TheCachesStartAsUnread", the_caches_start_as_unread},
    {"TheLibraryReadsTheFlagThatTheProgramWrites",
     the_library_reads_the_flag_that_the_program_writes},
    {"TheProgramReadsTheFlagThatTheLibraryWrites",
     the_program_reads_the_flag_that_the_library_writes},
    {"TheLibraryReadsTheSupplyCodesThatTheProgramWrites",
     the_library_reads_the_supply_codes_that_the_program_writes},
    {"TheProgramReadsTheSupplyCodesThatTheLibraryWrites",
     the_program_reads_the_supply_codes_that_the_library_writes},
    {"TheTableOfModesIsTheProgramsToChange", the_table_of_modes_is_the_programs_to_change},
};

int main(int argc, char** argv) {
    for (size_t i = 0; argc == 2 && i < sizeof kBehaviours / sizeof kBehaviours[0]; ++i) {
        if (strcmp(argv[1], kBehaviours[i].name) == 0) return kBehaviours[i].show() == 0 ? 0 : 1;
    }
    fprintf(stderr, "name one behaviour\n");
    return 2;
}

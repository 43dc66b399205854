// SPDX-License-Identifier: Apache-2.0
// A C program against the installed host platform, as a tool that fills tables by itself is.
#include <platform_id.h>
#include <stdio.h>
#include <vekdb_client.h>

int main(void) {
    const uint32_t db = vek_db_open("localhost", "", "", "", 0);
    uint32_t rows = 0;
    const int failed = vek_db_query(db, "PowerPolicy", 0, 0, 0, 0, 0, 0, &rows);
    vek_db_free_result(rows);
    vek_db_close(db);
    printf("opened: %d, quoril: %d, query failed: %d\n", db != 0, is_quoril_platform(),
           failed != 0);
    return 0;
}

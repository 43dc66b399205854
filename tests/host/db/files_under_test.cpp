// SPDX-License-Identifier: Apache-2.0
#include "engine_under_test.h"

std::string server_for_a_test() {
    return "";
}

std::string columns_of(const std::string& table) {
    return "pragma_table_info('" + table + "')";
}

int descriptors_per_connection() {
    return 2;
}

// SPDX-License-Identifier: Apache-2.0
// Single values with their names: a table of two columns, or keys of a JSON document.
#pragma once

#include <string>
#include <vector>

#include "print.h"

namespace pwrmgt::pwrmgtctl {

struct Field {
    std::string heading;
    std::string group;  // empty: the key stands in the document itself
    std::string key;
    Value value;
};

std::string fields_table(const std::string& first_header, const std::vector<Field>& fields);
void add_fields(Json& document, const std::vector<Field>& fields);

}  // namespace pwrmgt::pwrmgtctl

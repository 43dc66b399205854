// SPDX-License-Identifier: Apache-2.0
#include "fields.h"

namespace pwrmgt::pwrmgtctl {

std::string fields_table(const std::string& first_header, const std::vector<Field>& fields) {
    Table table({first_header, "Value"});
    for (const Field& field : fields) {
        table.add({field.heading, cell(field.value)});
    }
    return table.text();
}

void add_fields(Json& document, const std::vector<Field>& fields) {
    for (const Field& field : fields) {
        Json& holder = field.group.empty() ? document : document[field.group];
        holder[field.key] = json_value(field.value);
    }
}

}  // namespace pwrmgt::pwrmgtctl

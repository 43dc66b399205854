// SPDX-License-Identifier: Apache-2.0
#include "csv.h"

namespace pwrmgt::pwrmgtctl {
namespace {

std::string field_text(const std::string& field) {
    if (field.find_first_of(",\"\r\n") == std::string::npos) return field;
    std::string text = "\"";
    for (const char c : field) {
        text += c == '"' ? "\"\"" : std::string(1, c);
    }
    return text + '"';
}

}  // namespace

std::string csv_field(const Value& value) {
    return value ? std::to_string(*value) : std::string();
}

std::string csv_text(const std::vector<std::vector<std::string>>& lines) {
    std::string text;
    for (const std::vector<std::string>& line : lines) {
        for (size_t at = 0; at < line.size(); ++at) {
            text += (at == 0 ? "" : ",") + field_text(line[at]);
        }
        text += "\r\n";
    }
    return text;
}

}  // namespace pwrmgt::pwrmgtctl

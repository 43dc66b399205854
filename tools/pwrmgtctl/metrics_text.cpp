// SPDX-License-Identifier: Apache-2.0
#include "metrics_text.h"

#include <array>
#include <cstdio>
#include <string_view>

namespace pwrmgt::pwrmgtctl {
namespace {

// Names and values are the tool's own words and numbers: there is nothing to escape.
std::string labels_text(const Labels& labels) {
    if (labels.empty()) return {};
    std::string text = "{";
    for (const auto& [name, value] : labels) {
        text += (text.size() == 1 ? "" : ",") + std::string(name) + "=\"" + value + '"';
    }
    return text + '}';
}

}  // namespace

void MetricsText::add_line(const Gauge& gauge, const Labels& labels, const std::string& value) {
    const std::string name = gauge.name;
    if (name != last_) {
        text_ += "# HELP " + name + ' ' + gauge.help + "\n# TYPE " + name + " gauge\n";
        if (!std::string_view(gauge.unit).empty()) {
            text_ += "# UNIT " + name + ' ' + gauge.unit + '\n';
        }
        last_ = name;
    }
    text_ += name + labels_text(labels) + ' ' + value + '\n';
}

void MetricsText::add(const Gauge& gauge, const Labels& labels, const Value& value) {
    if (value) add_line(gauge, labels, std::to_string(*value));
}

void MetricsText::add_degrees(const Gauge& gauge, const Labels& labels, int32_t value) {
    add_line(gauge, labels, std::to_string(value));
}

void MetricsText::add_ratio(const Gauge& gauge, const Labels& labels, const Value& percent) {
    if (!percent) return;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%u.%02u", *percent / 100, *percent % 100);
    add_line(gauge, labels, text.data());
}

std::string MetricsText::text() const {
    return text_ + "# EOF\n";
}

}  // namespace pwrmgt::pwrmgtctl

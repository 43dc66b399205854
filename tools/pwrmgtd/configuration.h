// SPDX-License-Identifier: Apache-2.0
// Settings beside the command line: the configuration file and the environment, each with the place
// it comes from.
#pragma once

#include <string>
#include <vector>

namespace pwrmgt::pwrmgtd {

inline constexpr const char* kUsualConfigFile = "/etc/vekdb/pwrmgtd.conf";

// An option that may be configured, by its long name without the dashes.
struct Setting {
    std::string name;
    std::string value;
    std::string origin;  // "/etc/vekdb/pwrmgtd.conf:3" or "PWRMGTD_TRACE"
};

// `error` says why there are none, with the offending line.
struct Settings {
    std::vector<Setting> settings;
    std::string error;
};

// "name = value" lines; what stands behind # is a comment, and a text may stand in double quotes.
Settings settings_of_file(const std::string& path);

// $PWRMGTD_SAMPLE_INTERVAL for sample-interval, and so on; an empty one counts as not set.
Settings settings_of_environment(const std::vector<std::string>& names);

// "PWRMGTD_SAMPLE_INTERVAL" for "sample-interval".
std::string variable_of(const std::string& name);

}  // namespace pwrmgt::pwrmgtd

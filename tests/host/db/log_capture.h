// SPDX-License-Identifier: Apache-2.0
// What this program sends to the system log lands here instead.
#pragma once

#include <string>
#include <vector>

std::vector<std::string>& log_lines();

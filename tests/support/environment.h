// SPDX-License-Identifier: Apache-2.0
// An environment variable that is set, or taken away, as long as its owner lives.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const std::string& value) : EnvironmentVariable(name) {
        setenv(name, value.c_str(), 1);
    }
    explicit EnvironmentVariable(const char* name) : name_(name) {
        const char* value = std::getenv(name);
        if (value != nullptr) before_ = value;
        unsetenv(name);
    }
    ~EnvironmentVariable() {
        if (before_) {
            setenv(name_, before_->c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    const char* name_;
    std::optional<std::string> before_;
};

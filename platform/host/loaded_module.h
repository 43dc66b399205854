// SPDX-License-Identifier: Apache-2.0
// Code that needs a library which not every machine has: a shared object of its own, loaded the
// first time it is wanted.
#pragma once

#include <mutex>
#include <string>

namespace pwrmgt::host {

// Lives as long as the process. The module is looked for beside the library that this code is
// linked into, wherever that is, and nowhere else.
class LoadedModule {
public:
    // The module's file and the one function that it exports.
    constexpr LoadedModule(const char* file, const char* door) : file_{file}, door_name_{door} {}

    // The function; null with the reason in `why` as long as the module, or what it needs, is not
    // installed: the next call tries again. A module that was loaded stays.
    template <typename Door>
    Door door(std::string& why) {
        return reinterpret_cast<Door>(find(why));
    }

private:
    void* find(std::string& why);

    const char* file_;
    const char* door_name_;
    std::mutex mutex_;
    void* found_ = nullptr;
};

}  // namespace pwrmgt::host

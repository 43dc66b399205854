// SPDX-License-Identifier: Apache-2.0
#include "loaded_module.h"

#include <dlfcn.h>

namespace pwrmgt::host {
namespace {

// Part of every library that links this code: its address tells which of them asks.
void here() {}

std::string beside_this_library(const char* file) {
    Dl_info library{};
    if (dladdr(reinterpret_cast<void*>(&here), &library) == 0) return file;
    const std::string path = library.dli_fname;
    return path.substr(0, path.rfind('/') + 1) + file;
}

}  // namespace

// Modules keep connections and sessions, which are closed when the process ends: none is unloaded.
void* LoadedModule::find(std::string& why) {
    const std::lock_guard lock{mutex_};
    if (found_ != nullptr) return found_;
    void* const module =
        dlopen(beside_this_library(file_).c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (module != nullptr) found_ = dlsym(module, door_name_);
    if (found_ == nullptr) {
        const char* const error = dlerror();
        why = error != nullptr ? error : file_;
    }
    return found_;
}

}  // namespace pwrmgt::host

// SPDX-License-Identifier: Apache-2.0
#include "remote.h"

#include <dlfcn.h>

#include <array>
#include <mutex>

#include "openipmi/module.h"
#include "timeout.h"

namespace pwrmgt::ipmi {
namespace {

// It lies beside this library, wherever that is, and is looked for nowhere else.
std::string module_path() {
    Dl_info here{};
    if (dladdr(reinterpret_cast<void*>(&ask_remote), &here) == 0) return kModuleFile;
    const std::string library = here.dli_fname;
    return library.substr(0, library.rfind('/') + 1) + kModuleFile;
}

// Null as long as the module, or what it needs, is not installed. Never unloaded: it keeps a
// session.
ModuleDoor module_door(std::string& reason) {
    static std::mutex mutex;
    static ModuleDoor door = nullptr;
    const std::lock_guard lock(mutex);
    if (door != nullptr) return door;
    void* const module = dlopen(module_path().c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (module != nullptr) door = reinterpret_cast<ModuleDoor>(dlsym(module, kModuleDoor));
    if (door == nullptr) {
        const char* const error = dlerror();
        reason = std::string(error != nullptr ? error : kModuleFile) + "; nothing is sent";
    }
    return door;
}

}  // namespace

Send ask_remote(const std::string& setting, const Request& request, Response& response,
                std::string& reason) {
    const ModuleDoor exchange = module_door(reason);
    if (exchange == nullptr) return Send::not_built;
    if (!can_be_sent(request)) return Send::no_request;
    if (request.responder() != kController) return Send::no_answer;
    const auto timeout_ms = static_cast<std::uint32_t>(exchange_timeout().count());
    const auto frame = request.frame();
    std::array<std::uint8_t, kMaxResponseBytes> answer{};
    std::size_t length = 0;
    const char* why = nullptr;
    const auto result = static_cast<Send>(exchange(setting.c_str(), timeout_ms, frame.data(),
                                                   frame.size(), answer.data(), &length, &why));
    if (why != nullptr) reason = why;
    if (result == Send::done) response.bytes(std::span(answer).first(length));
    return result;
}

}  // namespace pwrmgt::ipmi

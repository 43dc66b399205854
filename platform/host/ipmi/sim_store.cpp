// SPDX-License-Identifier: Apache-2.0
// The data store: files of one directory, opened by name and read by handle.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

#include "sim_operations.h"
#include "sim_state_file.h"

namespace pwrmgt::ipmi::sim {
namespace {

constexpr std::array<std::uint8_t, 8> kOpenParameters{0x01, 0x01, 0xF0, 0x00, 0, 0, 0, 0};

// Places in the data, behind the enterprise number and the operation.
constexpr std::size_t kEnterpriseBytes = 3;
constexpr std::size_t kParametersAt = 4;
constexpr std::size_t kNameAt = 12;
constexpr std::size_t kHandleAt = 4;
constexpr std::size_t kOffsetAt = 8;
constexpr std::size_t kWantedAt = 12;

// What fits behind the completion code, the enterprise number and the size.
constexpr std::size_t kMaxReadBytes = kMaxResponseBytes - 6;

std::string store_directory() {
    const char* chosen = secure_getenv("VEKDB_SIM_STORE");
    if (chosen != nullptr && *chosen != '\0') return chosen;
    const std::string state = state_path();
    return state.substr(0, state.rfind('/')) + "/store";
}

// One name of printable characters: no way out of the directory can be written with it.
bool plain_name(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           std::all_of(name.begin(), name.end(),
                       [](char c) { return c >= ' ' && c <= '~' && c != '/'; });
}

// An ordinary file of the store, or none: no link, which could lead elsewhere, and nothing that an
// open could wait for or set off.
class StoredFile {
public:
    explicit StoredFile(const std::string& name) {
        const int directory = open(store_directory().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (directory < 0) return;
        struct stat status {};
        if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
            S_ISREG(status.st_mode)) {
            number_ =
                openat(directory, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        }
        close(directory);
    }
    ~StoredFile() {
        if (number_ >= 0) close(number_);
    }
    StoredFile(const StoredFile&) = delete;
    StoredFile& operator=(const StoredFile&) = delete;

    bool found() const { return number_ >= 0; }

    // Fills the span from `offset` as far as the file goes; -1 when it cannot be read.
    ssize_t read_at(off_t offset, std::span<std::uint8_t> into) const {
        std::size_t filled = 0;
        while (filled < into.size()) {
            const ssize_t got = pread(number_, into.data() + filled, into.size() - filled,
                                      offset + static_cast<off_t>(filled));
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return -1;
            if (got == 0) break;
            filled += static_cast<std::size_t>(got);
        }
        return static_cast<ssize_t>(filled);
    }

private:
    int number_ = -1;
};

// The oldest handle goes when there are too many: nobody closes one.
std::uint32_t new_handle(State& state, std::string name) {
    if (state.open_files.size() >= kMaxOpenFiles) state.open_files.erase(state.open_files.begin());
    const std::uint32_t handle = state.next_handle;
    state.next_handle = handle == 0xFFFF'FFFF ? 1 : handle + 1;
    state.open_files.push_back({handle, std::move(name)});
    return handle;
}

}  // namespace

void open_file(const Call& call, State& state, Response& response) {
    const auto payload = call.request.payload();
    const auto parameters = payload.subspan(kParametersAt, kOpenParameters.size());
    const auto bytes = payload.subspan(kNameAt);
    std::string name(bytes.begin(), bytes.end());
    if (!std::equal(parameters.begin(), parameters.end(), kOpenParameters.begin()) ||
        !plain_name(name)) {
        return response.u8(kInvalidField);
    }
    if (!StoredFile(name).found()) return response.u8(kNotPresent);
    response.u8(kSuccess);
    response.bytes(payload.first(kEnterpriseBytes));
    response.le32(new_handle(state, std::move(name)));
}

void read_file(const Call& call, const State& state, Response& response) {
    const auto payload = call.request.payload();
    const std::uint32_t handle = le32_at(payload, kHandleAt);
    const auto open = std::find_if(state.open_files.begin(), state.open_files.end(),
                                   [&](const OpenFile& file) { return file.handle == handle; });
    if (open == state.open_files.end()) return response.u8(kNotPresent);
    const StoredFile file(open->name);
    if (!file.found()) return response.u8(kNotPresent);

    std::array<std::uint8_t, kMaxReadBytes> data{};
    const std::size_t wanted = std::min<std::size_t>(le16_at(payload, kWantedAt), data.size());
    const ssize_t got = file.read_at(le32_at(payload, kOffsetAt), std::span(data).first(wanted));
    if (got < 0) return response.u8(kUnspecified);
    response.u8(kSuccess);
    response.bytes(payload.first(kEnterpriseBytes));
    response.le16(static_cast<std::uint16_t>(got));
    response.bytes(std::span(data).first(static_cast<std::size_t>(got)));
}

}  // namespace pwrmgt::ipmi::sim

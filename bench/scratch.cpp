// SPDX-License-Identifier: Apache-2.0
// Making and removing the places of a run, and filling the library's database.
#include "scratch.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "vekdb_client.h"

namespace pwrmgt::bench {

namespace {

std::string from_environment(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : otherwise;
}

// A machine with four supplies of 800 W label power, all good.
void make_bays(std::uint32_t db) {
    require_ok(pwrmgt_init_psu_property_table(db, 4), "pwrmgt_init_psu_property_table");
    for (std::uint8_t bay = 1; bay <= 4; ++bay) {
        require_ok(pwrmgt_update_psu_property_table(db, {bay, 1, 0, 0, 1, 900, 800}),
                   "pwrmgt_update_psu_property_table");
    }
}

}  // namespace

void require_ok(std::uint32_t status, const char* call) {
    if (status != 0) throw std::runtime_error(std::string{call} + ": " + std::to_string(status));
}

ScratchDirectory::ScratchDirectory(const std::string& parent)
    : path_{parent + "/pwrmgt-bench-XXXXXX"} {
    if (mkdtemp(path_.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), path_);
    }
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

Scratch::Scratch()
    : disk_{from_environment("BENCH_DISK_DIR", "/var/tmp")},
      memory_{from_environment("BENCH_TMPFS_DIR", "/dev/shm")} {
    setenv("VEKDB_STATE_DIR", disk_.path().c_str(), 1);
    setenv("VEKDB_RUNTIME_DIR", memory_.path().c_str(), 1);
    setenv("VEKDB_PROPS", disk_.file("properties.conf").c_str(), 1);
    unsetenv("VEKDB_PLATFORM");
    unsetenv("VEKDB_SERVER");
}

LibraryConnection::LibraryConnection() : handle_{pwrmgt_get_db_handle()} {
    if (handle_ == 0) throw std::runtime_error("the database did not open");
}

LibraryConnection::~LibraryConnection() {
    vek_db_close(handle_);
}

void LibraryConnection::insert(const Row& row) const {
    require_ok(pwrmgt_update_hist_table(handle_, row.slot, row.time_s, sample_of(row)),
               "pwrmgt_update_hist_table");
}

void LibraryConnection::save(std::int32_t first_slot, std::uint32_t count) const {
    require_ok(pwrmgt_update_hist_persist_db(handle_, first_slot, count),
               "pwrmgt_update_hist_persist_db");
}

void fill_library(const std::vector<Row>& day) {
    const LibraryConnection db;
    for (const Row& row : day) {
        db.insert(row);
    }
    db.save(0, PWRMGT_RING_SLOTS);
    pwrmgt_power_policy_t policy{};
    require_ok(pwrmgt_init_power_policy_table(db.get(), &policy, 0, 1),
               "pwrmgt_init_power_policy_table");
    make_bays(db.get());
}

}  // namespace pwrmgt::bench

// SPDX-License-Identifier: Apache-2.0
// Directories for one run, on a disk and on a tmpfs, that go with it, and the library's database in
// them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "day.h"

namespace pwrmgt::bench {

// A new private directory, removed with its owner.
class ScratchDirectory {
public:
    explicit ScratchDirectory(const std::string& parent);
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const char* name) const { return path_ + '/' + name; }

private:
    std::string path_;
};

// The place of one run. Points the library's database at it.
class Scratch {
public:
    Scratch();

    const ScratchDirectory& disk() const { return disk_; }      // $BENCH_DISK_DIR or /var/tmp
    const ScratchDirectory& memory() const { return memory_; }  // $BENCH_TMPFS_DIR or /dev/shm

private:
    ScratchDirectory disk_;
    ScratchDirectory memory_;
};

// A connection to the library's database for as long as its owner lives.
class LibraryConnection {
public:
    LibraryConnection();
    ~LibraryConnection();
    LibraryConnection(const LibraryConnection&) = delete;
    LibraryConnection& operator=(const LibraryConnection&) = delete;

    std::uint32_t get() const { return handle_; }

    // Throw when the library refuses.
    void insert(const Row& row) const;
    void save(std::int32_t first_slot, std::uint32_t count) const;

private:
    std::uint32_t handle_;
};

// Records the day, saves all of it, and makes the policy row and four supply bays.
void fill_library(const std::vector<Row>& day);

// Throws unless a call of the library returned 0.
void require_ok(std::uint32_t status, const char* call);

}  // namespace pwrmgt::bench

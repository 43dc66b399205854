// SPDX-License-Identifier: Apache-2.0
// What the client needs of a database engine. The client brings handles, the pool, name checks and
// statement texts; an engine brings connections that run them.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace pwrmgt::vekdb {

class Rows;

// How a statement ended. The numbers are what callers of the client get.
enum class Outcome : int {
    ok = 0,
    bad_argument = 1,  // null, unknown name, stale or foreign handle
    refused = 2,       // the engine does not accept the text or the row
    busy = 3,          // a lock did not come free in time
    no_space = 4,      // disk full, or a file size limit
    read_only = 5,     // the files may only be read
    damaged = 6,       // a file is damaged
    failed = 7,        // anything else
    no_memory = 8,
};

// One connection to the engine, used by one thread at a time.
class BackendConnection {
public:
    virtual ~BackendConnection() = default;

    // Runs one statement whose `?` stand for `values`. The rows are read to the last into `rows`;
    // with a null `rows` they are dropped. A statement that yields no columns leaves `rows` with
    // none.
    virtual Outcome run(std::string_view sql, std::span<const std::int64_t> values, Rows* rows) = 0;

    // Ends what a user left behind, such as an open transaction. False: not fit for another user.
    virtual bool tidy() noexcept = 0;

    // Whether a connection made now would reach the same database.
    virtual bool current() const = 0;

    // In a forked child: prepares the inherited connection for destruction without touching what
    // the parent still uses. False: it must not even be destroyed.
    virtual bool disown() noexcept = 0;
};

// A connection to the database that the environment names; null with the reason in `why`.
std::unique_ptr<BackendConnection> connect_backend(std::string& why);

// The engines behind it.
std::unique_ptr<BackendConnection> connect_sqlite(std::string& why);
std::unique_ptr<BackendConnection> connect_server(const std::string& server, std::string& why);

}  // namespace pwrmgt::vekdb

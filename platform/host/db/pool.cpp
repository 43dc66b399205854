// SPDX-License-Identifier: Apache-2.0
// Lending, taking back and, in a forked child, forgetting connections.
#include "pool.h"

#include <unistd.h>

#include <new>
#include <vector>

#include "fork_gate.h"
#include "handles.h"

namespace pwrmgt::vekdb {

namespace {

using Connection = std::unique_ptr<BackendConnection>;
using Held = std::shared_ptr<Lease>;

// A setter nests two; threads of a front end bring a few more.
constexpr std::size_t kIdle = 4;

struct Pool {
    std::mutex lock;  // also keeps a lease alive between the look at its handle and the copy
    std::vector<Connection> idle;
    std::vector<Connection>
        inherited;  // in a child: what the parent had, to be let go at the first open
    pid_t owner = getpid();
};

// Never destroyed: see close_idle() for the end of the process.
Pool& pool() {
    static Pool* const the_pool = new Pool;
    return *the_pool;
}

void forget_parent() {
    Pool& mine = pool();
    new (&mine.lock) std::mutex;
    connection_handles.reset_lock();
    result_handles.reset_lock();
    content_handles.reset_lock();
    mine.owner = getpid();
    // Only moved here: a child that goes on to exec never closes them.
    for (Connection& connection : mine.idle)
        mine.inherited.push_back(std::move(connection));
    mine.idle.clear();
    while (void* taken = connection_handles.take_any()) {
        const std::unique_ptr<Held> held{static_cast<Held*>(taken)};
        mine.inherited.push_back(std::move((*held)->connection));
    }
}

// Closing drops the engine's record of the parent's locks, without which the child would believe to
// have them.
void let_inherited_go(std::vector<Connection> inherited) {
    for (Connection& connection : inherited) {
        if (connection && !connection->disown()) static_cast<void>(connection.release());
    }
}

// An idle connection to the database that an open would reach now; the others are closed.
Connection take_idle() {
    Pool& mine = pool();
    std::vector<Connection> inherited;
    std::vector<Connection> stale;
    Connection found;
    {
        const std::lock_guard hold{mine.lock};
        inherited.swap(mine.inherited);
        while (!found && !mine.idle.empty()) {
            Connection last = std::move(mine.idle.back());
            mine.idle.pop_back();
            (last->current() ? found : stale.emplace_back()) = std::move(last);
        }
    }
    let_inherited_go(std::move(inherited));
    return found;
}

// At the end of the process: an orderly close leaves no log behind.
[[gnu::destructor]] void close_idle() {
    close_idle_connections();
}

}  // namespace

void close_idle_connections() noexcept {
    Pool& mine = pool();
    if (mine.owner != getpid()) return;
    std::vector<Connection> idle;
    {
        const std::lock_guard hold{mine.lock};
        idle.swap(mine.idle);
    }
}

Lease::~Lease() {
    if (!connection || !connection->tidy()) return;
    Pool& mine = pool();
    const std::lock_guard hold{mine.lock};
    if (mine.idle.size() < kIdle && mine.idle.capacity() > mine.idle.size()) {
        mine.idle.push_back(std::move(connection));
    }
}

std::uint32_t lease_connection(std::string& why) {
    Pool& mine = pool();
    watch_forks(forget_parent);
    auto lease = std::make_shared<Lease>();
    lease->connection = take_idle();
    if (!lease->connection) lease->connection = connect_backend(why);
    if (!lease->connection) return 0;
    auto held = std::make_unique<Held>(std::move(lease));
    const std::lock_guard hold{mine.lock};
    mine.idle.reserve(kIdle);
    const std::uint32_t handle = connection_handles.add(held.get());
    if (handle == 0) {
        why = "too many connections";
        return 0;
    }
    static_cast<void>(held.release());
    return handle;
}

std::shared_ptr<Lease> find_connection(std::uint32_t handle) {
    const std::lock_guard hold{pool().lock};
    const auto* held = static_cast<Held*>(connection_handles.find(handle));
    return held == nullptr ? nullptr : *held;
}

void return_connection(std::uint32_t handle) noexcept {
    std::unique_ptr<Held> held;
    {
        const std::lock_guard hold{pool().lock};
        held.reset(static_cast<Held*>(connection_handles.take(handle)));
    }
}

}  // namespace pwrmgt::vekdb

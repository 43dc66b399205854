// SPDX-License-Identifier: Apache-2.0
// 32-bit handles: a kind, a generation and a place in a table. A handle that is zero, was handed
// back, or is of another kind finds nothing.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>

namespace pwrmgt::vekdb {

enum class Kind : std::uint32_t { connection = 1, result = 2, content = 3 };

// What tests ask for: handles not handed back, and releases of a handle that was not live.
struct HandleCounts {
    std::uint32_t live = 0;
    std::uint64_t refused_releases = 0;
};

struct HandleSlot {
    std::atomic<std::uint32_t> handle{0};
    std::uint32_t generation = 0;
    std::uint32_t next_free = 0;
    void* object = nullptr;
};

inline constexpr std::uint32_t kHandles = 4096;
using HandleSlots = std::array<HandleSlot, kHandles>;

// The table behind the handles of one kind. Finding takes no lock, because a result is asked once
// per cell; adding and taking do. One handle is used by one thread at a time.
class HandleTable {
public:
    // The slots stand apart, so that they cost nothing until they are used.
    constexpr HandleTable(Kind kind, HandleSlots& slots) noexcept : kind_{kind}, slots_{slots} {}

    // A handle for `object`, which stays the caller's until it is taken; 0 when the table is full.
    std::uint32_t add(void* object) noexcept;

    // The object behind a live handle, else null.
    void* find(std::uint32_t handle) const noexcept {
        const HandleSlot& slot = slots_[handle % kHandles];
        if (handle == 0 || slot.handle.load(std::memory_order_acquire) != handle) return nullptr;
        return slot.object;
    }

    // Ends a handle and hands its object out; null, and counted, when the handle is not live.
    void* take(std::uint32_t handle) noexcept;

    // Ends some live handle and hands its object out; null when there is none.
    void* take_any() noexcept;

    HandleCounts counts() const noexcept;

    // In a forked child: no other thread is left that could hold the lock.
    void reset_lock() noexcept { new (&lock_) std::mutex; }

private:
    void* release(std::uint32_t index) noexcept;

    Kind kind_;
    HandleSlots& slots_;
    mutable std::mutex lock_;
    std::uint32_t used_ = 0;
    std::uint32_t first_free_ = kHandles;  // kHandles: none
    HandleCounts counts_;
};

// The tables of the process. Never destroyed: a program may still use the client while its static
// objects go.
inline constinit HandleSlots connection_slots{};
inline constinit HandleSlots result_slots{};
inline constinit HandleSlots content_slots{};
inline constinit HandleTable connection_handles{Kind::connection, connection_slots};
inline constinit HandleTable result_handles{Kind::result, result_slots};
inline constinit HandleTable content_handles{Kind::content, content_slots};

}  // namespace pwrmgt::vekdb

// SPDX-License-Identifier: Apache-2.0
// 32-bit handles: a kind, a generation and a place in a table. A handle that is zero, was handed
// back, or is of another kind finds nothing.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

namespace pwrmgt::vekdb {

enum class Kind : std::uint32_t { connection = 1, result = 2, content = 3 };

// What tests ask for: handles not handed back, and releases of a handle that was not live.
struct HandleCounts {
    std::uint32_t live = 0;
    std::uint64_t refused_releases = 0;
};

// The table behind the handles of one kind. Finding takes no lock, because a result is asked once
// per cell; adding and taking do. One handle is used by one thread at a time.
class HandleTable {
public:
    static constexpr std::uint32_t kCapacity = 4096;

    constexpr explicit HandleTable(Kind kind) noexcept : kind_{kind} {}

    // A handle for `object`, which stays the caller's until it is taken; 0 when the table is full.
    std::uint32_t add(void* object) noexcept;

    // The object behind a live handle, else null.
    void* find(std::uint32_t handle) const noexcept {
        if (handle == 0) return nullptr;
        const Chunk* chunk = chunks_[place(handle) / kChunk].load(std::memory_order_acquire);
        if (chunk == nullptr) return nullptr;
        const Slot& slot = (*chunk)[place(handle) % kChunk];
        return slot.handle.load(std::memory_order_acquire) == handle ? slot.object : nullptr;
    }

    // Ends a handle and hands its object out; null, and counted, when the handle is not live.
    void* take(std::uint32_t handle) noexcept;

    // Ends some live handle and hands its object out; null when there is none.
    void* take_any() noexcept;

    HandleCounts counts() const noexcept;

    // In a forked child: no other thread is left that could hold the lock.
    void reset_lock() noexcept { new (&lock_) std::mutex; }

private:
    static constexpr std::uint32_t kChunk = 64;
    static constexpr std::uint32_t kPlaceBits = 12;
    static constexpr std::uint32_t kGenerations = 1U << 18;
    static constexpr std::uint32_t kNone = ~0U;

    struct Slot {
        std::atomic<std::uint32_t> handle{0};
        std::uint32_t generation = 0;
        std::uint32_t next_free = kNone;
        void* object = nullptr;
    };
    using Chunk = std::array<Slot, kChunk>;

    static constexpr std::uint32_t place(std::uint32_t handle) noexcept {
        return handle % kCapacity;
    }
    Slot* free_slot(std::uint32_t& index) noexcept;
    void* release(Slot& slot, std::uint32_t index) noexcept;

    Kind kind_;
    mutable std::mutex lock_;
    std::array<std::atomic<Chunk*>, kCapacity / kChunk> chunks_{};
    std::uint32_t used_ = 0;
    std::uint32_t first_free_ = kNone;
    HandleCounts counts_;
};

// The tables of the process.
HandleTable& connection_handles() noexcept;
HandleTable& result_handles() noexcept;
HandleTable& content_handles() noexcept;

}  // namespace pwrmgt::vekdb

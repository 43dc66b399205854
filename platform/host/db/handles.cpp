// SPDX-License-Identifier: Apache-2.0
// Giving handles out and taking them back.
#include "handles.h"

#include <new>

namespace pwrmgt::vekdb {

namespace {

// Never destroyed: a program may still use the client while its static objects go.
constinit HandleTable connections{Kind::connection};
constinit HandleTable results{Kind::result};
constinit HandleTable contents{Kind::content};

}  // namespace

HandleTable& connection_handles() noexcept {
    return connections;
}
HandleTable& result_handles() noexcept {
    return results;
}
HandleTable& content_handles() noexcept {
    return contents;
}

HandleTable::Slot* HandleTable::free_slot(std::uint32_t& index) noexcept {
    if (first_free_ != kNone) {
        index = first_free_;
        Slot& slot = (*chunks_[index / kChunk].load(std::memory_order_relaxed))[index % kChunk];
        first_free_ = slot.next_free;
        return &slot;
    }
    if (used_ == kCapacity) return nullptr;
    if (used_ % kChunk == 0) {
        // Kept for good: a lookup without a lock may still look at it.
        auto* chunk = new (std::nothrow) Chunk;
        if (chunk == nullptr) return nullptr;
        chunks_[used_ / kChunk].store(chunk, std::memory_order_release);
    }
    index = used_++;
    return &(*chunks_[index / kChunk].load(std::memory_order_relaxed))[index % kChunk];
}

std::uint32_t HandleTable::add(void* object) noexcept {
    const std::lock_guard hold{lock_};
    std::uint32_t index = 0;
    Slot* slot = free_slot(index);
    if (slot == nullptr) return 0;
    slot->generation = (slot->generation + 1) % kGenerations;
    slot->object = object;
    const std::uint32_t handle =
        static_cast<std::uint32_t>(kind_) << 30 | slot->generation << kPlaceBits | index;
    slot->handle.store(handle, std::memory_order_release);
    ++counts_.live;
    return handle;
}

void* HandleTable::release(Slot& slot, std::uint32_t index) noexcept {
    void* object = slot.object;
    slot.handle.store(0, std::memory_order_release);
    slot.object = nullptr;
    slot.next_free = first_free_;
    first_free_ = index;
    --counts_.live;
    return object;
}

void* HandleTable::take(std::uint32_t handle) noexcept {
    const std::lock_guard hold{lock_};
    if (find(handle) == nullptr) {
        ++counts_.refused_releases;
        return nullptr;
    }
    const std::uint32_t index = place(handle);
    return release((*chunks_[index / kChunk].load(std::memory_order_relaxed))[index % kChunk],
                   index);
}

void* HandleTable::take_any() noexcept {
    const std::lock_guard hold{lock_};
    for (std::uint32_t index = 0; index < used_; ++index) {
        Slot& slot = (*chunks_[index / kChunk].load(std::memory_order_relaxed))[index % kChunk];
        if (slot.handle.load(std::memory_order_relaxed) != 0) return release(slot, index);
    }
    return nullptr;
}

HandleCounts HandleTable::counts() const noexcept {
    const std::lock_guard hold{lock_};
    return counts_;
}

}  // namespace pwrmgt::vekdb

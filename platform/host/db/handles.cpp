// SPDX-License-Identifier: Apache-2.0
// Giving handles out and taking them back.
#include "handles.h"

namespace pwrmgt::vekdb {

namespace {

// kind, generation and place, from the top
constexpr std::uint32_t kKindShift = 30;
constexpr std::uint32_t kPlaceBits = 12;
constexpr std::uint32_t kGenerations = 1U << (kKindShift - kPlaceBits);
static_assert(kHandles == 1U << kPlaceBits);

}  // namespace

std::uint32_t HandleTable::add(void* object) noexcept {
    const std::lock_guard hold{lock_};
    const bool reuse = first_free_ != kHandles;
    if (!reuse && used_ == kHandles) return 0;
    const std::uint32_t index = reuse ? first_free_ : used_++;
    HandleSlot& slot = slots_[index];
    if (reuse) first_free_ = slot.next_free;
    slot.generation = (slot.generation + 1) % kGenerations;
    const std::uint32_t handle =
        static_cast<std::uint32_t>(kind_) << kKindShift | slot.generation << kPlaceBits | index;
    slot.object = object;
    slot.handle.store(handle, std::memory_order_release);
    ++counts_.live;
    return handle;
}

void* HandleTable::release(std::uint32_t index) noexcept {
    HandleSlot& slot = slots_[index];
    void* object = slot.object;
    slot.object = nullptr;
    slot.handle.store(0, std::memory_order_release);
    slot.next_free = first_free_;
    first_free_ = index;
    --counts_.live;
    return object;
}

void* HandleTable::take(std::uint32_t handle) noexcept {
    const std::lock_guard hold{lock_};
    if (find(handle) != nullptr) return release(handle % kHandles);
    ++counts_.refused_releases;
    return nullptr;
}

void* HandleTable::take_any() noexcept {
    const std::lock_guard hold{lock_};
    for (std::uint32_t index = 0; index < used_; ++index) {
        if (slots_[index].handle.load(std::memory_order_relaxed) != 0) return release(index);
    }
    return nullptr;
}

HandleCounts HandleTable::counts() const noexcept {
    const std::lock_guard hold{lock_};
    return counts_;
}

}  // namespace pwrmgt::vekdb

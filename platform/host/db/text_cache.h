// SPDX-License-Identifier: Apache-2.0
// Things kept by the text of a statement; one beyond their number replaces the one not used
// longest.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace pwrmgt::vekdb {

template <class Value>
class TextCache {
public:
    // Twice the texts that the library has.
    static constexpr std::size_t kCapacity = 96;

    // Null when there is none.
    Value* find(std::string_view text) {
        const auto found = entries_.find(text);
        if (found == entries_.end()) return nullptr;
        found->second.used_at = ++uses_;
        return &found->second.value;
    }

    Value& keep(std::string text, Value value) {
        if (entries_.size() >= kCapacity) drop_oldest();
        const auto kept =
            entries_.insert_or_assign(std::move(text), Entry{std::move(value), ++uses_});
        return kept.first->second.value;
    }

    void clear() noexcept { entries_.clear(); }

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>{}(text);
        }
    };
    struct Entry {
        Value value;
        std::uint64_t used_at = 0;
    };

    void drop_oldest() noexcept {
        entries_.erase(std::min_element(
            entries_.begin(), entries_.end(),
            [](const auto& a, const auto& b) { return a.second.used_at < b.second.used_at; }));
    }

    std::unordered_map<std::string, Entry, Hash, std::equal_to<>> entries_;
    std::uint64_t uses_ = 0;
};

}  // namespace pwrmgt::vekdb

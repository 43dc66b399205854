// SPDX-License-Identifier: Apache-2.0
// What every answer tells beside its values: where they come from, when it was asked, and how old
// the newest reading is.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "command.h"
#include "print.h"

namespace pwrmgt::pwrmgtctl {

enum class Origin { working_tables, persistent_tables, firmware };

// Two slots: a daemon that runs has closed a newer slot by then.
inline constexpr int64_t kStaleAfter_s = 60;

// How old a reading is. A slot's reading is as old as the end of the slot.
struct Age {
    int64_t age_s;
    bool stale;
};

// The age at `asked_at_s` of a reading that was complete at `taken_s` and should be of `due_s`:
// now, or the end of a window in the past.
Age age_of(int64_t taken_s, int64_t asked_at_s, int64_t due_s);

// "12 s old", "3 h old, STALE", "90 s in the future".
std::string age_words(const Age& age);

// The outcome of a view of what is now: shown, but told apart when it is stale.
Outcome live_view(std::string document, const Age& age);

// The keys `timestamp_s`, `time_utc`, `age_s` and `stale`.
void add_taken(Json& document, int64_t taken_s, const Age& age);

// The keys `age_s` and `stale`.
void add_age(Json& document, const std::optional<Age>& age);

struct Answer {
    std::string schema;  // name and version, "psu.list/1"
    Origin origin;
    std::string title;  // the first line, in words
    int64_t asked_at_s;
    double query_ms;
};

// The whole answer: the title and the origin over the text, or one JSON document of what every
// answer has and the body's keys.
std::string answer_text(const Answer& answer, const CommonOptions& options,
                        const std::string& text);
std::string answer_json(const Answer& answer, const CommonOptions& options, const Json& body);
std::string answer_document(const Answer& answer, const CommonOptions& options,
                            const std::string& text, const Json& body);

}  // namespace pwrmgt::pwrmgtctl

// SPDX-License-Identifier: Apache-2.0
#include "answer.h"

#include <utility>

#include "database.h"

namespace pwrmgt::pwrmgtctl {
namespace {

std::optional<std::string> database_of(Origin origin) {
    if (origin == Origin::firmware) return std::nullopt;
    return origin == Origin::working_tables ? working_database() : persistent_database();
}

// In the largest unit that tells at least two of it.
std::string rough_span(int64_t span_s) {
    if (span_s < 120) return std::to_string(span_s) + " s";
    if (span_s < 7200) return std::to_string(span_s / 60) + " min";
    if (span_s < 172800) return std::to_string(span_s / 3600) + " h";
    return std::to_string(span_s / 86400) + " days";
}

}  // namespace

Age age_of(int64_t taken_s, int64_t asked_at_s, int64_t due_s) {
    return {asked_at_s - taken_s, due_s - taken_s > kStaleAfter_s};
}

std::string age_words(const Age& age) {
    if (age.age_s < 0) return rough_span(-age.age_s) + " in the future";
    return rough_span(age.age_s) + (age.stale ? " old, STALE" : " old");
}

Outcome live_view(std::string document, const Age& age) {
    if (!age.stale) return succeed(std::move(document));
    return succeed_but(Exit::stale, std::move(document),
                       "the newest reading is " + rough_span(age.age_s) + " old");
}

void add_age(Json& document, const std::optional<Age>& age) {
    document["age_s"] = age ? Json(age->age_s) : Json(nullptr);
    document["stale"] = age ? Json(age->stale) : Json(nullptr);
}

void add_taken(Json& document, int64_t taken_s, const Age& age) {
    document["timestamp_s"] = taken_s;
    document["time_utc"] = time_text(taken_s, Zone::utc);
    add_age(document, age);
}

std::string answer_text(const Answer& answer, const CommonOptions& options,
                        const std::string& text) {
    const std::optional<std::string> database = database_of(answer.origin);
    return answer.title + (database ? "; database " + *database : "; asked of the firmware") +
           '\n' + text + (options.timing ? timing_text(answer.query_ms) : std::string());
}

std::string answer_json(const Answer& answer, const CommonOptions& options, const Json& body) {
    const std::optional<std::string> database = database_of(answer.origin);
    Json document;
    document["schema"] = "pwrmgtctl." + answer.schema;
    document["source"] = database ? "database" : "firmware";
    document["database"] = database ? Json(*database) : Json(nullptr);
    document["asked_at_s"] = answer.asked_at_s;
    document["asked_at_utc"] = time_text(answer.asked_at_s, Zone::utc);
    if (options.timing) document["query_ms"] = rounded_ms(answer.query_ms);
    document.update(body);
    return json_text(document, options.one_line ? JsonForm::line : JsonForm::indented);
}

std::string answer_document(const Answer& answer, const CommonOptions& options,
                            const std::string& text, const Json& body) {
    return options.json ? answer_json(answer, options, body) : answer_text(answer, options, text);
}

}  // namespace pwrmgt::pwrmgtctl

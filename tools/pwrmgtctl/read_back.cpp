// SPDX-License-Identifier: Apache-2.0
#include "read_back.h"

#include <utility>

namespace pwrmgt::pwrmgtctl {
namespace {

std::string words_of(const Value& value, const char* unit) {
    return value ? std::to_string(*value) + unit : "none";
}

}  // namespace

Outcome tell_read_back(const CommonOptions& options, Answer answer, Json body,
                       const ReadBack& value) {
    answer.title += ' ' + words_of(value.set, value.unit);
    body["set"] = json_value(value.set);
    body["read_back"] = json_value(value.held);
    body["as_set"] = value.status == 0 && value.held == value.set;
    if (value.status != 0) {
        const Outcome unread = explain(value.call, value.status, "");
        return succeed_but(unread.exit, answer_document(answer, options, "", body),
                           "the value was set but not read back: " + unread.error);
    }
    const std::string held = words_of(value.held, value.unit);
    std::string document =
        answer_document(answer, options, "Read back: " + held + '\n', std::move(body));
    if (value.held == value.set) return succeed(std::move(document));
    return succeed_but(Exit::failure, std::move(document),
                       "another value is held than was set: " + held);
}

}  // namespace pwrmgt::pwrmgtctl

// SPDX-License-Identifier: Apache-2.0
// The recorder's own book-keeping: scripts, chosen failures, handles.
#include "recorder.h"

#include <string>

namespace pwrmgt::test {

namespace {

std::string kind_name(char kind) {
    return kind == 'c' ? "connection" : kind == 'r' ? "result" : "content";
}

}  // namespace

Recorder& platform() {
    static Recorder recorder;
    return recorder;
}

std::vector<std::string> Recorder::named(const std::string& first_word) const {
    std::vector<std::string> found;
    for (const std::string& call : calls) {
        if (call == first_word || call.starts_with(first_word + " ")) found.push_back(call);
    }
    return found;
}

Recorder::Verdict Recorder::judge(Operation operation) {
    if (quiet) return {};
    operations.push_back(operation);
    const size_t number = ++fallible_;
    const size_t nth = ++seen_[operation];
    Verdict verdict;
    if (fault && fault->at == number) {
        verdict = {true, fault->mode, fault->mode == Mode::minus_one ? -1 : 1, fault->length};
    }
    for (const Chosen& chosen : chosen_) {
        if (chosen.operation == operation && chosen.nth == nth) {
            verdict = {true, chosen.mode, chosen.result, 0};
        }
    }
    if (verdict.fails && verdict.mode == Mode::thrown) throw PlatformFault{"scripted"};
    return verdict;
}

uint32_t Recorder::hand_out(char kind) {
    const uint32_t handle = next_handle_++;
    out_[handle] = kind;
    return handle;
}

bool Recorder::alive(char kind, uint32_t handle) const {
    const auto found = out_.find(handle);
    return found != out_.end() && found->second == kind;
}

void Recorder::take_back(char kind, uint32_t handle) {
    if (!alive(kind, handle)) {
        misuse_.push_back(kind_name(kind) + " " + std::to_string(handle) + " handed back wrongly");
        return;
    }
    out_.erase(handle);
    results_.erase(handle);
}

uint32_t Recorder::new_result(const std::string& table) {
    const uint32_t handle = hand_out('r');
    OpenRows& opened = results_[handle];
    if (!selects_.empty()) {
        opened.rows = selects_.front();
        selects_.pop_front();
    } else if (const auto found = tables_.find(table); found != tables_.end()) {
        opened.rows = found->second;
    }
    return handle;
}

// 0 is no misuse here: functions that do not test their handle pass it on, and the client refuses.
void Recorder::use_connection(uint32_t handle) {
    if (handle == 0 || handle == kDb || alive('c', handle)) return;
    misuse_.push_back("connection " + std::to_string(handle) + " used while not open");
}

void Recorder::use_content(uint32_t handle) {
    if (handle == 0 || alive('v', handle)) return;
    misuse_.push_back("content " + std::to_string(handle) + " used while not out");
}

Recorder::OpenRows* Recorder::open_rows(uint32_t handle) {
    const auto found = results_.find(handle);
    if (found != results_.end()) return &found->second;
    misuse_.push_back("result " + std::to_string(handle) + " used while not open");
    return nullptr;
}

std::optional<Answer> Recorder::next_answer() {
    if (answers_.empty()) return std::nullopt;
    Answer answer = answers_.front();
    answers_.pop_front();
    return answer;
}

std::vector<std::string> Recorder::handle_faults() const {
    std::vector<std::string> faults = misuse_;
    for (const auto& [handle, kind] : out_) {
        faults.push_back(kind_name(kind) + " " + std::to_string(handle) + " never handed back");
    }
    return faults;
}

}  // namespace pwrmgt::test

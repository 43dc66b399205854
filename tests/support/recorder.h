// SPDX-License-Identifier: Apache-2.0
// A scripted platform that stands in for the four platform libraries and the clock: it logs each
// call, answers from a script, makes chosen calls fail, and accounts for every handle.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace pwrmgt::test {

// A caller's own open connection, as the writers get it. Closing it is misuse.
inline constexpr uint32_t kDb = 7;

using Row = std::vector<int64_t>;

// What a select answers. After the rows each step gives `end`.
struct Rows {
    std::vector<Row> rows;
    int end = 10;
    std::optional<int> told_count = {};  // instead of the number of rows
};

// What the firmware answers.
struct Answer {
    std::vector<uint8_t> bytes;
    int sent = 0;                       // the transport's own result
    std::optional<uint32_t> told = {};  // length told, instead of the number of bytes
};

enum class Operation {
    open,
    query,
    raw,
    raw_rows,
    insert,
    update,
    remove,
    step,
    row_count,
    column,
    content,
    put,
    property,
    ipmi,
    clock
};

enum class Mode {
    error,              // the operation's failure value; nothing handed out
    minus_one,          // another failure value
    error_with_handle,  // a failure value, and a handle all the same
    no_handle,          // success, but no handle
    thrown,             // an exception
    early_end,          // a step: no more rows, though some are left
    no_row,             // a step: a row is told, and none is current
    no_rows,            // a row count: 0
    one_row_less,       // a row count: one less than there are
    one_row_more,       // a row count: one more than there are
    other_length        // the firmware: `length` bytes of its answer, zeros after its end
};

struct Fault {
    size_t at;  // which of the calls that can fail, from 1
    Mode mode;
    size_t length = 0;  // of an answer
};

struct PlatformFault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Recorder {
public:
    // -- script
    void answer_rows(Rows rows) { selects_.push_back(std::move(rows)); }
    void answer_rows(std::vector<Row> rows) { selects_.push_back({std::move(rows), 10, {}}); }
    // What each select of a table answers when no answer of its own is left.
    void answer_table(const std::string& table, std::vector<Row> rows) {
        tables_[table] = {std::move(rows), 10, {}};
    }
    void answer_ipmi(Answer answer) { answers_.push_back(std::move(answer)); }
    void set_property(const std::string& path, uint32_t value) { properties_[path] = value; }

    int64_t clock = 1'700'000'000;
    bool quoril = false;
    int property_missing = 3;  // what a reader returns for a key without a value

    // -- failures. One by its number among all calls that can fail, and any by operation.
    std::optional<Fault> fault;
    void fail(Operation operation, int result = 1, size_t nth = 1, Mode mode = Mode::error) {
        chosen_.push_back({operation, nth, result, mode});
    }

    // Keeps no calls and no operations, and nothing fails: for walks through thousands of cases,
    // which would otherwise be spent on texts that nobody reads. Handles are accounted for.
    bool quiet = false;

    // -- what happened
    std::vector<std::string> calls;  // every call, arguments included
    std::vector<std::string> named(const std::string& first_word) const;
    size_t count(const std::string& first_word) const { return named(first_word).size(); }
    size_t fallible_calls() const { return fallible_; }
    std::vector<Operation> operations;  // those that can fail, in order
    std::map<size_t, size_t>
        answer_lengths;  // bytes that the firmware answered, by call that can fail

    // Handles that are still out, or were handed back wrongly, in words; empty when all is well.
    std::vector<std::string> handle_faults() const;

    void reset() { *this = Recorder{}; }

    // -- for the stand-ins
    struct Verdict {
        bool fails = false;
        Mode mode = Mode::error;
        int result = 1;
        size_t length = 0;
    };
    Verdict judge(Operation operation);
    void log(const std::string& line) {
        if (!quiet) calls.push_back(line);
    }
    uint32_t hand_out(char kind);
    void take_back(char kind, uint32_t handle);
    bool alive(char kind, uint32_t handle) const;
    uint32_t new_result(const std::string& table);
    void use_connection(uint32_t handle);
    void use_content(uint32_t handle);
    struct OpenRows {
        Rows rows;
        size_t next = 0;
        bool current = false;
    };
    OpenRows* open_rows(uint32_t handle);
    std::optional<Answer> next_answer();
    const std::map<std::string, uint32_t>& properties() const { return properties_; }

private:
    struct Chosen {
        Operation operation;
        size_t nth;
        int result;
        Mode mode;
    };
    std::deque<Rows> selects_;
    std::map<std::string, Rows> tables_;
    std::deque<Answer> answers_;
    std::map<std::string, uint32_t> properties_;
    std::vector<Chosen> chosen_;
    std::map<Operation, size_t> seen_;
    size_t fallible_ = 0;
    std::map<uint32_t, char> out_;
    std::map<uint32_t, OpenRows> results_;
    std::vector<std::string> misuse_;
    uint32_t next_handle_ = 100;
};

// The one recorder that the stand-ins of this program talk to.
Recorder& platform();

}  // namespace pwrmgt::test

// SPDX-License-Identifier: Apache-2.0
#include "connection.h"

#include <fcntl.h>
#include <mysqld_error.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "../literals.h"
#include "../state_dir.h"
#include "../statement_kind.h"
#include "dialect.h"
#include "outcome.h"
#include "quiet_pipe.h"

namespace pwrmgt::vekdb::mariadb {

namespace {

// A server that does not answer costs each try as long as an open may take.
constexpr std::chrono::seconds kBetweenTries{5};

// What has neither values nor rows is sent as it is.
bool is_plain(std::string_view word) {
    constexpr std::array<std::string_view, 5> kPlain{"begin", "commit", "rollback", "savepoint",
                                                     "release"};
    return std::find(kPlain.begin(), kPlain.end(), word) != kPlain.end();
}

}  // namespace

// The session goes first: it takes the server's side of all statements with it in one message.
MariadbConnection::~MariadbConnection() {
    session_.reset();
}

Outcome MariadbConnection::run(std::string_view sql, std::span<const std::int64_t> values,
                               Rows* rows) {
    const std::string word = first_word(sql);
    if (const auto refused = refuse_after_loss(word)) return *refused;
    if (word.empty() && says_nothing(sql)) return Outcome::refused;
    if (is_broken_ && !reach_again()) return Outcome::failed;
    has_traces_ |= word != "truncate" && !leaves_no_trace(word);
    const bool together = in_transaction();
    const QuietPipe quiet;
    if (is_plain(word)) {
        const int failed = mysql_real_query(session_.get(), sql.data(), sql.size());
        return finish(failed == 0 ? 0 : mysql_errno(session_.get()), together);
    }
    const std::string words = translated(sql, together);
    unsigned error = execute(words.empty() ? sql : words, values, rows);
    // To empty a table at once takes a right that deleting its rows does not.
    if (error == ER_TABLEACCESS_DENIED_ERROR && words.starts_with("TRUNCATE")) {
        error = execute(word == "truncate" ? as_delete(sql) : sql, values, rows);
    }
    return finish(error, together);
}

// Nothing is done until the end of a transaction that the server has undone, and an end that would
// keep it fails.
std::optional<Outcome> MariadbConnection::refuse_after_loss(std::string_view word) {
    if (undone_ == Outcome::ok) return std::nullopt;
    const Outcome refused = undone_;
    if (word == "rollback" || word == "commit") undone_ = Outcome::ok;
    return word == "rollback" && !is_broken_ ? std::nullopt : std::optional{refused};
}

// Settings that a user made are not made again, so he gets no session without them.
bool MariadbConnection::reach_again() {
    const auto now = std::chrono::steady_clock::now();
    if (has_traces_ || now < next_try_) return false;
    std::string why;
    const std::optional<Address> address = parse_address(setting_, why);
    Session fresh = address ? open_session(*address, why) : nullptr;
    next_try_ = now + kBetweenTries;
    if (!fresh) return false;
    session_ = std::move(fresh);
    statements_.clear();
    is_broken_ = false;
    fit_ = true;
    return true;
}

unsigned MariadbConnection::execute(std::string_view sql, std::span<const std::int64_t> values,
                                    Rows* rows) {
    if (Statement* const kept = statements_.find(sql); kept != nullptr) {
        return kept->run(values, rows);
    }
    Statement made;
    if (const unsigned failed = made.prepare(session_.get(), sql); failed != 0) return failed;
    return statements_.keep(std::string{sql}, std::move(made)).run(values, rows);
}

Outcome MariadbConnection::finish(unsigned error, bool together) {
    const Outcome outcome = outcome_of(error);
    if (error == ER_NO_SUCH_TABLE) suspect_missing_table();
    is_broken_ = is_broken_ || ends_session(error);
    // The server undoes all of a transaction then, and what follows would be no part of any.
    if (together && (error == ER_LOCK_DEADLOCK || is_broken_)) undone_ = outcome;
    if (error == ER_NO_SUCH_TABLE || outcome == Outcome::failed || outcome == Outcome::damaged) {
        fit_ = false;
    }
    return outcome;
}

bool MariadbConnection::in_transaction() const noexcept {
    unsigned status = 0;
    mariadb_get_infov(session_.get(), MARIADB_CONNECTION_SERVER_STATUS, &status);
    return (status & SERVER_STATUS_IN_TRANS) != 0;
}

bool MariadbConnection::tidy() noexcept {
    if (!fit_ || has_traces_ || is_broken_) return false;
    undone_ = Outcome::ok;
    if (!in_transaction()) return true;
    const QuietPipe quiet;
    return mysql_rollback(session_.get()) == 0;
}

// A session has nothing to say between statements: when there is something to read, the server is
// most likely gone, and asking it tells for sure.
bool MariadbConnection::current() const {
    if (choose_server() != setting_) return false;
    pollfd socket{mysql_get_socket(session_.get()), POLLIN, 0};
    if (poll(&socket, 1, 0) == 0) return true;
    const QuietPipe quiet;
    return mysql_ping(session_.get()) == 0;
}

// What would be said to the server at the end would end the parent's session.
bool MariadbConnection::disown() noexcept {
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nowhere < 0) return false;
    const bool cut = dup3(nowhere, mysql_get_socket(session_.get()), O_CLOEXEC) >= 0;
    close(nowhere);
    return cut;
}

}  // namespace pwrmgt::vekdb::mariadb

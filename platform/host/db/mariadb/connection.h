// SPDX-License-Identifier: Apache-2.0
// Running statements on one session with the server at a time: a user who keeps a connection
// open gets another session after the server went away.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "../backend.h"
#include "../text_cache.h"
#include "session.h"
#include "statement.h"

namespace pwrmgt::vekdb::mariadb {

class MariadbConnection final : public BackendConnection {
public:
    MariadbConnection(Session session, std::string setting)
        : setting_{std::move(setting)}, session_{std::move(session)} {}
    ~MariadbConnection() override;
    MariadbConnection(const MariadbConnection&) = delete;
    MariadbConnection& operator=(const MariadbConnection&) = delete;

    Outcome run(std::string_view sql, std::span<const std::int64_t> values, Rows* rows) override;
    bool tidy() noexcept override;
    bool current() const override;
    bool disown() noexcept override;

private:
    std::optional<Outcome> refuse_after_loss(std::string_view word);
    bool reach_again();
    unsigned execute(std::string_view sql, std::span<const std::int64_t> values, Rows* rows);
    Outcome finish(unsigned error, bool in_transaction);
    bool in_transaction() const noexcept;

    std::string setting_;
    Session session_;
    TextCache<Statement> statements_;
    bool has_traces_ = false;  // of settings that a new session would not have
    bool is_broken_ = false;
    bool fit_ = true;
    // What the rest of a transaction gets that the server has undone, up to its end.
    Outcome undone_ = Outcome::ok;
    std::chrono::steady_clock::time_point next_try_{};
};

}  // namespace pwrmgt::vekdb::mariadb

// SPDX-License-Identifier: Apache-2.0
// Running statements on one session with the server.
#pragma once

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
    unsigned execute(std::string_view sql, std::span<const std::int64_t> values, Rows* rows);
    Outcome finish(unsigned error);
    bool in_transaction() const noexcept;

    std::string setting_;
    Session session_;
    TextCache<Statement> statements_;
    bool fit_ = true;
    bool transaction_lost_ = false;  // and its user has not been told so by the end of it
};

}  // namespace pwrmgt::vekdb::mariadb

// SPDX-License-Identifier: Apache-2.0
// A statement that the server has prepared, with the places of its values and cells.
#pragma once

#include <mysql.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "../rows.h"

namespace pwrmgt::vekdb::mariadb {

class Statement {
public:
    // 0, or the error's number.
    unsigned prepare(MYSQL* session, std::string_view sql);

    // The rows go to `rows` where it is not null.
    unsigned run(std::span<const std::int64_t> values, Rows* rows);

private:
    struct Close {
        void operator()(MYSQL_STMT* statement) const noexcept { mysql_stmt_close(statement); }
    };

    unsigned bind_values(std::span<const std::int64_t> values);
    unsigned bind_cells();
    unsigned fetch(Rows& rows);
    unsigned error() const noexcept;

    std::unique_ptr<MYSQL_STMT, Close> handle_;
    std::vector<MYSQL_BIND> value_places_;
    std::vector<MYSQL_BIND> cell_places_;
    std::vector<std::int64_t> cells_;
    std::vector<my_bool> empty_;
    std::vector<my_bool> cut_;
};

}  // namespace pwrmgt::vekdb::mariadb

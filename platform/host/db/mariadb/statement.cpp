// SPDX-License-Identifier: Apache-2.0
#include "statement.h"

#include <errmsg.h>
#include <mysqld_error.h>

#include <new>

namespace pwrmgt::vekdb::mariadb {

namespace {

MYSQL_BIND integer_at(const std::int64_t* place) {
    MYSQL_BIND bind{};
    bind.buffer_type = MYSQL_TYPE_LONGLONG;
    // The library reads values through the same pointer that it writes cells to.
    bind.buffer = const_cast<std::int64_t*>(place);
    bind.buffer_length = sizeof *place;
    return bind;
}

}  // namespace

unsigned Statement::error() const noexcept {
    const unsigned number = mysql_stmt_errno(handle_.get());
    return number == 0 ? unsigned{CR_UNKNOWN_ERROR} : number;
}

unsigned Statement::prepare(MYSQL* session, std::string_view sql) {
    handle_.reset(mysql_stmt_init(session));
    if (!handle_) return CR_OUT_OF_MEMORY;
    if (mysql_stmt_prepare(handle_.get(), sql.data(), sql.size()) != 0) return error();
    value_places_.reserve(mysql_stmt_param_count(handle_.get()));
    return 0;
}

unsigned Statement::bind_values(std::span<const std::int64_t> values) {
    // A text that the server divides otherwise than the client does.
    if (mysql_stmt_param_count(handle_.get()) != values.size()) return ER_PARSE_ERROR;
    if (values.empty()) return 0;
    value_places_.clear();
    for (const std::int64_t& value : values) {
        value_places_.push_back(integer_at(&value));
    }
    return mysql_stmt_bind_param(handle_.get(), value_places_.data()) == 0 ? 0 : error();
}

unsigned Statement::bind_cells() {
    const std::size_t columns = mysql_stmt_field_count(handle_.get());
    if (cells_.size() == columns) return 0;
    cells_.resize(columns);
    empty_.resize(columns);
    cut_.resize(columns);
    cell_places_.resize(columns);
    for (std::size_t column = 0; column < columns; ++column) {
        MYSQL_BIND& place = cell_places_[column];
        place = integer_at(&cells_[column]);
        place.is_null = &empty_[column];
        place.error = &cut_[column];
    }
    return mysql_stmt_bind_result(handle_.get(), cell_places_.data()) == 0 ? 0 : error();
}

unsigned Statement::fetch(Rows& rows) {
    const std::size_t columns = cells_.size();
    int code = 0;
    // A cell that is no integer is converted, and a part that is lost is no failure.
    while ((code = mysql_stmt_fetch(handle_.get())) == 0 || code == MYSQL_DATA_TRUNCATED) {
        std::uint32_t* cells = rows.add_row();
        for (std::size_t column = 0; column < columns; ++column) {
            const bool is_empty = empty_[column] != 0;
            cells[column] = is_empty ? 0 : static_cast<std::uint32_t>(cells_[column]);
            if (is_empty) rows.mark_empty(column);
        }
    }
    return code == MYSQL_NO_DATA ? 0 : error();
}

unsigned Statement::run(std::span<const std::int64_t> values, Rows* rows) {
    if (const unsigned failed = bind_values(values); failed != 0) return failed;
    if (mysql_stmt_execute(handle_.get()) != 0) return error();
    const std::size_t columns = mysql_stmt_field_count(handle_.get());
    if (rows != nullptr) rows->start(columns);
    if (columns == 0) return 0;
    // Also when memory for the rows runs out: what is not read yet would be taken for the next
    // answer.
    const struct Drain {
        MYSQL_STMT* handle;
        ~Drain() { mysql_stmt_free_result(handle); }
    } drain{handle_.get()};
    if (rows == nullptr) return 0;
    const unsigned failed = bind_cells();
    return failed != 0 ? failed : fetch(*rows);
}

}  // namespace pwrmgt::vekdb::mariadb

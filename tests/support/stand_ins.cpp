// SPDX-License-Identifier: Apache-2.0
// The platform functions and the clock of a test program, answered by the recorder. The library
// under test finds these before any platform library.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

#include "ipmiraw.h"
#include "platform_id.h"
#include "recorder.h"
#include "vekdb_client.h"
#include "vekdb_prop.h"

using namespace pwrmgt::test;

namespace {

std::string text_or_null(const char* text) {
    return text != nullptr ? text : "null";
}

// A select's answer under a verdict: the failure value, and the handle unless withheld.
int answer_select(const Recorder::Verdict& verdict, const std::string& table, uint32_t* result) {
    const bool handed = !verdict.fails || verdict.mode == Mode::error_with_handle;
    if (handed) *result = platform().new_result(table);
    return verdict.fails && verdict.mode != Mode::no_handle ? verdict.result : 0;
}

int plain(Operation operation) {
    const Recorder::Verdict verdict = platform().judge(operation);
    return verdict.fails ? verdict.result : 0;
}

template <class T>
int read_column(const char* width, uint32_t result, int column, T* out) {
    if (!platform().quiet) platform().log(std::string(width) + " " + std::to_string(column));
    if (plain(Operation::column) != 0) return 1;
    Recorder::OpenRows* const opened = platform().open_rows(result);
    if (opened == nullptr || !opened->current) return 1;
    const Row& row = opened->rows.rows[opened->next - 1];
    if (column < 0 || static_cast<size_t>(column) >= row.size()) return 1;
    *out = static_cast<T>(row[static_cast<size_t>(column)]);
    return 0;
}

int put(const char* width, uint32_t content, const char* column, int64_t value) {
    platform().log(std::string(width) + " " + column + " " + std::to_string(value));
    const int failed = plain(Operation::put);
    return platform().alive('v', content) ? failed : 1;
}

// A step that tells something else than what is there.
int step_astray(Mode mode, uint32_t result) {
    Recorder::OpenRows* const opened = platform().open_rows(result);
    if (opened == nullptr) return 1;
    opened->current = false;
    if (mode == Mode::no_row) return 9;
    opened->next = opened->rows.rows.size();
    return 10;
}

int miscount(Mode mode, int count) {
    switch (mode) {
        case Mode::no_rows:
            return 0;
        case Mode::one_row_less:
            return count - 1;
        case Mode::one_row_more:
            return count + 1;
        default:
            return count;
    }
}

template <class T>
int read_property(const char* width, const char* path, T* out) {
    platform().log(std::string(width) + " " + path);
    const Recorder::Verdict verdict = platform().judge(Operation::property);
    if (verdict.fails) return verdict.result;
    const auto found = platform().properties().find(path);
    if (found == platform().properties().end()) return platform().property_missing;
    *out = static_cast<T>(found->second);
    return 0;
}

}  // namespace

extern "C" {

uint32_t vek_db_open(const char* host, const char* user, const char* password, const char* dbname,
                     int flags) {
    platform().log("open " + text_or_null(host) + " " + text_or_null(user) + " '" +
                   text_or_null(password) + "' " + text_or_null(dbname) + " " +
                   std::to_string(flags));
    if (platform().judge(Operation::open).fails) return 0;
    return platform().hand_out('c');
}

void vek_db_close(uint32_t conn) {
    platform().log("close");
    platform().take_back('c', conn);
}

int vek_db_query(uint32_t conn, const char* table, const char* const* columns, int n_columns,
                 const char* where, int limit, int offset, const char* order, uint32_t* result) {
    std::string line = std::string("query ") + table + " [";
    for (int at = 0; columns != nullptr && at < n_columns; ++at) {
        line += (at > 0 ? "," : "") + std::string(columns[at]);
    }
    if (columns == nullptr && n_columns != 0) line += std::to_string(n_columns) + " without names";
    line += "] where " + text_or_null(where) + " order " + text_or_null(order);
    if (limit != 0 || offset != 0) line += " limited";
    platform().log(line);
    platform().use_connection(conn);
    return answer_select(platform().judge(Operation::query), table, result);
}

int vek_db_raw_query(uint32_t conn, const char* sql, uint32_t length, uint32_t* result) {
    platform().log("raw " + std::string(sql, length));
    platform().use_connection(conn);
    if (result == nullptr) return plain(Operation::raw);
    return answer_select(platform().judge(Operation::raw_rows), "", result);
}

int vek_db_insert(uint32_t conn, const char* table, uint32_t content, int a, int b) {
    platform().log(std::string("insert ") + table + (a != 0 || b != 0 ? " flags" : ""));
    platform().use_connection(conn);
    platform().use_content(content);
    return plain(Operation::insert);
}

int vek_db_update(uint32_t conn, const char* table, uint32_t content, const char* where, int a,
                  int b) {
    platform().log(std::string("update ") + table + " where " + text_or_null(where) +
                   (a != 0 || b != 0 ? " flags" : ""));
    platform().use_connection(conn);
    platform().use_content(content);
    return plain(Operation::update);
}

int vek_db_delete(uint32_t conn, const char* table, const char* where) {
    platform().log(std::string("delete ") + table + " where " + text_or_null(where));
    platform().use_connection(conn);
    return plain(Operation::remove);
}

int vek_db_result_step(uint32_t result) {
    platform().log("step");
    const Recorder::Verdict verdict = platform().judge(Operation::step);
    if (verdict.mode == Mode::early_end || verdict.mode == Mode::no_row) {
        return step_astray(verdict.mode, result);
    }
    if (verdict.fails) return verdict.result;
    Recorder::OpenRows* const opened = platform().open_rows(result);
    if (opened == nullptr) return 1;
    opened->current = opened->next < opened->rows.rows.size();
    if (!opened->current) return opened->rows.end;
    ++opened->next;
    return 9;
}

int vek_db_result_row_count(uint32_t result) {
    platform().log("row_count");
    const Recorder::Verdict verdict = platform().judge(Operation::row_count);
    if (verdict.fails && verdict.mode == Mode::error) return -1;
    const Recorder::OpenRows* const opened = platform().open_rows(result);
    if (opened == nullptr) return -1;
    const int count = opened->rows.told_count.value_or(static_cast<int>(opened->rows.rows.size()));
    return miscount(verdict.mode, count);
}

int vek_db_result_column_int(uint32_t result, int column, int32_t* out) {
    return read_column("int", result, column, out);
}
int vek_db_result_column_uint(uint32_t result, int column, uint32_t* out) {
    return read_column("uint", result, column, out);
}
int vek_db_result_column_short_int(uint32_t result, int column, int16_t* out) {
    return read_column("short_int", result, column, out);
}
int vek_db_result_column_short_uint(uint32_t result, int column, uint16_t* out) {
    return read_column("short_uint", result, column, out);
}
int vek_db_result_column_uchar(uint32_t result, int column, uint8_t* out) {
    return read_column("uchar", result, column, out);
}

void vek_db_free_result(uint32_t result) {
    platform().log("free_result");
    platform().take_back('r', result);
}

uint32_t vek_db_get_content_values(void) {
    platform().log("content");
    return platform().judge(Operation::content).fails ? 0 : platform().hand_out('v');
}

void vek_db_content_clear(uint32_t content) {
    platform().log("clear");
    platform().use_content(content);
}

int vek_db_content_put_uint(uint32_t content, const char* column, uint32_t value) {
    return put("put_uint", content, column, value);
}
int vek_db_content_put_int(uint32_t content, const char* column, int32_t value) {
    return put("put_int", content, column, value);
}
int vek_db_content_put_short_uint(uint32_t content, const char* column, uint16_t value) {
    return put("put_short_uint", content, column, value);
}
int vek_db_content_put_short_int(uint32_t content, const char* column, int16_t value) {
    return put("put_short_int", content, column, value);
}
int vek_db_content_put_uchar(uint32_t content, const char* column, uint8_t value) {
    return put("put_uchar", content, column, value);
}
int vek_db_content_put_char(uint32_t content, const char* column, int8_t value) {
    return put("put_char", content, column, value);
}

void vek_db_free_content_values(uint32_t content) {
    platform().log("free_content");
    platform().take_back('v', content);
}

int propdb_get_byte(const char* path, uint8_t* out) {
    return read_property("byte", path, out);
}
int propdb_get_word(const char* path, uint16_t* out) {
    return read_property("word", path, out);
}
int propdb_get_dword(const char* path, uint32_t* out) {
    return read_property("dword", path, out);
}

int send_ipmi_cmd(const uint8_t* request, uint32_t* request_length, uint8_t* response,
                  uint32_t* response_length) {
    std::string line = "ipmi";
    for (uint32_t at = 0; at < *request_length; ++at) {
        char hex[4];
        std::snprintf(hex, sizeof hex, " %02X", request[at]);
        line += hex;
    }
    line += " told " + std::to_string(*response_length);
    platform().log(line);
    const Recorder::Verdict verdict = platform().judge(Operation::ipmi);
    if (verdict.fails && verdict.mode != Mode::other_length) return verdict.result;
    std::optional<Answer> answer = platform().next_answer();
    if (!answer) return 1;
    platform().answer_lengths[platform().fallible_calls()] = answer->bytes.size();
    if (verdict.mode == Mode::other_length) {
        answer->bytes.resize(verdict.length);
        answer->told.reset();
    }
    std::copy_n(answer->bytes.begin(), std::min<size_t>(answer->bytes.size(), 256), response);
    *response_length = answer->told.value_or(static_cast<uint32_t>(answer->bytes.size()));
    return answer->sent;
}

int is_quoril_platform(void) {
    platform().log("quoril");
    return platform().quoril ? 1 : 0;
}

time_t time(time_t* out) {
    platform().log("time");
    const Recorder::Verdict verdict = platform().judge(Operation::clock);
    const time_t now = verdict.fails ? -1 : static_cast<time_t>(platform().clock);
    if (out != nullptr) *out = now;
    return now;
}

}  // extern "C"

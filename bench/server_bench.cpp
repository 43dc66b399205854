// SPDX-License-Identifier: Apache-2.0
// What a day costs from files and from a MariaDB server, against the same rows asked of that server
// in text, as one does without thinking about it. Times are the wall's: most of a server's work is
// done by another process.
#include <mysql.h>
#include <stdlib.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "median.h"
#include "queries.h"

using namespace pwrmgt::bench;

namespace {

constexpr const char* kDatabase = "vek_pwr_bench";
constexpr int kRounds = 201;

struct SessionCloser {
    void operator()(MYSQL* session) const { mysql_close(session); }
    void operator()(MYSQL_RES* result) const { mysql_free_result(result); }
};

// One open session, rows as text, stored by the connector and converted cell by cell.
class TextServer {
public:
    explicit TextServer(const std::string& socket) : session_{mysql_init(nullptr)} {
        mysql_optionsv(session_.get(), MYSQL_READ_DEFAULT_GROUP, "vekdb");
        if (mysql_real_connect(session_.get(), "localhost", nullptr, nullptr, kDatabase, 0,
                               socket.c_str(), 0) == nullptr) {
            fail();
        }
    }
    ~TextServer() { run(std::string{"DROP DATABASE "} + kDatabase); }
    TextServer(const TextServer&) = delete;
    TextServer& operator=(const TextServer&) = delete;

    void query(Entries& entries) {
        const std::string sql =
            "SELECT Timestamp,SysAvgDc,SysMaxDc,SysMinDc,SysAvgAc,SysMaxAc,SysMinAc "
            "FROM HistPowers24HrMem WHERE Timestamp>=" +
            std::to_string(kPeriodStart_s) + " AND Timestamp<=" + std::to_string(kNow_s) +
            " ORDER BY Timestamp DESC";
        if (!run(sql)) fail();
        const std::unique_ptr<MYSQL_RES, SessionCloser> result{mysql_store_result(session_.get())};
        if (!result) fail();
        rows_.clear();
        while (const MYSQL_ROW row = mysql_fetch_row(result.get())) {
            PowerSlot& slot = rows_.emplace_back();
            slot.time_s = static_cast<std::uint32_t>(std::strtoul(row[0], nullptr, 10));
            for (std::size_t i = 0; i < slot.watts.size(); ++i) {
                slot.watts[i] = static_cast<std::uint16_t>(std::strtoul(row[i + 1], nullptr, 10));
            }
        }
        fold_newest_first(
            rows_.size(), [this](std::size_t at) { return rows_[at]; }, entries);
    }

private:
    bool run(const std::string& sql) {
        return mysql_real_query(session_.get(), sql.data(), sql.size()) == 0;
    }
    [[noreturn]] void fail() { throw std::runtime_error(mysql_error(session_.get())); }

    std::unique_ptr<MYSQL, SessionCloser> session_;
    std::vector<PowerSlot> rows_;
};

template <class Body>
double seconds_of(Body body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Both sides run in every round, in turn first; the figure is the median of the rounds' ratios.
template <class Subject, class Baseline>
void compare(const char* what, Subject subject, Baseline baseline) {
    std::vector<double> ratios;
    std::vector<double> of_subject;
    std::vector<double> of_baseline;
    for (int round = 0; round < kRounds; ++round) {
        const bool subject_first = round % 2 == 0;
        double one = subject_first ? seconds_of(subject) : 0;
        const double other = seconds_of(baseline);
        if (!subject_first) one = seconds_of(subject);
        ratios.push_back(one / other);
        of_subject.push_back(one * 1e6);
        of_baseline.push_back(other * 1e6);
    }
    std::printf("| %s | %.3f | %.0f | %.0f |\n", what, median(ratios), median(of_subject),
                median(of_baseline));
}

std::string address_of(const std::string& socket) {
    std::string address = "mariadb://";
    for (const char c : socket) {
        address += c == '/' ? "%2F" : std::string{c};
    }
    return address + '/' + kDatabase;
}

void measure(const std::string& socket) {
    const Scratch place;
    const std::vector<Row> day = measured_day();
    Entries from_files{};
    Entries entries{};
    const auto query_library = [&entries] { query_period(PWRMGT_PERIOD_24_HOURS, entries); };
    fill_library(day);
    query_period(PWRMGT_PERIOD_24_HOURS, from_files);
    setenv("VEKDB_SERVER", address_of(socket).c_str(), 1);
    fill_library(day);
    query_library();
    require_equal(from_files, entries, "the server answers otherwise");
    TextServer server{socket};
    server.query(entries);
    require_equal(from_files, entries, "the server answers otherwise in text");
    const auto query_text = [&] { server.query(entries); };

    std::puts("| Day of the system, 120 entries | x time of text | us | us in text |");
    std::puts("|---|---:|---:|---:|");
    compare("library over the server", query_library, query_text);
    unsetenv("VEKDB_SERVER");
    query_library();
    compare("library over files", query_library, query_text);
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2 || argv[1][0] != '/') {
        std::fputs("Usage: server_bench SOCKET\n", stderr);
        return 2;
    }
    measure(argv[1]);
    return 0;
} catch (const std::exception& trouble) {
    std::fprintf(stderr, "server_bench: %s\n", trouble.what());
    return 1;
}

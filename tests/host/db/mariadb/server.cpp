// SPDX-License-Identifier: Apache-2.0
#include "server.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "../engine_under_test.h"

namespace {

namespace fs = std::filesystem;

constexpr int kPatience_ms = 60000;
constexpr std::array kSystemTables{"mysql_system_tables.sql", "mysql_system_tables_data.sql"};

std::vector<std::string> options(const std::string& directory) {
    return {MARIADBD,
            "--no-defaults",
            "--datadir=" + directory + "/data",
            "--socket=" + directory + "/socket",
            "--pid-file=" + directory + "/pid",
            "--log-error=" + directory + "/log.err",
            "--user=root",
            "--skip-networking",
            "--innodb-log-file-size=4M",
            "--innodb-buffer-pool-size=8M",
            "--innodb-data-file-path=ibdata1:4M:autoextend",
            "--innodb-temp-data-file-path=ibtmp1:4M:autoextend",
            "--innodb-autoextend-increment=1",
            "--innodb-undo-tablespaces=0",
            "--innodb-flush-log-at-trx-commit=2",
            "--innodb-doublewrite=0",
            "--sync-frm=0"};
}

// A child that ends with this process; its standard input is the file.
pid_t spawn(const std::vector<std::string>& words, const std::string& input) {
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child != 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int from = open(input.c_str(), O_RDONLY);
    const int to = open("/dev/null", O_WRONLY);
    if (getppid() != parent || from < 0 || to < 0) _exit(1);
    dup2(from, STDIN_FILENO);
    dup2(to, STDOUT_FILENO);
    dup2(to, STDERR_FILENO);
    setenv("LD_PRELOAD", NO_SYNC, 1);
    execv(arguments[0], arguments.data());
    _exit(1);
}

}  // namespace

std::string MariadbServer::log() const {
    std::ifstream file{place_.directory() + "/log.err"};
    return {std::istreambuf_iterator<char>{file}, {}};
}

std::string MariadbServer::address(const std::string& user, const std::string& database) const {
    std::string path;
    for (const char c : socket()) {
        path += c == '/' ? "%2F" : std::string{c};
    }
    return "mariadb://" + user + "@" + path + "/" + database;
}

// The server's own tables, which it needs to know its users.
bool MariadbServer::make_data() {
    const std::string script = place_.directory() + "/system.sql";
    std::ofstream sql{script};
    sql << "create database mysql;\nuse mysql;\n";
    for (const char* const name : kSystemTables) {
        sql << std::ifstream{std::string{MARIADB_SHARE} + "/" + name}.rdbuf();
    }
    sql.close();
    fs::create_directory(place_.directory() + "/data");
    std::vector<std::string> words = options(place_.directory());
    words.emplace_back("--bootstrap");
    const pid_t child = spawn(words, script);
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == 0;
}

// The socket's file is there before anybody is let in: the log tells when.
bool MariadbServer::await_readiness() {
    const int watch = inotify_init1(IN_CLOEXEC);
    inotify_add_watch(watch, place_.directory().c_str(), IN_CREATE | IN_MODIFY);
    std::array<char, 4096> events{};
    const auto is_ready = [this] {
        return log().find("ready for connections") != std::string::npos;
    };
    bool ready = is_ready();
    // A server that ends says so in the log too.
    while (!ready && waitpid(process_, nullptr, WNOHANG) == 0) {
        pollfd news{watch, POLLIN, 0};
        if (poll(&news, 1, kPatience_ms) != 1) break;
        if (read(watch, events.data(), events.size()) <= 0) break;
        ready = is_ready();
    }
    close(watch);
    return ready;
}

bool MariadbServer::start() {
    has_data_ = has_data_ || make_data();
    fs::remove(place_.directory() + "/log.err");
    process_ = has_data_ ? spawn(options(place_.directory()), "/dev/null") : 0;
    if (process_ > 0 && await_readiness()) return true;
    ADD_FAILURE() << "no server: " << log();
    return false;
}

void MariadbServer::end() {
    if (process_ <= 0) return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = 0;
}

namespace {

// Started before the first test and ended behind the last.
class SharedServer : public testing::Environment {
public:
    void SetUp() override {
        server = new MariadbServer;
        ASSERT_TRUE(server->start());
    }
    void TearDown() override {
        delete server;
        server = nullptr;
    }

    static MariadbServer* server;
};
MariadbServer* SharedServer::server = nullptr;

[[maybe_unused]] const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new SharedServer);

}  // namespace

MariadbServer& shared_server() {
    return *SharedServer::server;
}

std::string server_for_a_test() {
    static int tests = 0;
    return shared_server().address("test" + std::to_string(++tests));
}

std::string columns_of(const std::string& table) {
    return "(select column_name as name, ordinal_position-1 as cid from information_schema.columns "
           "where table_schema=database() and table_name='" +
           table + "')";
}

int descriptors_per_connection() {
    return 1;
}

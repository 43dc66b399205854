// SPDX-License-Identifier: Apache-2.0
// What the daemon says: to the system log, and to standard error where somebody watches. A state
// that lasts is said when it changes, not every second.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace pwrmgt::pwrmgtd {

enum class Severity { error, warning, notice, detail };

class Log {
public:
    Log() = default;
    virtual ~Log() = default;
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    void error(const std::string& line) { write(Severity::error, line); }
    void warning(const std::string& line) { write(Severity::warning, line); }
    void notice(const std::string& line) { write(Severity::notice, line); }
    void detail(const std::string& line) { write(Severity::detail, line); }

    // The state of `subject`, empty when all is well. Says a trouble once, another one again, and
    // its end.
    void state(std::string_view subject, const std::string& trouble);

protected:
    virtual void write(Severity severity, const std::string& line) = 0;

private:
    std::map<std::string, std::string, std::less<>> troubles_;
};

// An error on standard error only, in the form that a terminal or the journal takes.
void complain(const std::string& line);

enum class Loudness { usual, everything };

// Errors always reach standard error, notices a terminal; everything when it is asked for. Details
// never burden the system log. Where standard error is the journal, everything goes there once,
// with its priority.
class SystemLog final : public Log {
public:
    explicit SystemLog(Loudness loudness);
    ~SystemLog() override;

protected:
    void write(Severity severity, const std::string& line) override;

private:
    Severity echoed_;
    bool to_journal_;
};

}  // namespace pwrmgt::pwrmgtd

// SPDX-License-Identifier: Apache-2.0
#include "outcome.h"

#include <errmsg.h>
#include <mysqld_error.h>

#include <algorithm>
#include <array>

namespace pwrmgt::vekdb::mariadb {

namespace {

struct Meaning {
    unsigned error;
    Outcome outcome;
};

constexpr std::array kMeanings{
    Meaning{0, Outcome::ok},
    Meaning{ER_LOCK_WAIT_TIMEOUT, Outcome::busy},
    Meaning{ER_LOCK_DEADLOCK, Outcome::busy},
    Meaning{ER_STATEMENT_TIMEOUT, Outcome::busy},
    Meaning{ER_DISK_FULL, Outcome::no_space},
    Meaning{ER_RECORD_FILE_FULL, Outcome::no_space},
    Meaning{ER_OPTION_PREVENTS_STATEMENT, Outcome::read_only},
    Meaning{ER_CANT_EXECUTE_IN_READ_ONLY_TRANSACTION, Outcome::read_only},
    Meaning{ER_OPEN_AS_READONLY, Outcome::read_only},
    Meaning{ER_TABLEACCESS_DENIED_ERROR, Outcome::read_only},
    Meaning{ER_COLUMNACCESS_DENIED_ERROR, Outcome::read_only},
    Meaning{ER_CRASHED_ON_USAGE, Outcome::damaged},
    Meaning{ER_CRASHED_ON_REPAIR, Outcome::damaged},
    Meaning{ER_NOT_KEYFILE, Outcome::damaged},
    Meaning{ER_OUTOFMEMORY, Outcome::no_memory},
    Meaning{ER_OUT_OF_RESOURCES, Outcome::no_memory},
    Meaning{CR_OUT_OF_MEMORY, Outcome::no_memory},
    Meaning{ER_SERVER_SHUTDOWN, Outcome::failed},
    Meaning{ER_CONNECTION_KILLED, Outcome::failed},
    Meaning{ER_QUERY_INTERRUPTED, Outcome::failed},
    Meaning{ER_GET_ERRNO, Outcome::failed},
    Meaning{ER_INTERNAL_ERROR, Outcome::failed},
};

// Numbers of the connector's own, the server and the way to it among them.
bool is_connectors(unsigned error) {
    return (error >= CR_MIN_ERROR && error <= CR_MAX_ERROR) || error >= CER_MIN_ERROR;
}

}  // namespace

Outcome outcome_of(unsigned error) noexcept {
    const auto* const found =
        std::find_if(kMeanings.begin(), kMeanings.end(),
                     [error](const Meaning& meaning) { return meaning.error == error; });
    if (found != kMeanings.end()) return found->outcome;
    return is_connectors(error) ? Outcome::failed : Outcome::refused;
}

bool ends_session(unsigned error) noexcept {
    return (is_connectors(error) && error != CR_OUT_OF_MEMORY) || error == ER_CONNECTION_KILLED ||
           error == ER_SERVER_SHUTDOWN;
}

}  // namespace pwrmgt::vekdb::mariadb

// SPDX-License-Identifier: Apache-2.0
// Sessions and forks: what a child does never reaches the server through its parent's sessions.
#include <fcntl.h>
#include <sys/socket.h>

#include "server_test.h"

namespace {

class ForkedSessions : public ServerTest {};

TEST_F(ForkedSessions, ChildsFirstOpenEndsNoSessionOfItsParent) {
    const std::uint32_t held = open_database();
    const std::uint32_t other = open_database();
    const std::int64_t held_id = connection_id(held);
    const std::int64_t idle_id = connection_id(other);
    vek_db_close(other);

    EXPECT_EQ(in_child([&] {
                  const std::uint32_t db = open_database();
                  const std::int64_t own = connection_id(db);
                  vek_db_close(db);
                  return own != held_id && own != idle_id ? 0 : 1;
              }),
              0);
    EXPECT_EQ(connection_id(held), held_id);
    const std::uint32_t again = open_database();
    EXPECT_EQ(connection_id(again), idle_id);
    vek_db_close(again);
    vek_db_close(held);
}

TEST_F(ForkedSessions, ChildThatOpensNothingEndsNone) {
    const std::uint32_t held = open_database();
    const std::int64_t held_id = connection_id(held);

    EXPECT_EQ(in_child([] { return 0; }), 0);
    EXPECT_EQ(connection_id(held), held_id);
    vek_db_close(held);
}

TEST_F(ForkedSessions, ProgramThatAChildBecomesHasNoneOfThem) {
    const std::uint32_t held = open_database();
    int sockets = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        int kind = 0;
        socklen_t length = sizeof kind;
        if (getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &kind, &length) != 0) continue;
        ++sockets;
        EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
    }

    EXPECT_GE(sockets, 1);
    vek_db_close(held);
}

TEST_F(ForkedSessions, ChildsTransactionIsItsOwn) {
    const std::uint32_t held = open_database();
    raw(held, "BEGIN");
    insert_slot(held, "HistPowers24Hr", 1, 30, 1);

    EXPECT_EQ(in_child([] {
                  const std::uint32_t db = open_database();
                  if (!select(db, "select * from HistPowers24Hr", 1).empty()) return 1;
                  return raw(db, "ROLLBACK");
              }),
              0);
    EXPECT_EQ(raw(held, "COMMIT"), 0);
    EXPECT_EQ(select(held, "select _id from HistPowers24Hr", 1), (Table{{1}}));
    vek_db_close(held);
}

}  // namespace

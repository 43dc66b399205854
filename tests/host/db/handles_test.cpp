// SPDX-License-Identifier: Apache-2.0
#include "db/handles.h"

#include <memory>

#include "database_test.h"

namespace {

using pwrmgt::vekdb::content_handles;
using pwrmgt::vekdb::HandleSlots;
using pwrmgt::vekdb::HandleTable;
using pwrmgt::vekdb::Kind;
using pwrmgt::vekdb::result_handles;

TEST(Handles, ZeroFindsNothingAlsoBesideAFreedPlace) {
    auto table_slots = std::make_unique<HandleSlots>();
    HandleTable table{Kind::result, *table_slots};
    int object = 0;
    table.take(table.add(&object));

    EXPECT_EQ(table.find(0), nullptr);
}

TEST(Handles, HandleOfAPlaceThatIsUsedAgainFindsNothing) {
    auto table_slots = std::make_unique<HandleSlots>();
    HandleTable table{Kind::result, *table_slots};
    int first = 0;
    int second = 0;
    const std::uint32_t stale = table.add(&first);
    table.take(stale);
    const std::uint32_t fresh = table.add(&second);

    EXPECT_EQ(table.find(stale), nullptr);
    EXPECT_EQ(table.find(fresh), &second);
}

TEST(Handles, HandleOfAnotherKindFindsNothing) {
    auto results_slots = std::make_unique<HandleSlots>();
    HandleTable results{Kind::result, *results_slots};
    auto contents_slots = std::make_unique<HandleSlots>();
    HandleTable contents{Kind::content, *contents_slots};
    int object = 0;
    const std::uint32_t result = results.add(&object);
    contents.add(&object);

    EXPECT_EQ(contents.find(result), nullptr);
}

TEST(Handles, FullTableGivesZeroAndServesAgainAfterOneIsTaken) {
    auto table_slots = std::make_unique<HandleSlots>();
    HandleTable table{Kind::result, *table_slots};
    int object = 0;
    std::uint32_t last = 0;
    for (int i = 0; i < 4096; ++i)
        last = table.add(&object);

    EXPECT_NE(last, 0u);
    EXPECT_EQ(table.add(&object), 0u);
    table.take(last);
    EXPECT_NE(table.add(&object), 0u);
}

TEST(Handles, ReleasesOfDeadHandlesAreCounted) {
    auto table_slots = std::make_unique<HandleSlots>();
    HandleTable table{Kind::result, *table_slots};
    int object = 0;
    const std::uint32_t handle = table.add(&object);
    table.take(handle);
    table.take(handle);

    EXPECT_EQ(table.counts().live, 0u);
    EXPECT_EQ(table.counts().refused_releases, 1u);
}

class HandedOut : public OpenDatabaseTest {};

TEST_F(HandedOut, ResultFreedTwiceIsFreedOnce) {
    const std::uint32_t before = result_handles.counts().live;
    std::uint32_t first = 0;
    raw(db_, "select * from PowerPolicy", &first);
    vek_db_free_result(first);
    std::uint32_t second = 0;
    raw(db_, "select * from PowerPolicy", &second);
    vek_db_free_result(first);

    EXPECT_EQ(vek_db_result_row_count(second), 0);
    vek_db_free_result(second);
    EXPECT_EQ(result_handles.counts().live, before);
}

TEST_F(HandedOut, ContentFreedTwiceIsFreedOnce) {
    const std::uint32_t first = vek_db_get_content_values();
    vek_db_free_content_values(first);
    const std::uint32_t second = vek_db_get_content_values();
    vek_db_free_content_values(first);

    EXPECT_EQ(vek_db_content_put_uchar(second, "_id", 1), 0);
    vek_db_free_content_values(second);
}

TEST_F(HandedOut, StaleHandlesAreErrorReturns) {
    std::uint32_t result = 0;
    raw(db_, "select * from PowerPolicy", &result);
    vek_db_free_result(result);
    const std::uint32_t content = vek_db_get_content_values();
    vek_db_free_content_values(content);
    std::uint32_t cell = 77;

    EXPECT_EQ(vek_db_result_step(result), 1);
    EXPECT_LT(vek_db_result_row_count(result), 0);
    EXPECT_NE(vek_db_result_column_uint(result, 0, &cell), 0);
    EXPECT_EQ(cell, 77u);
    EXPECT_NE(vek_db_content_put_uint(content, "Timestamp", 1), 0);
    EXPECT_NE(vek_db_insert(db_, "PowerPolicy", content, 0, 0), 0);
}

TEST_F(HandedOut, ClosedConnectionIsAnErrorReturn) {
    const std::uint32_t closed = open_database();
    vek_db_close(closed);
    std::uint32_t result = 5;

    EXPECT_NE(raw(closed, "delete from PowerPolicy"), 0);
    EXPECT_NE(vek_db_query(closed, "PowerPolicy", nullptr, 0, nullptr, 0, 0, nullptr, &result), 0);
    EXPECT_EQ(result, 0u);
    vek_db_close(closed);
}

TEST_F(HandedOut, HandlesOfOneKindAreForeignToTheOthers) {
    std::uint32_t result = 0;
    raw(db_, "select * from PowerPolicy", &result);
    const std::uint32_t content = vek_db_get_content_values();

    EXPECT_EQ(vek_db_result_step(db_), 1);
    EXPECT_EQ(vek_db_result_step(content), 1);
    EXPECT_NE(raw(result, "delete from PowerPolicy"), 0);
    EXPECT_NE(vek_db_content_put_uint(result, "Timestamp", 1), 0);
    EXPECT_NE(vek_db_insert(db_, "PowerPolicy", result, 0, 0), 0);
    vek_db_free_result(content);
    vek_db_free_content_values(content);
    vek_db_free_result(result);
}

TEST_F(HandedOut, FourThousandResultsAreLiveAtOnceAndTheNextIsRefused) {
    std::vector<std::uint32_t> results;
    std::uint32_t result = 0;
    while (results.size() < 5000 && raw(db_, "select 1", &result) == 0)
        results.push_back(result);

    EXPECT_EQ(results.size(), 4096u);
    EXPECT_EQ(result, 0u);
    for (const std::uint32_t each : results)
        vek_db_free_result(each);
    EXPECT_EQ(result_handles.counts().live, 0u);
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
// Every command's JSON against the schema that is shipped, by a validator that is not ours.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "machine.h"

namespace pwrmgt::tooltest {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class Schema : public MachineTest {
protected:
    void SetUp() override {
        MachineTest::SetUp();
        fs::create_directories(documents_);
    }
    void TearDown() override {
        fs::remove_all(documents_);
        MachineTest::TearDown();
    }
    void keep(const std::string& name, const std::string& document) {
        std::ofstream(documents_ / (name + ".json")) << document;
    }
    // What the validator says of the kept documents.
    Finished validate() {
        return launch(
            {{SCHEMA_CHECK, SCHEMA_FILE, documents_}, {}, std::nullopt, Sink::file, PYTHON_PATH});
    }

    const fs::path documents_ = fs::path(state_directory()) / "documents";
};

TEST_F(Schema, HoldsForEveryCommand) {
    for (const Command& command : every_command()) {
        std::vector<std::string> arguments = command.arguments;
        std::erase(arguments, "--hex");
        const Finished plain = run({command.name, arguments, 0, false}, {"--json"});
        EXPECT_NE(plain.out, "") << command.name << ": " << plain.err;
        keep(command.name, plain.out);
        if (command.name == "check") continue;
        keep(command.name + "-timed",
             run({command.name, arguments, 0, false}, {"--json", "--timing"}).out);
    }

    const Finished validated = validate();

    EXPECT_EQ(validated.exit, 0);
    EXPECT_EQ(validated.out, "");
}

TEST_F(Schema, HoldsWhereNothingIsKnown) {
    ToolTest::SetUp();  // empty tables again
    store_policy(1, 99);
    store_slot(0, empty_slot());
    for (const Command& command : every_command()) {
        const Finished finished = run(command, {"--json"});
        if (!finished.out.empty()) keep(command.name, finished.out);
    }

    const Finished validated = validate();

    EXPECT_EQ(validated.exit, 0);
    EXPECT_EQ(validated.out, "");
}

TEST_F(Schema, DescribesNoDocumentThatNoCommandWrites) {
    std::ifstream file(SCHEMA_FILE);
    const json schema = parsed({std::istreambuf_iterator<char>(file), {}});
    std::set<std::string> described;
    for (const json& choice : schema["oneOf"]) {
        const auto reference = choice["$ref"].get<std::string>();
        described.insert(reference.substr(reference.rfind('/') + 1));
    }

    for (const Command& command : every_command()) {
        std::vector<std::string> arguments = command.arguments;
        std::erase(arguments, "--hex");
        const Finished finished = run({command.name, arguments, 0, false}, {"--json"});
        const auto name = parsed(finished.out)["schema"].get<std::string>();
        described.erase(name.substr(10, name.size() - 12));
    }

    EXPECT_EQ(described, std::set<std::string>{});
}

TEST_F(Schema, RefusesAFieldThatItDoesNotKnow) {
    json document = parsed(run(every_command().front(), {"--json"}).out);
    document["entries"][0]["dc"]["median_w"] = 1;
    keep("unknown", document.dump());

    const Finished validated = validate();

    EXPECT_EQ(validated.exit, 1);
    EXPECT_NE(validated.out.find("median_w"), std::string::npos) << validated.out;
}

TEST_F(Schema, RefusesAMarkerAsAReading) {
    json document = parsed(run(every_command().front(), {"--json"}).out);
    document["entries"][0]["dc"]["avg_w"] = 65535;
    keep("marker", document.dump());

    EXPECT_EQ(validate().exit, 1);
}

TEST_F(Schema, RefusesADocumentWithoutAField) {
    json document = parsed(run(every_command().front(), {"--json"}).out);
    document.erase("age_s");
    keep("short", document.dump());

    EXPECT_EQ(validate().exit, 1);
}

}  // namespace
}  // namespace pwrmgt::tooltest

// SPDX-License-Identifier: Apache-2.0
// Standard output as the caller left it: full, gone, closed.
#include "tool.h"

namespace pwrmgt::tooltest {
namespace {

class Output : public ToolTest {
protected:
    Finished history_to(Sink sink) {
        store_slot(0, slot_of(300));
        return launch({{"power", "history"}, {}, kNow, sink});
    }
};

TEST_F(Output, FullDeviceIsExit1AndSaysSo) {
    const Finished run = history_to(Sink::full_device);

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: standard output: No space left on device\n");
}

TEST_F(Output, FullDeviceIsExit1ForHelpToo) {
    const Finished run = launch({{"--help"}, {}, kNow, Sink::full_device});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: standard output: No space left on device\n");
}

TEST_F(Output, ReaderThatLeftIsExit1WithoutAWord) {
    const Finished run = history_to(Sink::left_reader);

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "");
}

// Under the real clock: what freezes it opens a file, which would become descriptor 1.
TEST_F(Output, ClosedStandardOutputIsExit1AndSaysSo) {
    const Finished run = launch({{"--version"}, {}, std::nullopt, Sink::closed});

    EXPECT_EQ(run.exit, 1);
    EXPECT_EQ(run.err, "pwrmgtctl: standard output: Bad file descriptor\n");
}

}  // namespace
}  // namespace pwrmgt::tooltest

// SPDX-License-Identifier: Apache-2.0
// Datagrams that no controller would send: cut, altered, stretched, sent twice, made up. None may
// do harm, and the true answer behind them still arrives.
#include <array>
#include <random>

#include "controller_test.h"

namespace {

class LanHostile : public ControllerTest {
protected:
    // The answer with something hostile before and behind it.
    template <class Make>
    void add(Make make) {
        // What comes before a session is opened is not authenticated, and may keep it from opening.
        ASSERT_EQ(exchanged(kDeviceId).result, 0);
        relay_.change_answers([make](const Datagram& answer) mutable {
            return std::vector<Datagram>{make(answer), answer, make(answer)};
        });
    }

    void expect_answers(int exchanges) const {
        for (int i = 0; i < exchanges; ++i) {
            const Exchange exchange = exchanged(kDeviceId);
            ASSERT_EQ(exchange.result, 0) << i;
            ASSERT_EQ(exchange.length, 16u);
            ASSERT_EQ(exchange.buffer[1], 0x17);
        }
    }
};

TEST_F(LanHostile, CutAnswers) {
    std::size_t length = 0;
    add([length](const Datagram& answer) mutable {
        const std::size_t keep = length++ % answer.size();
        return Datagram(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(keep));
    });

    expect_answers(200);
}

TEST_F(LanHostile, StretchedAnswers) {
    std::size_t more = 0;
    add([more](Datagram answer) mutable {
        answer.resize(answer.size() + more++ * 7 % 1400, 0xA5);
        return answer;
    });

    expect_answers(200);
}

TEST_F(LanHostile, AlteredAnswers) {
    std::mt19937 random(1);
    add([random](Datagram answer) mutable {
        for (int i = 0; i < 4; ++i)
            answer[random() % answer.size()] ^= static_cast<std::uint8_t>(1 + random() % 255);
        return answer;
    });

    expect_answers(200);
}

TEST_F(LanHostile, AnswersSentTwice) {
    add([](const Datagram& answer) { return answer; });

    expect_answers(50);
}

// Each looks like what is waited for, up to its length.
TEST_F(LanHostile, MadeUpDatagrams) {
    std::mt19937 random(2);
    add([random](const Datagram&) mutable {
        constexpr std::array<std::uint8_t, 6> kPayloads{0x00, 0x40, 0xC0, 0x11, 0x13, 0x15};
        Datagram datagram(16 + random() % 320);
        for (std::uint8_t& byte : datagram)
            byte = static_cast<std::uint8_t>(random());
        const Datagram head{0x06, 0x00, 0xFF, 0x07, 0x06, kPayloads[random() % kPayloads.size()]};
        std::ranges::copy(head, datagram.begin());
        // In no session, or in some.
        if (random() % 2 == 0) std::fill_n(datagram.begin() + 6, 8, 0x00);
        datagram[14] = static_cast<std::uint8_t>((datagram.size() - 16) & 0xFF);
        datagram[15] = static_cast<std::uint8_t>((datagram.size() - 16) >> 8);
        return datagram;
    });

    expect_answers(300);
}

// While the session is opened nothing is authenticated yet: here every byte of the peer's is tried.
TEST_F(LanHostile, LogInsAlteredInEveryByteNeverOpenAWrongSession) {
    const EnvironmentVariable hurry("VEKDB_IPMI_TIMEOUT_MS", "100");
    for (std::size_t at = 0; at < 64; ++at) {
        std::size_t seen = 0;
        relay_.change_answers([at, seen](Datagram answer) mutable {
            // A different one of the answers each time.
            if (seen++ == at % 5) answer[at % answer.size()] ^= 0xFF;
            return std::vector<Datagram>{answer};
        });
        // Another user's name in between: the session, or the refusal, is not kept.
        {
            const EnvironmentVariable other("VEKDB_IPMI", "lan://:x@127.0.0.1:0");
            EXPECT_EQ(exchanged(kDeviceId).result, kUnknownTransport);
        }

        const Exchange exchange = exchanged(kDeviceId);

        if (exchange.result == 0) {
            EXPECT_EQ(exchange.length, 16u);
            EXPECT_EQ(exchange.buffer[1], 0x17);
        } else {
            EXPECT_TRUE(exchange.clean_behind(0));
        }
    }
}

TEST_F(LanHostile, NothingButGarbageIsGivenUp) {
    const EnvironmentVariable hurry("VEKDB_IPMI_TIMEOUT_MS", "500");
    relay_.change_answers([](const Datagram& answer) {
        return std::vector<Datagram>(20, Datagram(answer.size(), 0x06));
    });

    EXPECT_EQ(exchanged(kDeviceId).result, kTimedOut);
}

}  // namespace

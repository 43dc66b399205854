// SPDX-License-Identifier: Apache-2.0
// The installed supply type and the configuration code: read once, kept in the exported caches.
#include "psu_test.h"

using namespace pwrmgt::test;

namespace psu_type_tests {
namespace {

const Calls kTypeRead{"quoril", "byte /ac/tavn/power/psu_installed"};
const Calls kConfigRead{"byte /ac/tavn/power/psu_config_info"};

}  // namespace

// -- type

class PsuType : public PsuTest {};

TEST_F(PsuType, PropertyIsReadOnceAndCached) {
    platform().set_property(kTypeKey, 1);

    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 1U);
    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 1U);

    EXPECT_EQ(platform().calls, chain({kTypeRead, {"quoril"}}));
    EXPECT_EQ(g_psu_installed, 1U);
}

TEST_F(PsuType, UnreadablePropertyIsUnknownAndAskedAgain) {
    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 15U);
    EXPECT_EQ(g_psu_installed, 15U);

    platform().set_property(kTypeKey, 0);
    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 0U);
    EXPECT_EQ(g_psu_installed, 0U);
}

TEST_F(PsuType, TypeOf15KeepsTheCacheEmpty) {
    platform().set_property(kTypeKey, 15);

    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 15U);
    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 15U);

    EXPECT_EQ(g_psu_installed, 15U);
    EXPECT_EQ(platform().calls, chain({kTypeRead, kTypeRead}));
}

TEST_F(PsuType, QuorilIsUnknownWhateverTheCacheAndThePropertySay) {
    platform().quoril = true;
    platform().set_property(kTypeKey, 1);
    g_psu_installed = 1;

    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 15U);
    EXPECT_EQ(pwrmgt_psu_crps_installed(), 0U);

    EXPECT_EQ(platform().calls, (Calls{"quoril", "quoril"}));
    EXPECT_EQ(g_psu_installed, 1U);
}

TEST_F(PsuType, LowByteOfTheCacheComesBack) {
    g_psu_installed = 0xABCD01;
    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 1U);

    g_psu_installed = 0x10F;  // its low byte alone is "unknown"; the cache is not
    EXPECT_EQ(pwrmgt_get_psu_type_installed(), 15U);

    EXPECT_EQ(platform().count("byte"), 0U);
}

TEST_F(PsuType, ShorterNameGivesTheSame) {
    platform().set_property(kTypeKey, 7);

    EXPECT_EQ(pwrmgt_psu_type_installed(), 7U);

    EXPECT_EQ(platform().calls, kTypeRead);
    EXPECT_EQ(g_psu_installed, 7U);
}

TEST_F(PsuType, OnlyTypeOneIsCrps) {
    for (uint32_t type = 0; type < 256; ++type) {
        g_psu_installed = 15;
        platform().set_property(kTypeKey, type);

        EXPECT_EQ(pwrmgt_psu_crps_installed(), type == 1 ? 1U : 0U) << type;
    }
}

TEST_F(PsuType, UnknownTypeIsNotCrps) {
    EXPECT_EQ(pwrmgt_psu_crps_installed(), 0U);
}

TEST_F(PsuType, FailedReadAndExceptionLeaveTheCacheAlone) {
    const auto script = [](Recorder& recorder) {
        fresh_process();
        recorder.set_property(kTypeKey, 1);
    };

    EXPECT_EQ(swept_statuses(script, pwrmgt_psu_crps_installed), each_of(1, 0));
    EXPECT_EQ(sweep_exceptions(script, pwrmgt_psu_crps_installed), 1U);
    EXPECT_EQ(g_psu_installed, 15U);
}

// -- configuration code

class PsuConfig : public PsuTest {};

TEST_F(PsuConfig, PropertyIsReadOnceAndCached) {
    platform().set_property(kConfigKey, 12);

    EXPECT_EQ(pwrmgt_get_psu_config_info(), 12U);
    EXPECT_EQ(pwrmgt_get_psu_config_info(), 12U);

    EXPECT_EQ(platform().calls, kConfigRead);
    EXPECT_EQ(g_psu_config_info, 12);
}

TEST_F(PsuConfig, EveryCachedCodeBelow255ComesBackUnread) {
    for (uint32_t config = 0; config < 255; ++config) {
        g_psu_config_info = static_cast<uint8_t>(config);

        EXPECT_EQ(pwrmgt_get_psu_config_info(), config);
    }
    EXPECT_THAT(platform().calls, testing::IsEmpty());
}

TEST_F(PsuConfig, UnreadablePropertyIs255AndAskedAgain) {
    EXPECT_EQ(pwrmgt_get_psu_config_info(), 255U);
    EXPECT_EQ(g_psu_config_info, 255);

    platform().set_property(kConfigKey, 0);
    EXPECT_EQ(pwrmgt_get_psu_config_info(), 0U);
    EXPECT_EQ(g_psu_config_info, 0);
}

TEST_F(PsuConfig, CodeOf255IsReadAgain) {
    platform().set_property(kConfigKey, 255);

    EXPECT_EQ(pwrmgt_get_psu_config_info(), 255U);
    EXPECT_EQ(pwrmgt_get_psu_config_info(), 255U);

    EXPECT_EQ(platform().calls, chain({kConfigRead, kConfigRead}));
}

TEST_F(PsuConfig, PlatformFamilyDoesNotMatter) {
    platform().quoril = true;
    platform().set_property(kConfigKey, 3);

    EXPECT_EQ(pwrmgt_get_psu_config_info(), 3U);

    EXPECT_EQ(platform().calls, kConfigRead);
}

TEST_F(PsuConfig, FailedReadAndExceptionLeaveTheCacheAlone) {
    const auto script = [](Recorder& recorder) {
        fresh_process();
        recorder.set_property(kConfigKey, 8);
    };

    EXPECT_EQ(swept_statuses(script, pwrmgt_get_psu_config_info), each_of(1, 255));
    EXPECT_EQ(sweep_exceptions(script, pwrmgt_get_psu_config_info), 1U);
    EXPECT_EQ(g_psu_config_info, 255);
}

}  // namespace psu_type_tests

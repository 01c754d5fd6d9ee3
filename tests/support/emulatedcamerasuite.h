#pragma once

#include "sessionrig.h"

#include <gtest/gtest.h>

#include <string>

/// Runs a suite parameterised on a camera id on both emulated generations, its rows named Sfnc2 and Sfnc1.
#define INSTANTIATE_ON_EMULATED_CAMERAS(suite)                                                                      \
    INSTANTIATE_TEST_SUITE_P(EmulatedCameras, suite, ::testing::Values(SessionRig::kMedical, SessionRig::kCustom), \
                             [](const ::testing::TestParamInfo<const char*>& info) {                              \
                                 return std::string(info.param) == SessionRig::kMedical ? "Sfnc2" : "Sfnc1";      \
                             })

#include "testapp.h"

#include <gtest/gtest.h>

// A test program with its application object made up front, in the sandbox,
// so that queued signals, local event loops and settings work in every test.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    TestApp::instance();
    return RUN_ALL_TESTS();
}

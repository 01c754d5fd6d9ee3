#include "guitestapp.h"

#include <gtest/gtest.h>

// As testmain.cpp, with a QApplication for widgets and QML.
int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    GuiTestApp::instance();
    return RUN_ALL_TESTS();
}

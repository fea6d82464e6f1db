// Every test executable runs inside an offscreen application, so screens can be built and
// driven without a display.
#include "workspace.h"

#include "security/password.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    // A desk pays the interactive cost once per password change; hundreds of tests needn't.
    tolmar::security::setHashCost(tolmar::security::HashCost::Minimum);
    testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    tolmar::test::dropTemplates();
    return status;
}

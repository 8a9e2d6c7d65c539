#include "ZDTestSupport.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char *argv[])
{
    ZDTestSupport::isolateUserDirectories();
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Zandrio"));
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

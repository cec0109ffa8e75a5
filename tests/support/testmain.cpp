// Test entry: a QApplication exists for every suite, as in the host. Suites without
// GL use Qt's offscreen platform and need no display.
#include <QApplication>
#include <QStandardPaths>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // Listing needs no application, and GL suites can then be listed without a display.
    if (::testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
#ifndef QEL_TEST_GL
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QCoreApplication::setOrganizationName("qel-tests");
    QCoreApplication::setApplicationName("qel-tests");
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

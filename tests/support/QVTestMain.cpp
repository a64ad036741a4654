// The one main of every test program.

#include <QtCore/QLocale>
#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

int main(int argc, char **argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    // The application object starts threads; forked death tests must re-execute.
    GTEST_FLAG_SET(death_test_style, "threadsafe");

    // Widgets are real but never need a display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");

    // A private home per process: settings, caches and data written by the
    // code under test can never reach the user's own, nor another test's.
    QTemporaryDir home;
    if (!home.isValid())
        return 1;
    qputenv("HOME", home.path().toLocal8Bit());
    for (const char *variable :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "QVKIT_USER_DEFAULTS_PATH"})
        qunsetenv(variable);
    qputenv("TZ", "UTC");
    tzset();
    qputenv("LANG", "en_US.UTF-8");
    qunsetenv("LANGUAGE");
    qunsetenv("LC_ALL");

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("QVKitTests"));
    QApplication::setApplicationVersion(QStringLiteral("1.2.3"));
    QApplication::setOrganizationDomain(QStringLiteral("quovera.com"));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));

    return RUN_ALL_TESTS();
}

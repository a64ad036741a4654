#include <QVKit/Platform/QVBundle.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QTranslator>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QString translationsDirectory()
{
    return QDir(QString::fromUtf8(QVKIT_TEST_BINARY_DIR)).filePath(u"translations"_s);
}

// Restores the application's identity after a test changed it.
class IdentityGuard
{
public:
    IdentityGuard()
        : m_name(QCoreApplication::applicationName())
        , m_version(QCoreApplication::applicationVersion())
        , m_domain(QCoreApplication::organizationDomain())
    {
    }
    ~IdentityGuard()
    {
        QCoreApplication::setApplicationName(m_name);
        QCoreApplication::setApplicationVersion(m_version);
        QCoreApplication::setOrganizationDomain(m_domain);
        qApp->setProperty("QVBundleVersion", QVariant());
        qApp->setProperty("QVBundleIdentifier", QVariant());
    }

private:
    QString m_name, m_version, m_domain;
};

} // namespace

TEST(QVBundleTest, MissingEntriesYieldTheDefault)
{
    EXPECT_EQ(QVBundle::localizedString(u"action-cancel"_s, u"Cancel"_s, u"Common"_s), u"Cancel"_s);
    EXPECT_EQ(QVBundle::localizedString(u"no-such-key"_s, u"Fallback \u2026"_s), u"Fallback \u2026"_s);
    EXPECT_EQ(QVBundle::localizedString(QString(), u"Default"_s, u"Common"_s), u"Default"_s);
    EXPECT_TRUE(QVBundle::localizedString(u"no-such-key"_s, QString()).isNull());
    EXPECT_EQ(QVBundle::translationContext(QString()), u"Localizable"_s);
    EXPECT_EQ(QVBundle::translationContext(u""_s), u"Localizable"_s);
    EXPECT_EQ(QVBundle::translationContext(u"Status Codes"_s), u"Status Codes"_s);
}

TEST(QVBundleTest, InstalledTranslationsAnswerPerTable)
{
    EXPECT_FALSE(QVBundle::installTranslations(QLocale(QLocale::French), u"qvkit_test"_s, translationsDirectory()));
    ASSERT_TRUE(QVBundle::installTranslations(QLocale(QLocale::German, QLocale::Germany), u"qvkit_test"_s,
                                              translationsDirectory()));

    EXPECT_EQ(QVBundle::localizedString(u"action-cancel"_s, u"Cancel"_s, u"Common"_s), u"Abbrechen"_s);
    EXPECT_EQ(QVBundle::localizedString(u"title-reset\u2026"_s, u"Reset\u2026"_s, u"Common"_s),
              u"Zur\u00fccksetzen\u2026"_s);
    EXPECT_EQ(QVBundle::localizedString(u"error-generic-title"_s, u"An error occurred."_s, u"Errors"_s),
              u"Ein Fehler ist aufgetreten."_s);
    EXPECT_EQ(QVBundle::localizedString(u"404"_s, u"Not Found"_s, u"Status Codes"_s), u"Nicht gefunden"_s);
    EXPECT_EQ(QVBundle::localizedString(u"notice-not-for-release-do-not-distribute"_s, u"NOT FOR RELEASE."_s),
              u"NICHT ZUR VER\u00d6FFENTLICHUNG."_s);

    // Tables are separate: a key translated in one table is not found in another.
    EXPECT_EQ(QVBundle::localizedString(u"action-cancel"_s, u"Cancel"_s, u"Errors"_s), u"Cancel"_s);
    EXPECT_EQ(QVBundle::localizedString(u"action-cancel"_s, u"Cancel"_s), u"Cancel"_s);
    // An unfinished (empty) translation counts as missing.
    EXPECT_EQ(QVBundle::localizedString(u"state-unknown"_s, u"Unknown"_s, u"Common"_s), u"Unknown"_s);
    // A translation equal to its key is indistinguishable from a missing one: the default answers.
    EXPECT_EQ(QVBundle::localizedString(u"action-OK"_s, u"OK"_s, u"Common"_s), u"OK"_s);
}

TEST(QVBundleTest, IdentityFromTheApplication)
{
    IdentityGuard guard;
    QCoreApplication::setApplicationName(u"Notes"_s);
    QCoreApplication::setApplicationVersion(u"2.1"_s);
    QCoreApplication::setOrganizationDomain(u"quovera.com"_s);

    EXPECT_EQ(QVBundle::applicationName(), u"Notes"_s);
    EXPECT_EQ(QVBundle::shortVersionString(), u"2.1"_s);
    EXPECT_EQ(QVBundle::bundleVersion(), u"2.1"_s) << "no build set: the version stands in";
    EXPECT_EQ(QVBundle::bundleIdentifier(), u"com.quovera.Notes"_s);

    qApp->setProperty("QVBundleVersion", u"2104"_s);
    qApp->setProperty("QVBundleIdentifier", u"com.quovera.notes-beta"_s);
    EXPECT_EQ(QVBundle::bundleVersion(), u"2104"_s);
    EXPECT_EQ(QVBundle::bundleIdentifier(), u"com.quovera.notes-beta"_s);

    EXPECT_EQ(QVBundle::objectForInfoDictionaryKey(u"CFBundleName"_s).toString(), u"Notes"_s);
    EXPECT_EQ(QVBundle::objectForInfoDictionaryKey(u"CFBundleShortVersionString"_s).toString(), u"2.1"_s);
    EXPECT_EQ(QVBundle::objectForInfoDictionaryKey(u"CFBundleVersion"_s).toString(), u"2104"_s);
    EXPECT_EQ(QVBundle::objectForInfoDictionaryKey(u"CFBundleIdentifier"_s).toString(), u"com.quovera.notes-beta"_s);
    EXPECT_FALSE(QVBundle::objectForInfoDictionaryKey(u"CFBundleExecutable"_s).isValid());

    qApp->setProperty("QVBundleIdentifier", QVariant());
    QCoreApplication::setOrganizationDomain(QString());
    EXPECT_EQ(QVBundle::bundleIdentifier(), u"Notes"_s);
}

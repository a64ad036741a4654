#include <QVKit/Application/QVLocalizedString.h>
#include <QVKit/Platform/QVBundle.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QSet>
#include <QtCore/QTranslator>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// The application identity the tag tests rely on, restored afterwards.
class ApplicationIdentity
{
public:
    ApplicationIdentity(const QString &name, const QString &version, const QString &build)
        : m_name(QCoreApplication::applicationName())
        , m_version(QCoreApplication::applicationVersion())
    {
        QCoreApplication::setApplicationName(name);
        QCoreApplication::setApplicationVersion(version);
        qApp->setProperty("QVBundleVersion", build);
    }
    ~ApplicationIdentity()
    {
        QCoreApplication::setApplicationName(m_name);
        QCoreApplication::setApplicationVersion(m_version);
        qApp->setProperty("QVBundleVersion", QVariant());
    }

private:
    QString m_name, m_version;
};

// Makes a locale the application's language for the test's duration.
class DefaultLocale
{
public:
    explicit DefaultLocale(const QLocale &locale) { QLocale::setDefault(locale); }
    ~DefaultLocale() { QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates)); }
};

} // namespace

TEST(QVLocalizedStringTest, FixedTextsAreTheirDefaultsWithoutTranslation)
{
    const auto texts = QVLocalizedString::fixedTexts();
    ASSERT_EQ(texts.size(), 65u);
    QSet<QString> keys;
    for (const QVLocalizedTextEntry &entry : texts) {
        const QString key = QString::fromUtf16(entry.key);
        EXPECT_FALSE(keys.contains(key)) << "duplicate key " << key.toStdString();
        keys.insert(key);
        // Keys with an ellipsis end in U+2026, as do their defaults.
        if (key.contains(u'\u2026')) {
            EXPECT_TRUE(key.endsWith(u'\u2026') && QString::fromUtf16(entry.defaultValue).endsWith(u'\u2026'));
        }
        EXPECT_FALSE(key.contains(u"..."_s));
    }
    EXPECT_EQ(QVLocalizedString::actionOK(), u"OK"_s);
    EXPECT_EQ(QVLocalizedString::titleResetEllipsis(), u"Reset\u2026"_s);
    EXPECT_EQ(QVLocalizedString::symbolTruncationString(), u"\u2026"_s);
    EXPECT_EQ(QVLocalizedString::separatorLabelWithSpace(), u": "_s);
    EXPECT_EQ(QVLocalizedString::objectValueNil(), u"<nil>"_s) << "returned as looked up, tags untouched";
    EXPECT_EQ(QVLocalizedString::titleMostDocumentsOpenAtOnce(), u"Most Documents Open at Once"_s);
    EXPECT_EQ(QVLocalizedString::genericSpeakers(), u"Speakers"_s);
    EXPECT_EQ(QString::fromUtf16(texts[0].table), u"Common"_s);
    EXPECT_EQ(texts[texts.size() - 1].table, nullptr);

    const ApplicationIdentity identity(u"Notes"_s, u"2.1"_s, u"345"_s);
    EXPECT_EQ(QVLocalizedString::noticeRequiresAppRestartLong(), u"Notes must be restarted for changes to take effect."_s);
    EXPECT_EQ(QVLocalizedString::noticeRequiresAppRestart(), u"Requires app restart."_s);

    EXPECT_EQ(QVLocalizedString::builtIn(u"Retina Display"_s), u"Built-in Retina Display"_s);
    EXPECT_EQ(QVLocalizedString::builtIn(u""_s), u""_s);
    EXPECT_FALSE(QVLocalizedString::builtIn(QString()).isNull());
}

TEST(QVLocalizedStringTest, HostTranslationsReplaceTheDefaults)
{
    QTranslator translator;
    ASSERT_TRUE(translator.load(QLocale(QLocale::German), u"qvkit_test"_s, u"_"_s,
                                QDir(QString::fromUtf8(QVKIT_TEST_BINARY_DIR)).filePath(u"translations"_s)));
    QCoreApplication::installTranslator(&translator);
    EXPECT_EQ(QVLocalizedString::actionCancel(), u"Abbrechen"_s);
    EXPECT_EQ(QVLocalizedString::titleResetEllipsis(), u"Zur\u00fccksetzen\u2026"_s);
    EXPECT_EQ(QVLocalizedString::noticeNotForRelease(), u"NICHT ZUR VER\u00d6FFENTLICHUNG."_s);
    EXPECT_EQ(QVLocalizedString::stateUnknown(), u"Unknown"_s) << "an unfinished translation falls back";
    QCoreApplication::removeTranslator(&translator);
    EXPECT_EQ(QVLocalizedString::actionCancel(), u"Cancel"_s);
}

TEST(QVLocalizedStringTest, QuotationMarksFollowTheLocale)
{
    struct Row
    {
        QLocale::Language language;
        QString standard;
        QString alternate;
    };
    const Row rows[] = {
        {QLocale::English, u"\u201cOK\u201d"_s, u"\u2018OK\u2019"_s},
        {QLocale::German, u"\u201eOK\u201c"_s, u"\u201aOK\u2018"_s},
        {QLocale::French, u"\u00abOK\u00bb"_s, u"\u00abOK\u00bb"_s},
        {QLocale::Japanese, u"\u300cOK\u300d"_s, u"\u300eOK\u300f"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(QLocale::languageToString(row.language).toStdString());
        const QLocale locale(row.language);
        EXPECT_EQ(QVLocalizedString::quotedString(u"OK"_s, locale), row.standard);
        EXPECT_EQ(QVLocalizedString::quotedAlternativeString(u"OK"_s, locale), row.alternate);
        const DefaultLocale language(locale);
        EXPECT_EQ(QVLocalizedString::quotedString(u"OK"_s), row.standard) << "the application's language";
        EXPECT_EQ(QVLocalizedString::replaceTagsInString(u"Press <QUOTE>OK</QUOTE> now"_s),
                  u"Press "_s + row.standard + u" now"_s);
    }
    EXPECT_TRUE(QVLocalizedString::quoteString(u"OK"_s, 2, QLocale()).isNull());
    EXPECT_TRUE(QVLocalizedString::quoteString(u"OK"_s, -1, QLocale()).isNull());
    EXPECT_TRUE(QVLocalizedString::quotedString(u"OK"_s, std::nullopt).isNull());
    EXPECT_TRUE(QVLocalizedString::quotedString(QString()).isNull());
    EXPECT_EQ(QVLocalizedString::quotedString(u""_s, QLocale(QLocale::English)), u"\u201c\u201d"_s);
}

TEST(QVLocalizedStringTest, DirectionMarkup)
{
    EXPECT_EQ(QVLocalizedString::stringWithLTRMarkup(u"abc"_s), u"\u202aabc\u202c"_s);
    EXPECT_EQ(QVLocalizedString::stringWithRTLMarkup(u"\u05e9\u05dc\u05d5\u05dd"_s), u"\u202b\u05e9\u05dc\u05d5\u05dd\u202c"_s);
    EXPECT_EQ(QVLocalizedString::stringWithLTRMarkup(u""_s), u"\u202a\u202c"_s);
    EXPECT_TRUE(QVLocalizedString::stringWithRTLMarkup(QString()).isNull());
}

TEST(QVLocalizedStringTest, BuiltInTags)
{
    const ApplicationIdentity identity(u"Notes"_s, u"2.1"_s, u"345"_s);
    struct Row
    {
        const char *name;
        QString input;
        QString expected;
    };
    const Row rows[] = {
        {"untagged text is untouched", u"Plain \u00e9t\u00e9 text"_s, u"Plain \u00e9t\u00e9 text"_s},
        {"lower-case opening marker", u"<quote>a</QUOTE>"_s, u"\u201ca\u201d"_s},
        {"mixed case both markers", u"<QuOtE>b</qUoTe>!"_s, u"\u201cb\u201d!"_s},
        {"two quoted spans", u"<QUOTE>x</QUOTE> or <QUOTE>y</QUOTE>"_s, u"\u201cx\u201d or \u201cy\u201d"_s},
        {"stray closing marker removed", u"a</QUOTE>b"_s, u"ab"_s},
        {"unpaired opening marker removed", u"<QUOTE>a"_s, u"a"_s},
        {"separators", u"Name<SEPARATOR_LABEL_WITH_SPACE>x<separator_label>y"_s, u"Name: x:y"_s},
        {"undo notice", u"Delete? <NO_UNDO_NOTICE>"_s, u"Delete? This action is not undoable."_s},
        {"application tags", u"<APP_NAME> <app_version> (<APP_BUILD>)"_s, u"Notes 2.1 (345)"_s},
        {"name, version and build", u"<APP_NAME_VERSION_BUILD>"_s, u"Notes 2.1 (345)"_s},
        {"unknown tags stay", u"<UNKNOWN_TAG> and <APP_UNKNOWN>"_s, u"<UNKNOWN_TAG> and <APP_UNKNOWN>"_s},
        {"file tags need a file", u"<FILE_NAME>"_s, u"<FILE_NAME>"_s},
        {"beyond the BMP", u"\U0001F600<QUOTE>\U0001F4C4</QUOTE>"_s, u"\U0001F600\u201c\U0001F4C4\u201d"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVLocalizedString::replaceTagsInString(row.input), row.expected);
    }
    EXPECT_TRUE(QVLocalizedString::replaceTagsInString(QString()).isNull());
    EXPECT_EQ(QVLocalizedString::replaceTagsInString(u""_s), u""_s);
}

TEST(QVLocalizedStringTest, CustomTagsAndFiles)
{
    const ApplicationIdentity identity(u"Notes"_s, u"2.1"_s, u"345"_s);

    // Custom tags go first, so their values may hold built-in tags.
    EXPECT_EQ(QVLocalizedString::replaceTagsInString(u"Hi <name>, <NAME>"_s, QVTagReplacements{{u"<NAME>"_s, u"<APP_NAME>"_s}}),
              u"Hi Notes, Notes"_s);
    EXPECT_EQ(QVLocalizedString::replaceTagsInString(u"a<>b"_s, QVTagReplacements{{u""_s, u"x"_s}, {u"<>"_s, u"-"_s}}),
              u"a-b"_s)
        << "an empty tag matches nothing";

    // A configuration's dictionary, even an empty one, wins over none.
    QVLocalizedStringTagConfiguration configuration = QVLocalizedStringTagConfiguration::configuration();
    configuration.setCustomTagReplacement(QVTagReplacements{{u"<WHO>"_s, u"\u00c9milie"_s}});
    EXPECT_EQ(QVLocalizedString::replaceTagsInString(u"<WHO>"_s, configuration), u"\u00c9milie"_s);
    EXPECT_EQ(QVLocalizedString::replaceTagsInString(u"<WHO>"_s, std::nullopt), u"<WHO>"_s);

    configuration.setFileURL(QUrl::fromLocalFile(u"/home/\u00e9mile/Documents/Budget 2026.tar.gz"_s));
    EXPECT_EQ(QVLocalizedString::replaceTagsInString(
                  u"<QUOTE><FILE_NAME></QUOTE> in <file_path> is a <FILE_EXTENSION> file of <WHO>"_s, configuration),
              u"\u201cBudget 2026.tar.gz\u201d in /home/\u00e9mile/Documents/Budget 2026.tar.gz is a gz file of \u00c9milie"_s);

    QVLocalizedStringTagConfiguration remote;
    remote.setFileURL(QUrl(u"https://example.com/Budget.numbers"_s));
    EXPECT_EQ(QVLocalizedString::replaceTagsInString(u"<FILE_NAME>"_s, remote), u"<FILE_NAME>"_s)
        << "not a file URL: the tag stays";
}

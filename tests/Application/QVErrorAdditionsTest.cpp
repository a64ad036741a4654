#include <QVKit/Platform/QVError.h>
#include <QVKit/Platform/QVOSRelease.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QUrl>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QVariantMap wrapping(const QVError &error)
{
    return {{QVUnderlyingErrorKey, QVariant::fromValue(error)}};
}

const QString descriptionKey = QVLocalizedDescriptionKey;
const QString suggestionKey = QVLocalizedRecoverySuggestionErrorKey;

} // namespace

TEST(QVErrorAdditionsTest, TitlesAndDescriptionsOverwriteOnlyWhenGiven)
{
    EXPECT_TRUE(QVError::errorWithDomain(QString(), 1, u"t"_s, u"d"_s).isNull());
    EXPECT_FALSE(QVError::errorWithDomain(u""_s, 1, {}, {}).isNull());

    const QVariantMap given{{descriptionKey, u"old title"_s}, {suggestionKey, u"old text"_s}, {u"k"_s, 1}};
    const QVError overwritten = QVError::errorWithDomain(u"D"_s, -5, u"Titel \u00fc"_s, u"Text"_s, given);
    EXPECT_EQ(overwritten.code(), -5);
    EXPECT_EQ(overwritten.userInfo(),
              (QVariantMap{{descriptionKey, u"Titel \u00fc"_s}, {suggestionKey, u"Text"_s}, {u"k"_s, 1}}));
    const QVError kept = QVError::errorWithDomain(u"D"_s, 0, u""_s, QString(), given);
    EXPECT_EQ(kept.userInfo(), given) << "empty texts count as absent";
    EXPECT_TRUE(QVError::errorWithDomain(u"D"_s, 0, {}, {}).userInfo().isEmpty());
}

TEST(QVErrorAdditionsTest, Cancellation)
{
    const QVError cancelled = QVError::userCancelledError();
    EXPECT_EQ(cancelled, QVError(QVCocoaErrorDomain, 3072));
    EXPECT_TRUE(cancelled.userInfo().isEmpty());

    struct Row
    {
        const char *name;
        QVError error;
        bool expected;
    };
    const QVError twoDeep(u"A"_s, 1, wrapping(QVError(u"B"_s, 2, wrapping(cancelled))));
    const QVError urlCancelled(QVURLErrorDomain, -999);
    const Row rows[] = {
        {"user cancelled", cancelled, true},
        {"URL loading cancelled", urlCancelled, true},
        {"URL time-out", QVError(QVURLErrorDomain, -1001), false},
        {"3072 in another domain", QVError(QVURLErrorDomain, 3072), false},
        {"-999 in another domain", QVError(QVCocoaErrorDomain, -999), false},
        {"two levels deep", twoDeep, true},
        {"three levels, not cancelled", QVError(u"A"_s, 1, wrapping(QVError(u"B"_s, 2, wrapping(QVError(u"C"_s, 3))))), false},
        {"in the list of several",
         QVError(u"A"_s, 1, {{QVMultipleUnderlyingErrorsKey, QVariantList{QVariant::fromValue(urlCancelled)}}}), true},
        {"the list is one level only",
         QVError(u"A"_s, 1,
                 {{QVMultipleUnderlyingErrorsKey,
                   QVariantList{QVariant::fromValue(QVError(u"B"_s, 2, {{QVMultipleUnderlyingErrorsKey,
                                                                        QVariantList{QVariant::fromValue(cancelled)}}}))}}}),
         false},
        {"null error", QVError(), false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.error.isCancelled(), row.expected);
    }
}

TEST(QVErrorAdditionsTest, LibraryErrorsDescribeThemselves)
{
    const QVError error = QVError::quoveraErrorWithCode(7);
    EXPECT_EQ(error.domain(), u"QVErrorDomain"_s);
    EXPECT_EQ(error.code(), 7);
    EXPECT_EQ(error.localizedDescription(), u"An error occurred."_s);

    const QStringList paragraphs = error.localizedRecoverySuggestion().split(u"\n\n"_s);
    ASSERT_EQ(paragraphs.size(), 2);
    EXPECT_EQ(paragraphs[0], u"Please report this error and the steps to reproduce it."_s);
    const QStringList lines = paragraphs[1].split(u'\n');
    ASSERT_GE(lines.size(), 3);
    EXPECT_EQ(lines[0], u"QVErrorDomain Code 7"_s);
    EXPECT_EQ(lines[1], u"com.quovera.QVKitTests"_s);
    EXPECT_EQ(lines[2], u"QVKitTests 1.2.3"_s);
    const QVOSRelease system = QVOSRelease::current();
    if (!system.name().isEmpty() && !system.versionId().isEmpty()) {
        EXPECT_EQ(lines.value(3), system.name() + u' ' + system.versionId());
    }
    EXPECT_FALSE(error.localizedRecoverySuggestion().endsWith(u'\n')) << "trimmed";

    EXPECT_EQ(QVError::quoveraUnknownError().code(), 0);
    EXPECT_TRUE(QVError::quoveraUnknownError().localizedRecoverySuggestion().contains(u"QVErrorDomain Code 0\n"_s));

    const QVError titled = QVError::quoveraErrorWithCode(3, u""_s, u"Own text"_s, {{u"k"_s, true}});
    EXPECT_EQ(titled.localizedDescription(), u"An error occurred."_s) << "an empty title counts as absent";
    EXPECT_EQ(titled.localizedRecoverySuggestion(), u"Own text"_s);
    EXPECT_TRUE(titled.userInfo().value(u"k"_s).toBool());
}

TEST(QVErrorAdditionsTest, FileCreatedWithNewerVersion)
{
    const QUrl file = QUrl::fromLocalFile(u"/tmp/Quartalsbericht \u00fc.notes"_s);
    const QString title = u"\u201cQuartalsbericht \u00fc.notes\u201d was created with a newer version of QVKitTests."_s;

    const QVError versioned = QVError::quoveraErrorFileCreatedWithNewerVersion(file, u"3.0"_s);
    EXPECT_EQ(versioned.code(), QVErrorCodeFileCreatedWithNewerVersion);
    EXPECT_EQ(versioned.localizedDescription(), title);
    EXPECT_EQ(versioned.localizedRecoverySuggestion(), u"Please upgrade QVKitTests to 3.0 or newer to use this file."_s);

    const QVError generic = QVError::quoveraErrorFileCreatedWithNewerVersion(file, u""_s);
    EXPECT_EQ(generic.localizedDescription(), title);
    EXPECT_EQ(generic.localizedRecoverySuggestion(), u"Please upgrade QVKitTests to a newer version to use this file."_s);

    const QVError noVersion = QVError::quoveraErrorFileCreatedWithNewerVersion(file, std::nullopt);
    EXPECT_EQ(noVersion.localizedRecoverySuggestion(), generic.localizedRecoverySuggestion());

    EXPECT_TRUE(QVError::quoveraErrorFileCreatedWithNewerVersion(QUrl(), u"3.0"_s).isNull());
}

#include <QVKit/Platform/QVError.h>

#include <QtCore/QVariant>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(QVErrorTest, NullMeansNoError)
{
    EXPECT_TRUE(QVError().isNull());
    EXPECT_FALSE(QVError(u""_s, 0).isNull()) << "an empty domain is still a domain";
    EXPECT_TRUE(QVError::fromVariant(QVariant()).isNull());
    EXPECT_TRUE(QVError::fromVariant(QVariant(u"NSCocoaErrorDomain"_s)).isNull());
    EXPECT_TRUE(QVError().underlyingError().isNull());
    // No error has nothing to say; an error with an empty domain still does.
    EXPECT_TRUE(QVError().description().isEmpty());
    EXPECT_TRUE(QVError().localizedDescription().isEmpty());
    EXPECT_EQ(QVError(u""_s, 0).localizedDescription(), u"The operation couldn\u2019t be completed. ( error 0.)"_s);
}

TEST(QVErrorTest, DetailsAndDescriptions)
{
    const QVError plain(QVCocoaErrorDomain, QVUserCancelledError);
    EXPECT_EQ(plain.domain(), u"NSCocoaErrorDomain"_s);
    EXPECT_EQ(plain.code(), 3072);
    EXPECT_EQ(plain.localizedDescription(),
              u"The operation couldn\u2019t be completed. (NSCocoaErrorDomain error 3072.)"_s);
    EXPECT_TRUE(plain.localizedRecoverySuggestion().isNull());
    EXPECT_EQ(plain.description(), u"Error Domain=NSCocoaErrorDomain Code=3072 \"The operation couldn\u2019t be "
                                   u"completed. (NSCocoaErrorDomain error 3072.)\" UserInfo={}"_s);

    const QVError titled(u"QVErrorDomain"_s, std::numeric_limits<qint64>::min(),
                         {{QVLocalizedDescriptionKey, u"Kaputt \u00fcberall"_s},
                          {QVLocalizedRecoverySuggestionErrorKey, u"Neu starten."_s}});
    EXPECT_EQ(titled.code(), std::numeric_limits<qint64>::min());
    EXPECT_EQ(titled.localizedDescription(), u"Kaputt \u00fcberall"_s);
    EXPECT_EQ(titled.localizedRecoverySuggestion(), u"Neu starten."_s);
    EXPECT_TRUE(titled.description().startsWith(u"Error Domain=QVErrorDomain Code=-9223372036854775808 \"Kaputt"_s));
}

TEST(QVErrorTest, ErrorsNestThroughTheirDetails)
{
    const QVError cancelled(QVURLErrorDomain, QVURLErrorCancelled);
    const QVError middle(u"B"_s, 2, {{QVUnderlyingErrorKey, QVariant::fromValue(cancelled)}});
    const QVError top(u"A"_s, 1, {{QVUnderlyingErrorKey, QVariant::fromValue(middle)}});

    EXPECT_EQ(top.underlyingError(), middle);
    EXPECT_EQ(top.underlyingError().underlyingError(), cancelled);
    EXPECT_TRUE(cancelled.underlyingError().isNull());

    const QVError several(u"C"_s, 3,
                          {{QVMultipleUnderlyingErrorsKey,
                            QVariantList{QVariant::fromValue(cancelled), u"not an error"_s, QVariant::fromValue(top)}}});
    EXPECT_EQ(several.underlyingErrors(), (QList<QVError>{cancelled, top}));
}

TEST(QVErrorTest, EqualityIsByValue)
{
    const QVError a(u"D"_s, 5, {{u"k"_s, 1}});
    QVError b = a;
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, QVError(u"D"_s, 5, {{u"k"_s, 1}}));
    EXPECT_FALSE(a == QVError(u"D"_s, 5, {{u"k"_s, 2}}));
    EXPECT_FALSE(a == QVError(u"D"_s, 6, {{u"k"_s, 1}}));
    EXPECT_FALSE(a == QVError(u"E"_s, 5, {{u"k"_s, 1}}));
    // Equality holds inside QVariant too, so details holding errors compare.
    EXPECT_EQ(QVariant::fromValue(a), QVariant::fromValue(b));
}

#include <QVKit/Collections/QVDictionaryAdditions.h>
#include <QVKit/Platform/QVLog.h>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

const QVariant null = QVariant::fromValue(nullptr);

QStringList sorted(const std::optional<QStringList> &keys)
{
    if (!keys)
        return {u"<nil>"_s};
    QStringList result = *keys;
    result.sort();
    return result;
}

} // namespace

TEST(QVDictionaryAdditionsTest, ForwardingAgreesWithTheEngine)
{
    const QVariantMap mixed{{u"a"_s, u"x"_s}, {u"b"_s, u""_s}, {u"c"_s, null}, {u"d"_s, u"x"_s}};
    const quint64 present = QVCollectionMatchNonEmpty | QVCollectionMatchNonNull;
    EXPECT_EQ(sorted(QVDictionary::keysWithObjectsMatching(mixed, present)),
              sorted(QVCollectionTools::identifiersWithObjectsMatching(mixed, present)));
    EXPECT_EQ(sorted(QVDictionary::keysWithObjectsMatching(mixed, present)), (QStringList{u"a"_s, u"d"_s}));
    EXPECT_EQ(QVDictionary::dictionaryWithObjectsMatching(mixed, QVCollectionMatchEmpty | QVCollectionMatchNonNull),
              (QVariantMap{{u"b"_s, u""_s}}));
    EXPECT_FALSE(QVDictionary::dictionaryWithObjectsMatching(QVariantMap(), QVCollectionMatchNonEmpty));

    // The argument is enumerated; the receiver's values only add to the counts.
    const QVariantMap receiver{{u"k"_s, u"x"_s}};
    const QVariantMap argument{{u"b"_s, u"x"_s}, {u"c"_s, u"y"_s}, {u"d"_s, u"y"_s}};
    EXPECT_EQ(sorted(QVDictionary::keysWithObjectsMatching(receiver, QVCollectionTools::AddUniqueObjectsMatch,
                                                           argument)),
              QStringList{u"c"_s});
    EXPECT_EQ(QVDictionary::dictionaryWithObjectsMatching(receiver, QVCollectionTools::AddUniqueObjectsMatch, argument),
              (QVariantMap{{u"c"_s, u"y"_s}}));

    QVariantMap target = receiver;
    QVDictionary::addUniqueObjectsFromDictionary(target, argument);
    EXPECT_EQ(target, (QVariantMap{{u"k"_s, u"x"_s}, {u"c"_s, u"y"_s}}));

    // De-duplicated by value; a QMap walks in key order, so the first key of a value stays.
    QVariantMap repeats{{u"a"_s, u"x"_s}, {u"b"_s, u"y"_s}, {u"c"_s, u"x"_s}};
    QVDictionary::removeDuplicateObjects(repeats);
    EXPECT_EQ(repeats, (QVariantMap{{u"a"_s, u"x"_s}, {u"b"_s, u"y"_s}}));

    QVariantHash unsanitized{{u"a"_s, u""_s}, {u"b"_s, null}, {u"c"_s, u"v"_s}, {u"d"_s, u"v"_s}};
    QVDictionary::removeUnsanitizedObjects(unsanitized);
    ASSERT_EQ(unsanitized.size(), 1);
    EXPECT_EQ(unsanitized.cbegin().value(), QVariant(u"v"_s));

    QVariantMap sanitizedTarget{{u"k"_s, u"x"_s}};
    QVDictionary::addSanitizedObjectsFromDictionary(
        sanitizedTarget, QVariantMap{{u"a"_s, u""_s}, {u"b"_s, null}, {u"c"_s, u"x"_s}, {u"d"_s, u"ö"_s}});
    EXPECT_EQ(sanitizedTarget, (QVariantMap{{u"k"_s, u"x"_s}, {u"d"_s, u"ö"_s}}));

    QVariantMap removing = mixed;
    QVDictionary::removeObjectsMatching(removing, QVCollectionMatchNull | QVCollectionMatchEmpty);
    EXPECT_EQ(removing, (QVariantMap{{u"a"_s, u"x"_s}, {u"d"_s, u"x"_s}}));

    // Typed dictionaries, and a QMap added into a QHash.
    QHash<int, QString> typed{{1, u"one"_s}};
    QVDictionary::addObjectsFromDictionary(typed, QMap<int, QString>{{2, u""_s}, {3, u"three"_s}},
                                           QVCollectionMatchNonEmpty);
    EXPECT_EQ(typed, (QHash<int, QString>{{1, u"one"_s}, {3, u"three"_s}}));
    std::optional<QList<int>> keys = QVDictionary::keysWithObjectsMatching(typed, QVCollectionMatchUnique);
    ASSERT_TRUE(keys);
    std::sort(keys->begin(), keys->end());
    EXPECT_EQ(*keys, (QList<int>{1, 3}));
}

TEST(QVDictionaryAdditionsTest, FilterWithOptions)
{
    const QMap<QString, int> counts{{u"a"_s, 1}, {u"b"_s, 2}, {u"c"_s, 3}, {u"d"_s, 4}};
    const auto above1 = [](const QString &, int value, bool *) { return value > 1; };
    EXPECT_EQ(QVDictionary::filteredDictionaryWithOptions(counts, 0, above1),
              (QMap<QString, int>{{u"b"_s, 2}, {u"c"_s, 3}, {u"d"_s, 4}}));
    EXPECT_EQ(QVDictionary::filteredDictionaryWithOptions(counts, QVEnumerationConcurrent, above1),
              QVDictionary::filteredDictionaryWithOptions(counts, 0, above1));
    EXPECT_FALSE(QVDictionary::filteredDictionaryWithOptions(counts, 0, [](const QString &, int, bool *) {
        return false;
    }));
    EXPECT_FALSE(QVDictionary::filteredDictionaryWithOptions(QMap<QString, int>(), 0, above1));

    // Stopping after the first even value: which one depends on the direction.
    const auto firstEven = [](const QString &, int value, bool *stop) {
        *stop = value % 2 == 0;
        return *stop;
    };
    EXPECT_EQ(QVDictionary::filteredDictionaryWithOptions(counts, 0, firstEven), (QMap<QString, int>{{u"b"_s, 2}}));
    EXPECT_EQ(QVDictionary::filteredDictionaryWithOptions(counts, QVEnumerationReverse, firstEven),
              (QMap<QString, int>{{u"d"_s, 4}}));

    // Keys take part too.
    QVariantHash settings{{u"QVShow"_s, true}, {u"QVHide"_s, false}, {u"Other"_s, true}};
    QVDictionary::filterWithOptions(settings, 0, [](const QString &key, const QVariant &value, bool *) {
        return key.startsWith(u"QV"_s) && value.toBool();
    });
    EXPECT_EQ(settings, (QVariantHash{{u"QVShow"_s, true}}));
    QVDictionary::filterWithOptions(settings, 0, [](const QString &, const QVariant &, bool *) { return false; });
    EXPECT_TRUE(settings.isEmpty());
}

TEST(QVDictionaryAdditionsTest, DictionaryWithObjectsForKeys)
{
    const QVariantMap map{{u"ä"_s, 1}, {u"b"_s, null}, {u"c"_s, u""_s}};
    // Null and empty values are values; missing keys are left out.
    EXPECT_EQ(QVDictionary::dictionaryWithObjectsForKeys(map, QStringList{u"ä"_s, u"b"_s, u"zz"_s}),
              (QVariantMap{{u"ä"_s, 1}, {u"b"_s, null}}));
    EXPECT_EQ(QVDictionary::dictionaryWithObjectsForKeys(map, QSet<QString>{u"c"_s}), (QVariantMap{{u"c"_s, u""_s}}));
    EXPECT_FALSE(QVDictionary::dictionaryWithObjectsForKeys(map, QStringList{u"a"_s, u"x"_s}));
    EXPECT_FALSE(QVDictionary::dictionaryWithObjectsForKeys(map, QStringList()));
    EXPECT_FALSE(QVDictionary::dictionaryWithObjectsForKeys(QHash<int, int>(), QList<int>{1}));
}

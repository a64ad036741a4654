#include <QVKit/Collections/QVCollectionTools.h>
#include <QVKit/Collections/QVNonEmpty.h>
#include <QVKit/Platform/QVLog.h>

#include <QtCore/QSharedPointer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Tools = QVCollectionTools;

const QVariant Null = QVariant::fromValue(nullptr);

QVariantList strings(std::initializer_list<const char16_t *> texts)
{
    QVariantList list;
    for (const char16_t *text : texts)
        list.append(QString::fromUtf16(text));
    return list;
}

QVariant asSet(const QVariantList &list)
{
    return QVariant::fromValue(QVVariantSet(list.cbegin(), list.cend()));
}

QVIndexSet indexesOf(const QVariant &value)
{
    EXPECT_EQ(value.metaType(), QMetaType::fromType<QVIndexSet>());
    return value.value<QVIndexSet>();
}

} // namespace

TEST(QVCollectionToolsTest, EmptyCollectionsAnswerNilForEveryReturnType)
{
    const QVariant collections[] = {QVariantList(), QVariantMap(), QVariantHash(), asSet({})};
    for (const QVariant &collection : collections) {
        SCOPED_TRACE(collection.typeName());
        for (const quint64 mask : {quint64(QVCollectionMatchNonEmpty), quint64(QVCollectionMatchUnique),
                                   quint64(QVCollectionMatchDuplicate | QVCollectionMatchKeepsFirstDuplicate)}) {
            EXPECT_FALSE(Tools::identifiersWithObjectsMatching(collection, mask).isValid());
            EXPECT_FALSE(Tools::objectCollectionWithObjectsMatching(collection, mask).isValid());
            QVariant editable = collection;
            EXPECT_FALSE(Tools::enumerateCollection(&editable, mask, QVariant(), QVCollectionActionRemove,
                                                    QVCollectionReturnTypeObjectCollection)
                             .isValid());
        }
    }
    // Typed: nil, never an empty container; also when nothing matches.
    EXPECT_FALSE(Tools::identifiersWithObjectsMatching(QStringList(), QVCollectionMatchNonEmpty));
    EXPECT_FALSE(Tools::objectCollectionWithObjectsMatching(QSet<int>(), QVCollectionMatchUnique));
    EXPECT_FALSE(Tools::objectCollectionWithObjectsMatching(QStringList{u"a"_s}, QVCollectionMatchEmpty));
    EXPECT_FALSE((Tools::identifiersWithObjectsMatching(QHash<int, QString>{{1, u"x"_s}}, QVCollectionMatchNull)));
}

TEST(QVCollectionToolsTest, InvalidInputLogsItsLineAndAnswersNil)
{
    struct Row
    {
        const char *name;
        quint64 mask;
        QString line;
    };
    const Row rows[] = {
        {"empty mask", 0, u"CollectionMatch invalid. Cannot be empty."_s},
        {"empty pair", 3, u"CollectionMatch invalid. Empty and Non-Empty are mutually exclusive."_s},
        {"null pair", 12, u"CollectionMatch invalid. Null and Non-Null are mutually exclusive."_s},
        {"unique pair", 48, u"CollectionMatch invalid. Unique and Duplicate are mutually exclusive."_s},
        {"keeps pair", 3072,
         u"CollectionMatch invalid. KeepsFirstDuplicate and KeepsLastDuplicate are mutually exclusive."_s},
        // Checked in order: the first conflict is the one reported.
        {"all pairs", 0xFFF, u"CollectionMatch invalid. Empty and Non-Empty are mutually exclusive."_s},
    };
    const QVariant list = strings({u"a", u"a"});
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVLogCapture capture;
        EXPECT_FALSE(Tools::isValidCollectionMatch(row.mask));
        EXPECT_FALSE(Tools::identifiersWithObjectsMatching(list, row.mask).isValid());
        EXPECT_FALSE(Tools::identifiersWithObjectsMatching(QStringList{u"a"_s}, row.mask));
        EXPECT_EQ(capture.lines(), QStringList(3, row.line));
    }
    {
        // Unused bits alone and Keeps bits alone are valid masks.
        QVLogCapture capture;
        EXPECT_TRUE(Tools::isValidCollectionMatch(0x40));
        EXPECT_TRUE(Tools::isValidCollectionMatch(QVCollectionMatchKeepsLastDuplicate));
        EXPECT_TRUE(capture.lines().isEmpty());
    }
    {
        QVLogCapture capture;
        EXPECT_FALSE(Tools::enumerateCollection(list, QVCollectionMatchUnique, QVariant(), QVCollectionActionReturn,
                                                QVCollectionReturnTypeNone)
                         .isValid());
        EXPECT_TRUE(capture.contains(u"Return action cannot use return type of None."_s));
    }
    {
        QVLogCapture capture;
        const QStringList constant{u"a"_s, u"a"_s};
        Tools::removeDuplicateObjects(list);
        Tools::removeDuplicateObjects(constant);
        EXPECT_EQ(capture.lines(), QStringList(2, u"Delete action requires mutable collection"_s));
        EXPECT_EQ(list.toList().size(), 2);
        EXPECT_EQ(constant.size(), 2);
    }
    {
        QVLogCapture capture;
        EXPECT_FALSE(Tools::isValidCollectionType(QVariant()));
        EXPECT_FALSE(Tools::isValidCollectionType(static_cast<const QVariant *>(nullptr)));
        EXPECT_TRUE(capture.lines().isEmpty());
        EXPECT_FALSE(Tools::identifiersWithObjectsMatching(QVariant(u"text"_s), QVCollectionMatchEmpty).isValid());
        EXPECT_FALSE(Tools::isValidCollectionType(QVariant(QStringList{u"a"_s})));
        EXPECT_EQ(capture.lines(), (QStringList{u"CollectionType invalid. Collection: text."_s,
                                                u"CollectionType invalid. Collection: (a)."_s}));
    }
    {
        // Any other action passes validation, logs per tested object and matches nothing.
        QVLogCapture capture;
        EXPECT_FALSE(Tools::enumerateCollection(list, QVCollectionMatchNonEmpty, QVariant(), 3,
                                                QVCollectionReturnTypeIdentifiers)
                         .isValid());
        EXPECT_EQ(capture.lines(), QStringList(2, u"Unhandled action in match block"_s));
    }
}

TEST(QVCollectionToolsTest, ComparisonItselfIsIgnoredAndAnotherKindAnswersNilSilently)
{
    const QVariant list = strings({u"a", u"b", u"a"});
    // The very same object adds nothing to the counts.
    EXPECT_EQ(indexesOf(Tools::identifiersWithObjectsMatching(list, QVCollectionMatchUnique, list)), QVIndexSet{1});
    const QStringList typed{u"a"_s, u"b"_s, u"a"_s};
    EXPECT_EQ(Tools::identifiersWithObjectsMatching(typed, QVCollectionMatchUnique, typed), QVIndexSet{1});
    // A copy is another object: its objects count as well.
    const QVariant copy = list;
    EXPECT_FALSE(Tools::identifiersWithObjectsMatching(copy, QVCollectionMatchUnique, list).isValid());

    QVLogCapture capture;
    EXPECT_FALSE(Tools::identifiersWithObjectsMatching(asSet(strings({u"a"})), QVCollectionMatchUnique, list)
                     .isValid());
    EXPECT_FALSE(Tools::objectCollectionWithObjectsMatching(QVariantMap{{u"k"_s, u"a"_s}},
                                                            QVCollectionMatchNonEmpty, list)
                     .isValid());
    EXPECT_FALSE(Tools::identifiersWithObjectsMatching(QSet<QString>{u"a"_s}, QVCollectionMatchNonEmpty, typed));
    // Same kind, values that do not convert: also nil.
    EXPECT_FALSE(Tools::identifiersWithObjectsMatching(QList<int>{1}, QVCollectionMatchNonEmpty, typed));
    EXPECT_TRUE(capture.lines().isEmpty());

    // A map and a hash are both dictionaries.
    const QVariantHash hash{{u"x"_s, u"a"_s}};
    const QVariant keys = Tools::identifiersWithObjectsMatching(
        QVariant(hash), QVCollectionMatchDuplicate, QVariant(QVariantMap{{u"k"_s, u"a"_s}, {u"l"_s, u"b"_s}}));
    EXPECT_EQ(keys.toList(), QVariantList{u"k"_s});
    EXPECT_EQ(Tools::identifiersWithObjectsMatching(hash, QVCollectionMatchDuplicate,
                                                    QVariantMap{{u"k"_s, u"a"_s}, {u"l"_s, u"b"_s}}),
              QStringList{u"k"_s});
}

TEST(QVCollectionToolsTest, UniquenessDependsOnKeepsBitAndDirection)
{
    struct Row
    {
        const char *name;
        quint64 mask;
        QVIndexSet returned; // Return/Identifiers
        QStringList afterRemove;
    };
    const quint64 unique = QVCollectionMatchUnique, duplicate = QVCollectionMatchDuplicate;
    const quint64 first = QVCollectionMatchKeepsFirstDuplicate, last = QVCollectionMatchKeepsLastDuplicate;
    const Row rows[] = {
        // (a, b, a, c, a)
        {"unique, occurs once in total", unique, {1, 3}, {u"a"_s, u"a"_s, u"a"_s}},
        {"duplicate, every copy", duplicate, {0, 2, 4}, {u"b"_s, u"c"_s}},
        {"unique keeping first", unique | first, {0, 1, 3}, {u"a"_s, u"a"_s}},
        {"unique keeping last", unique | last, {1, 3, 4}, {u"a"_s, u"a"_s}},
        // Return walks forward here, so the copies before the last one are the
        // returned duplicates, while Remove walks backwards and drops the later ones.
        {"duplicate keeping first", duplicate | first, {0, 2}, {u"a"_s, u"b"_s, u"c"_s}},
        {"duplicate keeping last", duplicate | last, {2, 4}, {u"b"_s, u"c"_s, u"a"_s}},
    };
    const QStringList source{u"a"_s, u"b"_s, u"a"_s, u"c"_s, u"a"_s};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Tools::identifiersWithObjectsMatching(source, row.mask), row.returned);
        QStringList typed = source;
        Tools::removeObjectsMatching(typed, row.mask);
        EXPECT_EQ(typed, row.afterRemove);
        // The heterogeneous face gives the same answers.
        const QVariant list = QVariant(QVariant(source).toList());
        EXPECT_EQ(indexesOf(Tools::identifiersWithObjectsMatching(list, row.mask)), row.returned);
        QVariant editable = list;
        Tools::removeObjectsMatching(&editable, row.mask);
        EXPECT_EQ(editable.toStringList(), row.afterRemove);
    }
}

TEST(QVCollectionToolsTest, ConveniencesRemoveAndAdd)
{
    QVariant list = strings({u"a", u"b", u"a", u"c", u"a"});
    Tools::removeDuplicateObjects(&list);
    EXPECT_EQ(list.toList(), strings({u"a", u"b", u"c"}));

    QVariant target = strings({u"a", u"b"});
    Tools::addUniqueObjectsFromCollection(&target, strings({u"b", u"d", u"d"}));
    EXPECT_EQ(target.toList(), strings({u"a", u"b", u"d"}));

    // Beyond ASCII: composed and decomposed é are different strings, emoji repeats are repeats.
    QStringList typed{u"é"_s, u"e\u0301"_s, u"😀"_s, u"é"_s, u"😀"_s};
    Tools::removeDuplicateObjects(typed);
    EXPECT_EQ(typed, (QStringList{u"é"_s, u"e\u0301"_s, u"😀"_s}));

    QStringList typedTarget{u"a"_s, u"b"_s};
    Tools::addUniqueObjectsFromCollection(typedTarget, QStringList{u"b"_s, u"d"_s, u"d"_s});
    EXPECT_EQ(typedTarget, (QStringList{u"a"_s, u"b"_s, u"d"_s}));

    QVariant sanitized = QVariantList{u"x"_s};
    Tools::addSanitizedObjectsFromCollection(&sanitized, QVariantList{u""_s, Null, u"y"_s, u"x"_s, u"y"_s});
    EXPECT_EQ(sanitized.toList(), strings({u"x", u"y"}));

    QVariant dictionary = QVariantMap{{u"a"_s, 1}};
    Tools::addObjectsFromCollection(&dictionary, QVariantHash{{u"b"_s, 2}, {u"c"_s, Null}},
                                    QVCollectionMatchNonNull);
    EXPECT_EQ(dictionary.toMap(), (QVariantMap{{u"a"_s, 1}, {u"b"_s, 2}}));

    QVariant set = asSet(strings({u"a"}));
    Tools::addUniqueObjectsFromCollection(&set, asSet(strings({u"a", u"b"})));
    EXPECT_EQ(set, asSet(strings({u"a", u"b"})));

    QVLogCapture capture;
    const QVariant immutable = strings({u"a"});
    Tools::addObjectsFromCollection(immutable, strings({u"b"}), QVCollectionMatchNonEmpty);
    const QStringList constTarget{u"a"_s};
    Tools::addObjectsFromCollection(constTarget, QStringList{u"b"_s}, QVCollectionMatchNonEmpty);
    // A nil result adds nothing and says nothing.
    Tools::addObjectsFromCollection(immutable, strings({u"a"}), Tools::AddUniqueObjectsMatch);
    EXPECT_EQ(capture.lines(), QStringList(2, u"Unhandled collection type"_s));
}

TEST(QVCollectionToolsTest, SanitizingRemovesWithOrAndReturnSelectsWithAnd)
{
    const QVariantList dirty{u"a"_s, u""_s, Null, u"a"_s, QVariantList(), u"b"_s};
    QVariant list = dirty;
    Tools::removeUnsanitizedObjects(&list);
    EXPECT_EQ(list.toList(), strings({u"a", u"b"}));

    // Return with the same criteria needs all of them at once: nothing is empty and null.
    EXPECT_FALSE(Tools::identifiersWithObjectsMatching(QVariant(dirty), Tools::RemoveUnsanitizedObjectsMatch)
                     .isValid());
    EXPECT_EQ(indexesOf(Tools::identifiersWithObjectsMatching(QVariant(dirty), QVCollectionMatchEmpty
                                                                                   | QVCollectionMatchNonNull)),
              (QVIndexSet{1, 4}));

    // Typed handles: a null pointer is the null object, emptiness is the pointee's.
    const auto a = QSharedPointer<QString>::create(u"a"_s);
    const auto b = QSharedPointer<QString>::create(u"b"_s);
    QList<QSharedPointer<QString>> handles{QSharedPointer<QString>::create(), {}, a, a, b};
    Tools::removeUnsanitizedObjects(handles);
    EXPECT_EQ(handles, (QList<QSharedPointer<QString>>{a, b}));
}

TEST(QVCollectionToolsTest, DictionariesAndSets)
{
    // A dictionary is de-duplicated by its values; its identifiers are keys.
    const QVariantMap map{{u"k1"_s, u"a"_s}, {u"k2"_s, u"b"_s}, {u"k3"_s, u"a"_s}};
    QVariantList keys = Tools::identifiersWithObjectsMatching(QVariant(map), QVCollectionMatchDuplicate).toList();
    std::sort(keys.begin(), keys.end(), [](const QVariant &x, const QVariant &y) { return x.toString() < y.toString(); });
    EXPECT_EQ(keys, (QVariantList{u"k1"_s, u"k3"_s}));
    QVariant editable = map;
    Tools::removeDuplicateObjects(&editable);
    EXPECT_EQ(editable.toMap(), (QVariantMap{{u"k1"_s, u"a"_s}, {u"k2"_s, u"b"_s}}));
    EXPECT_EQ(Tools::objectCollectionWithObjectsMatching(QVariant(map), QVCollectionMatchUnique).toMap(),
              (QVariantMap{{u"k2"_s, u"b"_s}}));

    QMap<int, QString> typed{{1, u"a"_s}, {2, u""_s}, {3, u"a"_s}};
    EXPECT_EQ(Tools::identifiersWithObjectsMatching(typed, QVCollectionMatchEmpty), QList<int>{2});
    Tools::removeUnsanitizedObjects(typed);
    EXPECT_EQ(typed, (QMap<int, QString>{{1, u"a"_s}}));

    // The set shortcut: every member of a set is unique on its own.
    const QVariant set = asSet(strings({u"a", u"b"}));
    EXPECT_EQ(Tools::objectCollectionWithObjectsMatching(set, QVCollectionMatchUnique), set);
    EXPECT_EQ(Tools::identifiersWithObjectsMatching(set, QVCollectionMatchUnique), set);
    EXPECT_FALSE(Tools::objectCollectionWithObjectsMatching(set, QVCollectionMatchDuplicate).isValid());
    // With a distinct comparison the members are counted together.
    EXPECT_EQ(Tools::objectCollectionWithObjectsMatching(asSet(strings({u"b", u"c"})), QVCollectionMatchUnique, set),
              asSet(strings({u"a"})));
    EXPECT_EQ(Tools::objectCollectionWithObjectsMatching(QSet<int>{2, 3}, QVCollectionMatchDuplicate,
                                                         QSet<int>{1, 2}),
              QSet<int>{2});
    QSet<QString> members{u"a"_s, u""_s};
    Tools::removeObjectsMatching(members, QVCollectionMatchEmpty);
    EXPECT_EQ(members, QSet<QString>{u"a"_s});
}

TEST(QVCollectionToolsTest, RemoveWithObjectCollectionAnswersTheRemovedObjects)
{
    QVariant list = QVariantList{u"a"_s, u""_s, Null, u"b"_s};
    const QVariant removed = Tools::enumerateCollection(&list, QVCollectionMatchEmpty | QVCollectionMatchNull,
                                                        QVariant(), QVCollectionActionRemove,
                                                        QVCollectionReturnTypeObjectCollection);
    EXPECT_EQ(removed.toList(), (QVariantList{u""_s, Null}));
    EXPECT_EQ(list.toList(), strings({u"a", u"b"}));

    QList<int> numbers{1, 2, 1, 3};
    const auto result = Tools::enumerateCollection(numbers, Tools::RemoveDuplicateObjectsMatch, nullptr,
                                                   QVCollectionActionRemove, QVCollectionReturnTypeIdentifiers);
    EXPECT_EQ(result.identifiers, QVIndexSet{2});
    EXPECT_FALSE(result.objects);
    EXPECT_EQ(numbers, (QList<int>{1, 2, 3}));

    // Numbers are equal across their types, as QVariant compares them.
    QVariant mixed = QVariantList{1, 1.0, qlonglong(2), 2u};
    Tools::removeDuplicateObjects(&mixed);
    EXPECT_EQ(mixed.toList().size(), 2);
}

TEST(QVCollectionToolsTest, ConcurrentThresholdGivesTheSerialResults)
{
    for (const qsizetype size : {qsizetype(100000), qsizetype(100001)}) {
        SCOPED_TRACE(size);
        QVariantList list;
        QStringList typed;
        list.reserve(size);
        QVIndexSet expectedSanitary;
        QVIndexSet expectedNull;
        for (qsizetype i = 0; i < size; ++i) {
            if (i % 7 == 3) {
                list.append(Null);
                typed.append(QString());
                expectedNull.addIndex(quint64(i));
            } else if (i % 5 == 1) {
                list.append(u""_s);
                typed.append(u""_s);
            } else {
                list.append(QString::number(i % 13));
                typed.append(QString::number(i % 13));
                expectedSanitary.addIndex(quint64(i));
            }
        }
        const quint64 sanitary = QVCollectionMatchNonEmpty | QVCollectionMatchNonNull;
        EXPECT_EQ(indexesOf(Tools::identifiersWithObjectsMatching(QVariant(list), sanitary)), expectedSanitary);
        EXPECT_EQ(Tools::identifiersWithObjectsMatching(typed, QVCollectionMatchNonEmpty), expectedSanitary);
        EXPECT_EQ(indexesOf(Tools::identifiersWithObjectsMatching(QVariant(list), QVCollectionMatchNull)), expectedNull);

        QVariant editable = list;
        Tools::removeObjectsMatching(&editable, QVCollectionMatchEmpty | QVCollectionMatchNull);
        EXPECT_EQ(quint64(editable.toList().size()), expectedSanitary.count());
        EXPECT_EQ(editable.toList().first(), list.at(qsizetype(expectedSanitary.firstIndex())));
        EXPECT_EQ(editable.toList().last(), list.at(qsizetype(expectedSanitary.lastIndex())));
    }
}

TEST(QVCollectionToolsTest, ReadsJSONOfTheExpectedKind)
{
    QVError error;
    EXPECT_EQ(Tools::arrayForJSONString(u"[1, \"ü\", null]"_s, &error),
              (QVariantList{1.0, u"ü"_s, Null}));
    EXPECT_TRUE(error.isNull());
    EXPECT_EQ(Tools::dictionaryForJSONString(u"{\"k\": [true]}"_s, nullptr),
              (QVariantMap{{u"k"_s, QVariantList{true}}}));

    struct Row
    {
        const char *name;
        QString text;
        bool wantsArray;
        bool passError;
        QString line;
    };
    const Row rows[] = {
        {"no data", QString(), true, true, u"QVCollectionTools::arrayForJSONString responseData is nil"_s},
        {"wrong kind", u"{}"_s, true, true,
         u"QVCollectionTools::arrayForJSONString object is not expectedClass QVariantList"_s},
        {"wrong kind, dictionary", u"[]"_s, false, false,
         u"QVCollectionTools::dictionaryForJSONString object is not expectedClass QVariantMap"_s},
        {"bad JSON without error pointer", u"[1,"_s, true, false,
         u"QVCollectionTools::arrayForJSONString object is not expectedClass QVariantList"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVLogCapture capture;
        QVError rowError;
        QVError *pointer = row.passError ? &rowError : nullptr;
        if (row.wantsArray)
            EXPECT_FALSE(Tools::arrayForJSONString(row.text, pointer));
        else
            EXPECT_FALSE(Tools::dictionaryForJSONString(row.text, pointer));
        EXPECT_EQ(capture.lines(), QStringList{row.line});
        EXPECT_TRUE(rowError.isNull());
    }

    QVLogCapture capture;
    EXPECT_FALSE(Tools::arrayForJSONString(u"[1,"_s, &error));
    EXPECT_EQ(error.domain(), QVCocoaErrorDomain);
    EXPECT_EQ(error.code(), QVPropertyListReadCorruptError);
    ASSERT_EQ(capture.lines().size(), 1);
    EXPECT_TRUE(capture.lines().first().startsWith(u"QVCollectionTools::arrayForJSONString JSONError: "_s));

    // A lone value only with fragments allowed.
    EXPECT_EQ(Tools::collectionForJSONString(u"\"text\""_s, QVJSONReadingFragmentsAllowed, nullptr,
                                             QMetaType::fromType<QString>()),
              QVariant(u"text"_s));
    EXPECT_FALSE(Tools::collectionForJSONString(u"1, 2"_s, QVJSONReadingFragmentsAllowed, nullptr,
                                                QMetaType::fromType<double>())
                     .isValid());
}

TEST(QVCollectionToolsTest, EmptinessOfValues)
{
    struct Row
    {
        const char *name;
        QVariant value;
        bool nonEmpty;
    };
    const Row rows[] = {
        {"no object", QVariant(), false},
        {"null marker", Null, true},
        {"empty string", u""_s, false},
        {"string", u"ß"_s, true},
        {"empty data", QByteArray(), false},
        {"empty list", QVariantList(), false},
        {"list", QVariantList{Null}, true},
        {"empty map", QVariantMap(), false},
        {"empty hash", QVariantHash(), false},
        {"empty set", asSet({}), false},
        {"empty attributed string", QVariant::fromValue(QVAttributedString()), false},
        {"attributed string", QVariant::fromValue(QVAttributedString(u"x"_s)), true},
        {"empty index set", QVariant::fromValue(QVIndexSet()), false},
        {"index set", QVariant::fromValue(QVIndexSet{0}), true},
        {"zero", 0, true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVCollections::isNonEmpty(row.value), row.nonEmpty);
        EXPECT_EQ(QVCollections::nonEmptyReturn(row.value).isValid(), row.nonEmpty);
    }
    EXPECT_EQ(QVCollections::nonEmptyReturn(QStringList{u"a"_s}), QStringList{u"a"_s});
    EXPECT_FALSE(QVCollections::nonEmptyReturn(QHash<int, int>()));
    EXPECT_FALSE(QVCollections::nonEmptyReturn(QString()));
    EXPECT_TRUE(QVCollections::nonEmptyReturn(42)); // no notion of emptiness
}

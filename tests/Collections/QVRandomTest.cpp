#include <QVKit/Collections/QVRandom.h>
#include <QVKit/Platform/QVLog.h>

#include <QtCore/QVariantMap>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <list>
#include <map>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int draws = 70000;

// Chi-square critical values at p = 0.0001, by degrees of freedom: a fair generator fails
// one check in ten thousand, a biased or off-by-one one fails every time.
double criticalValue(int degreesOfFreedom)
{
    static const double values[] = {0, 15.137, 18.421, 21.108, 23.513, 25.745, 27.856, 29.878, 31.828, 33.720};
    EXPECT_TRUE(degreesOfFreedom >= 1 && degreesOfFreedom <= 9);
    return values[std::clamp(degreesOfFreedom, 1, 9)];
}

// Draws `draws` values, counts them in bins low..high (weights default to uniform) and checks
// the fit; any value outside low..high fails at once.
void expectFits(const char *name, qint64 low, qint64 high, const std::function<qint64()> &draw,
                std::vector<double> weights = {})
{
    const size_t bins = size_t(high - low + 1);
    if (weights.empty())
        weights.assign(bins, 1.0);
    double totalWeight = 0;
    for (double weight : weights)
        totalWeight += weight;
    std::vector<qint64> observed(bins, 0);
    for (int i = 0; i < draws; ++i) {
        const qint64 value = draw();
        ASSERT_GE(value, low) << name;
        ASSERT_LE(value, high) << name;
        ++observed[size_t(value - low)];
    }
    double chiSquare = 0;
    for (size_t bin = 0; bin < bins; ++bin) {
        const double expected = draws * weights[bin] / totalWeight;
        chiSquare += (double(observed[bin]) - expected) * (double(observed[bin]) - expected) / expected;
    }
    EXPECT_LT(chiSquare, criticalValue(int(bins) - 1)) << name;
}

// A stand-in for the sorted array: anything with count() and objectAtIndex().
struct IndexedBox
{
    QList<QString> items;
    quint64 count() const { return quint64(items.size()); }
    QString objectAtIndex(quint64 index) const { return items.at(qsizetype(index)); }
};

} // namespace

TEST(QVRandomTest, SmallRangesAreUniformAndReachBothEnds)
{
    expectFits("upTo 6", 0, 6, [] { return qint64(QVRandom::unsignedIntegerUpTo(6)); });
    expectFits("upTo 1", 0, 1, [] { return qint64(QVRandom::unsignedIntegerUpTo(1)); });
    expectFits("between 7 and 3", 3, 7, [] { return qint64(QVRandom::unsignedIntegerBetween(7, 3)); });
    expectFits("between -2 and 2", -2, 2, [] { return QVRandom::integerBetween(-2, 2); });
    expectFits("between 2 and -2", -2, 2, [] { return QVRandom::integerBetween(2, -2); });
    expectFits("boolValue", 0, 1, [] { return qint64(QVRandom::boolValue()); });
    const QList<int> five{10, 11, 12, 13, 14};
    expectFits("indexFromArray", 0, 4, [&] { return qint64(QVRandom::indexFromArray(five)); });
    expectFits("objectFromArray", 10, 14, [&] { return qint64(*QVRandom::objectFromArray(five)); });
}

TEST(QVRandomTest, EqualBoundsAndZero)
{
    EXPECT_EQ(QVRandom::unsignedIntegerUpTo(0), 0u);
    EXPECT_EQ(QVRandom::unsignedIntegerBetween(9, 9), 9u);
    EXPECT_EQ(QVRandom::integerBetween(-4, -4), -4);
    EXPECT_EQ(QVRandom::doubleBetween(5.0, 5.0), 5.0);
    EXPECT_EQ(QVRandom::doubleUpTo(0.0), 0.0);
}

TEST(QVRandomTest, LargeRangesStayInRangeAndReachLargeValues)
{
    // 2^32 - 2 is the last exact bound; 2^32 - 1 and above go through the double draw.
    for (quint64 n : {4294967294ULL, 4294967295ULL, 1ULL << 40, std::numeric_limits<quint64>::max()}) {
        quint64 largest = 0;
        for (int i = 0; i < 2000; ++i) {
            const quint64 value = QVRandom::unsignedIntegerUpTo(n);
            ASSERT_LE(value, n) << n;
            largest = std::max(largest, value);
        }
        EXPECT_GT(largest, n / 100 * 99) << n;
    }
    // Eight equal slices of the double path are equally likely.
    constexpr quint64 n = (1ULL << 40) - 1;
    expectFits("upTo 2^40 - 1 by eighths", 0, 7,
               [] { return qint64(QVRandom::unsignedIntegerUpTo(n) / ((n + 1) / 8)); });
    // Values beyond 2^63 survive the conversion.
    int aboveHalf = 0;
    for (int i = 0; i < 200; ++i)
        aboveHalf += QVRandom::unsignedIntegerUpTo(std::numeric_limits<quint64>::max()) > (1ULL << 63) ? 1 : 0;
    EXPECT_GT(aboveHalf, 40);
    EXPECT_LT(aboveHalf, 160);

    // The full signed span does not overflow and covers both signs.
    const qint64 min = std::numeric_limits<qint64>::min();
    const qint64 max = std::numeric_limits<qint64>::max();
    int negative = 0;
    for (int i = 0; i < 200; ++i)
        negative += QVRandom::integerBetween(max, min) < 0 ? 1 : 0;
    EXPECT_GT(negative, 40);
    EXPECT_LT(negative, 160);
    const quint64 top = std::numeric_limits<quint64>::max();
    EXPECT_GE(QVRandom::unsignedIntegerBetween(top, top - 3), top - 3);
}

TEST(QVRandomTest, Doubles)
{
    double sum = 0;
    double lowest = 1;
    double highest = 0;
    for (int i = 0; i < draws; ++i) {
        const double value = QVRandom::doubleValue();
        ASSERT_GE(value, 0.0);
        ASSERT_LT(value, 1.0);
        sum += value;
        lowest = std::min(lowest, value);
        highest = std::max(highest, value);
    }
    // The standard error of the mean is about 0.0011.
    EXPECT_NEAR(sum / draws, 0.5, 0.01);
    EXPECT_LT(lowest, 0.001);
    EXPECT_GT(highest, 0.999);
    expectFits("doubleValue by tenths", 0, 9, [] { return qint64(QVRandom::doubleValue() * 10); });

    for (int i = 0; i < 1000; ++i) {
        const double between = QVRandom::doubleBetween(3.0, -1.0);
        ASSERT_GE(between, -1.0);
        ASSERT_LT(between, 3.0);
        const double upTo = QVRandom::doubleUpTo(-2.0);
        ASSERT_GE(upTo, -2.0);
        ASSERT_LE(upTo, 0.0);
    }
}

TEST(QVRandomTest, EmptyInputs)
{
    EXPECT_EQ(QVRandom::indexFromArray(QList<int>()), QVNotFound);
    EXPECT_FALSE(QVRandom::objectFromArray(QList<int>()).has_value());
    EXPECT_EQ(QVRandom::indexFromSortedArray(IndexedBox{}), QVNotFound);
    EXPECT_FALSE(QVRandom::objectFromSortedArray(IndexedBox{}).has_value());
    EXPECT_FALSE(QVRandom::keyFromDictionary(QHash<int, int>()).has_value());
    EXPECT_FALSE(QVRandom::objectFromDictionary(QVariantMap()).has_value());
    EXPECT_FALSE(QVRandom::objectFromSet(QSet<int>()).has_value());
    EXPECT_FALSE(QVRandom::objectFromCountedSet(QHash<int, qsizetype>()).has_value());
    EXPECT_FALSE(QVRandom::randomObjectFromUnindexedCollection(QList<int>{1, 2}, 0).has_value());
    EXPECT_EQ(QVRandom::rangeWithinString(QString()), QVMakeRange(0, 0));
    EXPECT_EQ(QVRandom::rangeWithinString(u""_s), QVMakeRange(0, 0));
    EXPECT_TRUE(QVRandom::stringWithCharacters(QString(), 5).isNull());
    EXPECT_TRUE(QVRandom::stringWithCharacters(u"abc"_s, 0).isNull());
    EXPECT_TRUE(QVRandom::stringWithCharacters(u"abc"_s, -3).isNull());
    EXPECT_TRUE(QVRandom::dataWithLength(0).isNull());
    const QString none = QVRandom::stringOfLength(0);
    EXPECT_FALSE(none.isNull());
    EXPECT_TRUE(none.isEmpty());
}

TEST(QVRandomTest, OneElementAndIndexedCollections)
{
    const IndexedBox box{{u"a"_s, u"b"_s, u"c"_s}};
    QSet<QString> seen;
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(QVRandom::indexFromArray(QList<QString>{u"only"_s}), 0u);
        EXPECT_EQ(QVRandom::objectFromArray(QList<QString>{u"only"_s}), u"only"_s);
        EXPECT_EQ(QVRandom::indexFromSortedArray(IndexedBox{{u"only"_s}}), 0u);
        EXPECT_LT(QVRandom::indexFromSortedArray(box), 3u);
        seen.insert(*QVRandom::objectFromSortedArray(box));
    }
    EXPECT_EQ(seen, (QSet<QString>{u"a"_s, u"b"_s, u"c"_s}));
}

TEST(QVRandomTest, UnindexedPicksCoverEveryMember)
{
    const QHash<int, QString> hash{{1, u"one"_s}, {2, u"two"_s}, {3, u"three"_s}};
    const QVariantMap map{{u"x"_s, 1}, {u"y"_s, 2}};
    const QSet<int> set{4, 5, 6, 7};
    // Counts do not weigh the pick: members are chosen uniformly.
    const QHash<QString, qsizetype> counted{{u"rare"_s, 1}, {u"common"_s, 1000}};
    const std::list<int> list{8, 9};
    const std::map<int, int> stdMap{{1, 10}, {2, 20}};

    QSet<int> hashKeys, setMembers, listMembers, mapValuesStd;
    QSet<QString> hashValues, mapKeys, countedMembers;
    QSet<int> mapValues;
    int rare = 0;
    for (int i = 0; i < 400; ++i) {
        const int key = *QVRandom::keyFromDictionary(hash);
        hashKeys.insert(key);
        hashValues.insert(*QVRandom::objectFromDictionary(hash));
        mapKeys.insert(*QVRandom::keyFromDictionary(map));
        mapValues.insert(QVRandom::objectFromDictionary(map)->toInt());
        setMembers.insert(*QVRandom::objectFromSet(set));
        const QString member = *QVRandom::objectFromCountedSet(counted);
        countedMembers.insert(member);
        rare += member == u"rare"_s ? 1 : 0;
        listMembers.insert(*QVRandom::randomObjectFromUnindexedCollection(list));
        mapValuesStd.insert(QVRandom::randomObjectFromUnindexedCollection(stdMap)->second);
    }
    EXPECT_EQ(hashKeys, (QSet<int>{1, 2, 3}));
    EXPECT_EQ(hashValues, (QSet<QString>{u"one"_s, u"two"_s, u"three"_s}));
    EXPECT_EQ(mapKeys, (QSet<QString>{u"x"_s, u"y"_s}));
    EXPECT_EQ(mapValues, (QSet<int>{1, 2}));
    EXPECT_EQ(setMembers, set);
    EXPECT_EQ(countedMembers, (QSet<QString>{u"rare"_s, u"common"_s}));
    EXPECT_GT(rare, 100);
    EXPECT_EQ(listMembers, (QSet<int>{8, 9}));
    EXPECT_EQ(mapValuesStd, (QSet<int>{10, 20}));

    // A count below the collection's size restricts the pick to the first elements,
    // in the collection's own order.
    const QList<int> ordered{1, 2, 3, 4, 5};
    for (int i = 0; i < 100; ++i)
        EXPECT_LE(*QVRandom::randomObjectFromUnindexedCollection(ordered, 2), 2);
    // A count that overstates the collection never reads past its end.
    for (int i = 0; i < 100; ++i) {
        const std::optional<int> pick = QVRandom::randomObjectFromUnindexedCollection(QList<int>{1}, 50);
        EXPECT_TRUE(!pick || *pick == 1);
    }
}

TEST(QVRandomTest, ComposedCharactersAreNeverSplit)
{
    // 'a' (1 unit), a flag (4), e with a combining acute (2), an emoji outside the BMP (2).
    const QString flag = u"\U0001F1EB\U0001F1F7"_s;
    const QString accented = u"e\u0301"_s;
    const QString emoji = u"\U0001F600"_s;
    const QStringList pieces{u"a"_s, flag, accented, emoji};
    const QString characters = pieces.join(QString());

    const QString text = QVRandom::stringWithCharacters(characters, draws);
    // Read the result back piece by piece: any split character leaves an unmatched tail.
    qsizetype position = 0;
    int pieceIndex = 0;
    const std::vector<int> order = [&] {
        std::vector<int> found;
        while (position < text.size()) {
            int match = -1;
            for (int p = 0; p < pieces.size(); ++p) {
                if (QStringView(text).mid(position).startsWith(pieces.at(p))) {
                    match = p;
                    break;
                }
            }
            if (match < 0)
                break;
            found.push_back(match);
            position += pieces.at(match).size();
        }
        return found;
    }();
    ASSERT_EQ(position, text.size()) << "split character at " << position;
    ASSERT_EQ(order.size(), size_t(draws));
    // Positions are drawn per code unit, so each character is as likely as its length.
    expectFits("composed characters", 0, 3, [&] { return qint64(order[size_t(pieceIndex++)]); },
               {1, 4, 2, 2});

    const QSet<quint64> boundaries{0, 1, 5, 7, 9};
    bool reachedStart = false, reachedEnd = false, reachedEmptyEnd = false;
    for (int i = 0; i < 3000; ++i) {
        const QVRange range = QVRandom::rangeWithinString(characters);
        ASSERT_TRUE(boundaries.contains(range.location)) << range.location;
        ASSERT_TRUE(boundaries.contains(QVMaxRange(range))) << QVMaxRange(range);
        reachedStart |= range.location == 0;
        reachedEnd |= QVMaxRange(range) == 9 && range.length > 0;
        reachedEmptyEnd |= range == QVMakeRange(9, 0);
    }
    EXPECT_TRUE(reachedStart);
    EXPECT_TRUE(reachedEnd);
    EXPECT_TRUE(reachedEmptyEnd);
}

TEST(QVRandomTest, GeometryStaysInsideTheRectangle)
{
    struct Row
    {
        const char *name;
        QRectF rect;
    };
    const Row rows[] = {
        {"ordinary", QRectF(10, 20, 30, 40)},
        {"negative size", QRectF(40, 60, -30, -40)},
        {"zero size", QRectF(5, 6, 0, 0)},
    };
    for (const Row &row : rows) {
        const QRectF bounds = row.rect.normalized();
        for (int i = 0; i < 500; ++i) {
            const QPointF point = QVRandom::pointWithinRect(row.rect);
            ASSERT_TRUE(point.x() >= bounds.left() && point.x() <= bounds.right()) << row.name;
            ASSERT_TRUE(point.y() >= bounds.top() && point.y() <= bounds.bottom()) << row.name;
            const QSizeF size = QVRandom::sizeWithinRect(row.rect);
            ASSERT_TRUE(size.width() >= 0 && size.width() <= bounds.width()) << row.name;
            ASSERT_TRUE(size.height() >= 0 && size.height() <= bounds.height()) << row.name;
            const QRectF rect = QVRandom::rectWithinRect(row.rect);
            ASSERT_GE(rect.width(), 0) << row.name;
            ASSERT_GE(rect.height(), 0) << row.name;
            ASSERT_TRUE(rect.left() >= bounds.left() && rect.right() <= bounds.right()) << row.name;
            ASSERT_TRUE(rect.top() >= bounds.top() && rect.bottom() <= bounds.bottom()) << row.name;
        }
    }
    EXPECT_EQ(QVRandom::pointWithinRect(QRectF(5, 6, 0, 0)), QPointF(5, 6));
    EXPECT_EQ(QVRandom::rectWithinRect(QRectF(5, 6, 0, 0)), QRectF(5, 6, 0, 0));
}

TEST(QVRandomTest, BytesAndStrings)
{
    for (quint64 n : {1ULL, 3ULL, 4ULL, 5ULL, 1023ULL, 1024ULL, 1025ULL, 5000ULL})
        EXPECT_EQ(QVRandom::dataWithLength(n).size(), qsizetype(n)) << n;
    // The tail past the last whole chunk is filled too.
    bool tailFilled = false;
    for (int i = 0; i < 64 && !tailFilled; ++i)
        tailFilled = QVRandom::dataWithLength(1025).back() != 0 && QVRandom::dataWithLength(5).back() != 0;
    EXPECT_TRUE(tailFilled);
    EXPECT_NE(QVRandom::dataWithLength(32), QVRandom::dataWithLength(32));
    {
        // A length no buffer can hold is refused with one line instead of stopping the program.
        QVLogCapture capture;
        EXPECT_TRUE(QVRandom::dataWithLength(std::numeric_limits<quint64>::max()).isNull());
        EXPECT_TRUE(QVRandom::dataWithLength(1ULL << 62).isNull());
        EXPECT_EQ(capture.lines(),
                  (QStringList{u"QVRandom::dataWithLength: cannot allocate 18446744073709551615 bytes. Fix this."_s,
                               u"QVRandom::dataWithLength: cannot allocate 4611686018427387904 bytes. Fix this."_s}));
    }

    // One random byte is valid UTF-8 exactly when it is ASCII, so both outcomes occur.
    int valid = 0, invalid = 0;
    for (int i = 0; i < 400; ++i) {
        const QString text = QVRandom::stringOfLength(1);
        if (text.isNull()) {
            ++invalid;
        } else {
            ++valid;
            ASSERT_EQ(text.size(), 1);
            ASSERT_LT(text.at(0).unicode(), 0x80);
        }
    }
    EXPECT_GT(valid, 100);
    EXPECT_GT(invalid, 100);
}

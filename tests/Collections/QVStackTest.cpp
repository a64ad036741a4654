#include <QVKit/Collections/QVStack.h>

#include <QtCore/QString>
#include <QtCore/QVariant>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

template <typename T>
QList<T> drain(QVStack<T> &stack)
{
    QList<T> popped;
    while (std::optional<T> top = stack.pop())
        popped.append(*top);
    return popped;
}

} // namespace

TEST(QVStackTest, PopsInReverseOfPushAndAnswersNothingWhenEmpty)
{
    QVStack<QString> stack = QVStack<QString>::stackWithObjects({u"a"_s, u"b"_s, u"ç𝄞"_s});
    EXPECT_EQ(stack.count(), 3u);
    EXPECT_EQ(stack.peek(), u"ç𝄞"_s);
    EXPECT_EQ(stack.count(), 3u);
    EXPECT_EQ(stack.pop(), u"ç𝄞"_s);
    EXPECT_EQ(stack.pop(), u"b"_s);
    EXPECT_EQ(stack.pop(), u"a"_s);
    EXPECT_EQ(stack.pop(), std::nullopt);
    EXPECT_EQ(stack.peek(), std::nullopt);
    EXPECT_EQ(stack.count(), 0u);

    // Usable again after running empty.
    stack.push(u"d"_s);
    EXPECT_EQ(stack.peek(), u"d"_s);

    EXPECT_EQ(QVStack<QString>::stack().count(), 0u);
    EXPECT_EQ(QVStack<QString>::stackWithObjects({}).pop(), std::nullopt);
}

TEST(QVStackTest, NoObjectIsIgnoredButEmptyAndNullMarkerArePushed)
{
    QVStack<QString> strings({u"a"_s, QString(), u""_s});
    strings.push(QString());
    EXPECT_EQ(drain(strings), (QList<QString>{u""_s, u"a"_s}));

    const QVariant nullMarker = QVariant::fromValue(nullptr);
    QVStack<QVariant> variants;
    variants.push(QVariant());
    variants.push(nullMarker);
    variants.push(QVariant(0));
    ASSERT_EQ(variants.count(), 2u);
    EXPECT_EQ(variants.pop(), QVariant(0));
    EXPECT_EQ(variants.pop()->metaType(), nullMarker.metaType());

    int value = 7;
    QVStack<int *> pointers;
    pointers.push(nullptr);
    pointers.push(&value);
    EXPECT_EQ(pointers.count(), 1u);

    // Zero is a value like any other for types without "no object".
    QVStack<int> numbers({0, 0});
    EXPECT_EQ(drain(numbers), (QList<int>{0, 0}));
}

TEST(QVStackTest, CopiesAreIndependentAndEqualityFollowsTheElements)
{
    QVStack<int> original({1, 2, 3});
    QVStack<int> copy = original;
    EXPECT_EQ(copy, original);
    EXPECT_EQ(copy.hash(), qHash(QList<int>{1, 2, 3}));

    copy.pop();
    EXPECT_EQ(original.count(), 3u);
    EXPECT_EQ(original.peek(), 3);
    EXPECT_NE(copy, original);
    copy.push(3);
    EXPECT_EQ(copy, original);

    struct Row
    {
        const char *name;
        QList<int> left, right;
        bool equal;
    };
    const Row rows[] = {
        {"both empty", {}, {}, true},
        {"same order", {1, 2}, {1, 2}, true},
        {"other order", {1, 2}, {2, 1}, false},
        {"prefix", {1}, {1, 2}, false},
        {"empty and zero", {}, {0}, false},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVStack<int>(row.left) == QVStack<int>(row.right), row.equal);
    }
}

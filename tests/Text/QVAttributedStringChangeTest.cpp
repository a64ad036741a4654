#include <QVKit/Text/QVAttributedStringChange.h>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QVTextAttributes Attributes{{u"bold"_s, 700}, {u"color"_s, QVariant::fromValue(nullptr)}};

QVAttributedStringChange stringChange(const QString &text)
{
    return QVAttributedStringChange::attributedStringChange(QVAttributedString(text, {{u"bold"_s, 700}}));
}

std::string describe(const std::optional<QStringList> &strings)
{
    if (!strings)
        return "nil";
    QStringList quoted;
    for (const QString &string : *strings)
        quoted.append(string.isNull() ? u"null"_s : u'"' + string + u'"');
    return quoted.join(u", "_s).toStdString();
}

} // namespace

TEST(QVAttributedStringChangeTest, DefaultsFactoriesAndCopies)
{
    const QVAttributedStringChange none = QVAttributedStringChange::noChange();
    EXPECT_EQ(none.description(), u"QVAttributedStringChange type=0 range={9223372036854775807, 0} "
                                  u"originalRange={9223372036854775807, 0}"_s);
    EXPECT_EQ(none.attributeAction(), QVAttributeActionAdd);
    EXPECT_FALSE(none.attributedString() || none.attributes() || none.attributeRuns());

    const QVAttributedStringChange replace = stringChange(u"ab"_s);
    EXPECT_EQ(replace.changeType(), QVAttributedStringChangeTypeString);
    EXPECT_EQ(replace.attributedString(), QVAttributedString(u"ab"_s, {{u"bold"_s, 700}}));

    QVAttributedStringChange set = QVAttributedStringChange::attributesChange(Attributes, QVAttributeActionSet);
    EXPECT_EQ(set.changeType(), QVAttributedStringChangeTypeAttributes);
    EXPECT_EQ(set.attributeAction(), QVAttributeActionSet);
    EXPECT_EQ(set.attributes(), Attributes);
    EXPECT_EQ(QVAttributedStringChange::attributesChange(Attributes, QVAttributeAction(7)).attributeAction(),
              QVAttributeAction(7));

    const QList<QVTextAttributeRun> runs{QVTextAttributeRun(u"bold"_s, QVariant(), {1, 2})};
    const QVAttributedStringChange fromRuns = QVAttributedStringChange::attributesChanges(runs);
    EXPECT_EQ(fromRuns.changeType(), QVAttributedStringChangeTypeAttributes);
    EXPECT_EQ(fromRuns.attributeAction(), QVAttributeActionAdd);
    EXPECT_EQ(fromRuns.attributeRuns(), runs);
    EXPECT_FALSE(fromRuns.attributes());

    // Copies keep the ranges set so far (the defaults apply once) and change independently.
    set.setRange({2, 3});
    set.setOriginalRange({1, 4});
    QVAttributedStringChange copy = set;
    EXPECT_EQ(copy.originalRange(), QVMakeRange(1, 4));
    copy.setRange({0, 0});
    copy.setAttributes(std::nullopt);
    EXPECT_EQ(set.range(), QVMakeRange(2, 3));
    EXPECT_EQ(set.attributes(), Attributes);
}

TEST(QVAttributedStringChangeTest, RangeValuesAndReplacementStrings)
{
    EXPECT_FALSE(QVAttributedStringChange::rangeValuesFromArray({}));
    QVAttributedStringChange first = stringChange(u"x"_s);
    first.setRange({4, 1});
    EXPECT_EQ(QVRangeListToString(QVAttributedStringChange::rangeValuesFromArray(
                  {first, QVAttributedStringChange::noChange(), first})),
              u"({4, 1}, {9223372036854775807, 0}, {4, 1})"_s);

    const QVAttributedStringChange none = QVAttributedStringChange::noChange();
    const QVAttributedStringChange attributes = QVAttributedStringChange::attributesChange(Attributes, QVAttributeActionAdd);
    QVAttributedStringChange withoutText = none;
    withoutText.setChangeType(QVAttributedStringChangeTypeString);
    const struct
    {
        const char *name;
        QList<QVAttributedStringChange> changes;
        const char *expected;
    } rows[] = {
        {"no changes", {}, "nil"},
        {"nothing replaces text", {none, attributes}, "nil"},
        {"others stand for empty strings", {none, stringChange(u"ab"_s), attributes}, R"("", "ab", "")"},
        {"an empty replacement is an empty string", {stringChange(QString())}, R"("")"},
        {"a string change without text is an empty string", {withoutText, stringChange(u"é👋"_s)}, R"("", "é👋")"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(describe(QVAttributedStringChange::replacementStringsFromArray(row.changes)), row.expected);
    }
}

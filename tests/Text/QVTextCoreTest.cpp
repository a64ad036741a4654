#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVUserDefaults.h>
#include <QVKit/Text/QVMutableStringTextCore.h>
#include <QVKit/Text/QVTextAttributeRun.h>
#include <QVKit/Text/QVAttributedStringChange.h>
#include <QVKit/Text/QVTextCore.h>
#include <QVKit/Text/QVTextCore_p.h>

#include <QtCore/QLocale>
#include <QtCore/QRandomGenerator>
#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <type_traits>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

const QString bold = QVFontWeightAttributeName;
const QString colour = QVForegroundColorAttributeName;

// Sets the default locale for one scope and restores the previous one.
class DefaultLocale
{
public:
    explicit DefaultLocale(const QString &name)
        : m_previous(QLocale())
    {
        QLocale::setDefault(QLocale(name));
    }
    ~DefaultLocale() { QLocale::setDefault(m_previous); }

private:
    QLocale m_previous;
};

// Sets user defaults for one scope and removes them afterwards.
class Defaults
{
public:
    explicit Defaults(const QVariantMap &values)
    {
        for (auto it = values.cbegin(); it != values.cend(); ++it) {
            QVUserDefaults::standardUserDefaults()->setObject(it.value(), it.key());
            m_keys.append(it.key());
        }
    }
    ~Defaults() { QVUserDefaults::standardUserDefaults()->removeObjectsForKeys(m_keys); }

private:
    QStringList m_keys;
};

QString runsText(const std::optional<QList<QVTextAttributeRun>> &runs)
{
    if (!runs)
        return u"(none)"_s;
    QStringList parts;
    for (const QVTextAttributeRun &run : *runs)
        parts.append(QVRangeToString(run.range()) + u' ' + run.name() + u'=' + run.value().toString());
    return parts.join(u"; ");
}

} // namespace

// Choices are their own types, and option sets are QFlags: a number, or one
// choice in the place of another, does not compile.
static_assert(!std::is_convertible_v<int, QVCaseType>);
static_assert(!std::is_convertible_v<QVQuoteType, QVQuotationType>);
static_assert(!std::is_convertible_v<QVCaseType, QVTextCoreOperation>);
static_assert(!std::is_convertible_v<int, QVAttributeAction>);
static_assert(!std::is_convertible_v<int, QVTextAttributeRunOptions>);
static_assert(std::is_same_v<decltype(QVTextAttributeRunOptionPresentValues | QVTextAttributeRunOptionAbsentValues),
                             QVTextAttributeRunOptions>);
static_assert(std::is_same_v<decltype(QVAttributedStringEnumerationReverse |
                                      QVAttributedStringEnumerationLongestEffectiveRangeNotRequired),
                             QVAttributedStringEnumerationOptions>);

TEST(QVTextCoreTest, ConvertToCase)
{
    struct Row
    {
        const char *name;
        QString source;
        QVCaseType caseType;
        QVRange range;
        QString expected;
    };
    const Row rows[] = {
        {"capitalize keeps the space", u"hELLO wORLD"_s, QVCaseTypeCapitalize, {0, 11}, u"Hello World"_s},
        {"capitalize keeps text before the first word",
         u"  ¿qué tal?"_s,
         QVCaseTypeCapitalize,
         {0, 11},
         u"  ¿Qué Tal?"_s},
        {"capitalize a range cut inside a word", u"hello world"_s, QVCaseTypeCapitalize, {2, 9}, u"Llo World"_s},
        {"sharp s grows", u"straße"_s, QVCaseTypeUppercase, {0, 6}, u"STRASSE"_s},
        {"dotted capital I grows in lower case", u"\u0130X"_s, QVCaseTypeLowercase, {0, 2}, u"i\u0307x"_s},
        // Each character is converted alone, so a word-final sigma stays σ.
        {"sigma piece by piece", u"ΟΔΟΣ"_s, QVCaseTypeLowercase, {0, 4}, u"οδοσ"_s},
        {"only the range", u"abc def"_s, QVCaseTypeUppercase, {4, 3}, u"DEF"_s},
        {"range clipped to the text", u"abc def"_s, QVCaseTypeUppercase, {4, 100}, u"DEF"_s},
        {"range past the end", u"abc"_s, QVCaseTypeUppercase, {5, 2}, u""_s},
        {"surrogates and flags",
         u"a\U0001F1EB\U0001F1F7\U00010428"_s,
         QVCaseTypeUppercase,
         {0, 7},
         u"A\U0001F1EB\U0001F1F7\U00010400"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(QVTextCore::sourceTextConvertToCase(row.source, row.caseType, row.range), row.expected);
        const QVariant viaVariant = QVTextCore::sourceTextConvertToCase(QVariant(row.source), row.caseType, row.range);
        EXPECT_EQ(viaVariant.metaType(), QMetaType::fromType<QString>());
        EXPECT_EQ(viaVariant.toString(), row.expected);
        EXPECT_EQ(QVTextCore::sourceTextConvertToCase(QVAttributedString(row.source), row.caseType, row.range).string(),
                  row.expected);
    }

    // Case type 3 converts nothing: an empty result of the source's kind, and one log line.
    QVLogCapture capture;
    const QString unknown = QVTextCore::sourceTextConvertToCase(u"abc"_s, QVCaseType(3), {0, 3});
    EXPECT_TRUE(unknown.isEmpty());
    EXPECT_FALSE(unknown.isNull());
    EXPECT_TRUE(QVTextCore::sourceTextConvertToCase(QVAttributedString(u"abc"_s), QVCaseType(3), {0, 3}).isEmpty());
    EXPECT_TRUE(capture.contains(u"Unknown caseType"_s));
    QString unchanged = u"abc"_s;
    QVTextCore::modifySourceTextConvertToCase(unchanged, QVCaseType(3), {0, 3});
    EXPECT_EQ(unchanged, u"abc"_s);
}

TEST(QVTextCoreTest, CaseConversionKeepsAttributeRuns)
{
    // "ß" grows to "SS" before the bold word; the bold run must follow it.
    QVAttributedString text(u"groß und fett"_s);
    text.addAttribute(bold, 700, {9, 4});
    text.addAttribute(colour, u"red"_s, {0, 4});

    const QVAttributedString upper = QVTextCore::sourceTextConvertToCase(text, QVCaseTypeUppercase, {0, 13});
    EXPECT_EQ(upper.string(), u"GROSS UND FETT"_s);
    QVRange boldRange;
    EXPECT_EQ(upper.attributeAtIndex(bold, 10, &boldRange).toInt(), 700);
    EXPECT_EQ(boldRange, QVMakeRange(10, 4));
    QVRange colourRange;
    EXPECT_EQ(upper.attributeAtIndex(colour, 0, &colourRange).toString(), u"red"_s);
    EXPECT_EQ(colourRange, QVMakeRange(0, 5)); // the run holding ß grows with it

    // A range in the middle: its runs start at 0 in the result.
    const QVAttributedString tail = QVTextCore::sourceTextConvertToCase(text, QVCaseTypeUppercase, {5, 8});
    EXPECT_EQ(tail.string(), u"UND FETT"_s);
    EXPECT_EQ(tail.attributeAtIndex(bold, 4, &boldRange).toInt(), 700);
    EXPECT_EQ(boldRange, QVMakeRange(4, 4));
    EXPECT_FALSE(tail.attributeAtIndex(colour, 0).isValid());

    // In place: the text around the range keeps its attributes.
    QVAttributedString edited = text;
    edited.uppercaseRange({0, 4});
    EXPECT_EQ(edited.string(), u"GROSS und fett"_s);
    EXPECT_EQ(edited.attributeAtIndex(bold, 10, &boldRange).toInt(), 700);
    EXPECT_EQ(boldRange, QVMakeRange(10, 4));
}

TEST(QVTextCoreTest, InvalidSource)
{
    const QVariant rows[] = {QVariant(), QVariant(42), QVariant(QByteArray("abc")), QVariant::fromValue(nullptr)};
    for (const QVariant &source : rows) {
        SCOPED_TRACE(source.typeName() ? source.typeName() : "invalid");
        QVLogCapture capture;
        EXPECT_FALSE(QVTextCore::sourceTextConvertToCase(source, QVCaseTypeUppercase, {0, 1}).isValid());
        EXPECT_FALSE(QVTextCore::sourceTextConvertToQuotation(source, QVQuotationTypeSmart, {0, 1}).isValid());
        QVariant modified = source;
        QVTextCore::modifySourceTextInsertStringBefore(modified, u"("_s, u")"_s, {0, 0});
        EXPECT_EQ(modified, source);
        EXPECT_EQ(capture.lines().size(), 3);
        EXPECT_TRUE(capture.containsFragment(u"Invalid source text: "_s));
        EXPECT_TRUE(QVTextCore::commonStringFromObject(source).isNull());
        EXPECT_TRUE(QVTextCore::commonAttributedStringFromObject(source).isEmpty());
    }
    QVLogCapture capture;
    QVTextCore::sourceTextConvertToCase(QVariant(42), QVCaseTypeUppercase, {0, 1});
    EXPECT_TRUE(capture.contains(u"Invalid source text: 42"_s));

    // Valid sources answer in their own kind.
    QVAttributedString attributed(u"ab"_s, {{bold, 700}});
    const QVariant converted
        = QVTextCore::sourceTextConvertToCase(QVariant::fromValue(attributed), QVCaseTypeUppercase, {0, 2});
    ASSERT_EQ(converted.metaType(), QMetaType::fromType<QVAttributedString>());
    EXPECT_EQ(converted.value<QVAttributedString>(), QVAttributedString(u"AB"_s, {{bold, 700}}));
    EXPECT_EQ(QVTextCore::commonStringFromObject(QVariant::fromValue(attributed)), u"ab"_s);
    EXPECT_EQ(QVTextCore::commonMutableAttributedStringFromObject(QVariant(u"ab"_s)), QVAttributedString(u"ab"_s));
}

TEST(QVTextCoreTest, QuoteTypes)
{
    struct Row
    {
        const char *locale;
        QString standard; // begin and end
        QString alternative;
    };
    const Row rows[] = {
        {"en_US", u"\u201C\u201D"_s, u"\u2018\u2019"_s},
        {"de_DE", u"\u201E\u201C"_s, u"\u201A\u2018"_s},
        {"fr_FR", u"\u00AB\u00BB"_s, u"\u00AB\u00BB"_s}, // both pairs are the same
        {"ja_JP", u"\u300C\u300D"_s, u"\u300E\u300F"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.locale);
        const DefaultLocale locale(QString::fromLatin1(row.locale));
        QString begin;
        QString end;
        QVTextCore::stringsForQuoteType(QVQuoteTypeStandard, &begin, &end);
        EXPECT_EQ(begin + end, row.standard);
        QVTextCore::stringsForQuoteType(QVQuoteTypeAlternative, &begin, &end);
        EXPECT_EQ(begin + end, row.alternative);
        QVTextCore::stringsForQuoteType(QVQuoteTypeAlternative, nullptr, &end);
        EXPECT_EQ(end, row.alternative.mid(1));

        QVLogCapture capture;
        QVTextCore::stringsForQuoteType(QVQuoteType(2), &begin, nullptr);
        EXPECT_EQ(begin, row.standard.left(1));
        EXPECT_TRUE(capture.contains(u"Unsupported quote type: 2"_s));

        QString text = u"a b"_s;
        QVString::insertLocalizedAlternativeQuotesAroundRange(text, {2, 1});
        EXPECT_EQ(text, u"a "_s + row.alternative.left(1) + u"b"_s + row.alternative.mid(1));
    }
}

TEST(QVTextCoreTest, StraightenAndSmarten)
{
    struct Row
    {
        const char *locale;
        QString straight;
        QString smart;
    };
    const Row rows[] = {
        {"en_US", u"He said \"it's 'fine'\" (\"ok\")"_s,
         u"He said \u201Cit\u2019s \u2018fine\u2019\u201D (\u201Cok\u201D)"_s},
        {"de_DE", u"\"Er sagt 'ja'\" -'x'"_s, u"\u201EEr sagt \u201Aja\u2018\u201C -\u201Ax\u2018"_s},
    };
    // Quotes take the locale's marks; an apostrophe inside or after a word
    // is ’ in every language, and a single quote after a word closes only a
    // quote that is open.
    for (const char *name : {"en_US", "de_DE", "fr_FR", "ja_JP", "ru_RU"}) {
        SCOPED_TRACE(name);
        const DefaultLocale locale(QString::fromLatin1(name));
        const QLocale current;
        const QString straight = u"\"x\" it's l'eau, 'y' and the dogs' bowls"_s;
        const QString smart = current.quoteString(u"x") + u" it\u2019s l\u2019eau, "_s
                              + current.quoteString(u"y", QLocale::AlternateQuotation)
                              + u" and the dogs\u2019 bowls"_s;
        EXPECT_EQ(QVTextCore::sourceTextConvertToQuotation(straight, QVQuotationTypeSmart,
                                                           QVMakeRange(0, quint64(straight.size()))),
                  smart);
    }

    for (const Row &row : rows) {
        SCOPED_TRACE(row.locale);
        const DefaultLocale locale(QString::fromLatin1(row.locale));
        const QVRange all = QVMakeRange(0, quint64(row.straight.size()));
        EXPECT_EQ(QVTextCore::sourceTextConvertToQuotation(row.straight, QVQuotationTypeSmart, all), row.smart);
        EXPECT_EQ(QVTextCore::sourceTextConvertToQuotation(row.smart, QVQuotationTypeStraight, all), row.straight);
        QString text = row.straight;
        QVString::smartenQuoteRange(text, all);
        QVString::straightenQuoteRange(text, all);
        EXPECT_EQ(text, row.straight);
    }

    // Other marks straighten too; the text before the range decides whether a quote opens.
    EXPECT_EQ(QVTextCore::sourceTextConvertToQuotation(u"\u00AB\u2039\u300Ca\u300D\u301D\uFF07"_s,
                                                       QVQuotationTypeStraight, {0, 7}),
              u"\"'\u300Ca\u300D\"'"_s);
    EXPECT_EQ(QVTextCore::sourceTextConvertToQuotation(u"ab\"c"_s, QVQuotationTypeSmart, {2, 2}), u"\u201Dc"_s);
    EXPECT_EQ(QVTextCore::sourceTextConvertToQuotation(u"a \"c"_s, QVQuotationTypeSmart, {2, 2}), u"\u201Cc"_s);

    // Attributes stay on their characters.
    QVAttributedString attributed(u"say \"hi\""_s);
    attributed.addAttribute(bold, 700, {4, 4});
    attributed.smartenQuoteRange({0, 8});
    EXPECT_EQ(attributed.string(), u"say \u201Chi\u201D"_s);
    QVRange boldRange;
    EXPECT_EQ(attributed.attributeAtIndex(bold, 4, &boldRange).toInt(), 700);
    EXPECT_EQ(boldRange, QVMakeRange(4, 4));

    QVLogCapture capture;
    EXPECT_EQ(QVTextCore::sourceTextConvertToQuotation(u"\"a\""_s, QVQuotationType(2), {0, 3}), u"\"a\""_s);
    EXPECT_TRUE(capture.contains(u"Unknown quotationType"_s));
}

TEST(QVTextCoreTest, DelimiterMatching)
{
    struct Row
    {
        const char *name;
        QVariantMap defaults;
        QString delimiter;
        QString open;
        QString close;
    };
    const QVariantList custom
        = {QVariantList {u"<<"_s, u">>"_s}, u"not a pair"_s, QVariantList {u"only"_s}, QVariantList {u"("_s, u"))"_s}};
    const QString useMatching = QVTextDelimitersUseDelimiterMatching;
    const QString customPairs = QVTextDelimitersCustomPairs;
    const QString disabled = QVTextDelimitersDisabledMatches;
    const Row rows[] = {
        {"opening", {}, u"("_s, u"("_s, u")"_s},
        {"closing", {}, u"]"_s, u"["_s, u"]"_s},
        {"typographic", {}, u"\u201D"_s, u"\u201C"_s, u"\u201D"_s},
        {"low opening quote", {}, u"\u201E"_s, u"\u201E"_s, u"\u201C"_s},
        {"corner bracket", {}, u"\u300F"_s, u"\u300E"_s, u"\u300F"_s},
        {"no pair", {}, u"*"_s, u"*"_s, u"*"_s},
        {"matching off", {{useMatching, false}}, u"["_s, u"["_s, u"["_s},
        {"matching on", {{useMatching, true}}, u"["_s, u"["_s, u"]"_s},
        {"custom pair from its close", {{customPairs, custom}}, u">>"_s, u"<<"_s, u">>"_s},
        {"custom pair before the built-in", {{customPairs, custom}}, u"("_s, u"("_s, u"))"_s},
        {"built-in pair when no custom pair holds it", {{customPairs, custom}}, u")"_s, u"("_s, u")"_s},
        {"disabled match", {{disabled, QVariantList {u"{"_s}}}, u"}"_s, u"}"_s, u"}"_s},
        {"other matches stay", {{disabled, QVariantList {u"{"_s}}}, u"<"_s, u"<"_s, u">"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const Defaults defaults(row.defaults);
        QString open;
        QString close;
        EXPECT_TRUE(QVTextCore::stringsMatchingDelimiter(row.delimiter, &open, &close));
        EXPECT_EQ(open, row.open);
        EXPECT_EQ(close, row.close);
        QString text = u"ab"_s;
        QVString::insertDelimitersMatchingDelimiter(text, row.delimiter, {1, 1});
        EXPECT_EQ(text, u"a"_s + row.open + u"b"_s + row.close);
    }
    EXPECT_FALSE(QVUserDefaults::standardUserDefaults()->objectForKey(customPairs).isValid());

    QString open = u"unchanged"_s;
    EXPECT_FALSE(QVTextCore::stringsMatchingDelimiter(QString(), &open, nullptr));
    EXPECT_EQ(open, u"unchanged"_s);
    QString text = u"ab"_s;
    QVString::insertDelimitersMatchingDelimiter(text, QString(), {0, 2});
    EXPECT_EQ(text, u"ab"_s);
}

TEST(QVTextCoreTest, InsertAndRemoveAroundRange)
{
    struct Row
    {
        const char *name;
        QString text;
        QVTextCoreOperation operation;
        QString before;
        QString after;
        QVRange range;
        QString expected;
    };
    const Row rows[] = {
        {"insert", u"a bc d"_s, QVTextCoreOperationInsert, u"<b>"_s, u"</b>"_s, {2, 2}, u"a <b>bc</b> d"_s},
        {"insert at the end", u"ab"_s, QVTextCoreOperationInsert, u"("_s, u")"_s, {2, 0}, u"ab()"_s},
        {"insert past the end", u"ab"_s, QVTextCoreOperationInsert, u"("_s, u")"_s, {3, 0}, u"ab"_s},
        {"insert clipped", u"ab"_s, QVTextCoreOperationInsert, u"("_s, u")"_s, {1, 9}, u"a(b)"_s},
        {"remove around", u"x(abc)y"_s, QVTextCoreOperationRemove, u"("_s, u")"_s, {2, 3}, u"xabcy"_s},
        {"remove inside", u"x(abc)y"_s, QVTextCoreOperationRemove, u"("_s, u")"_s, {1, 5}, u"xabcy"_s},
        {"remove absent", u"x[abc]y"_s, QVTextCoreOperationRemove, u"("_s, u")"_s, {2, 3}, u"x[abc]y"_s},
        {"remove only one present", u"x(abc]y"_s, QVTextCoreOperationRemove, u"("_s, u")"_s, {2, 3}, u"x(abc]y"_s},
        {"remove inside too short", u"()"_s, QVTextCoreOperationRemove, u"(("_s, u")"_s, {0, 2}, u"()"_s},
        {"remove non-ASCII",
         u"\u00AB\U0001F600\u00BB"_s,
         QVTextCoreOperationRemove,
         u"\u00AB"_s,
         u"\u00BB"_s,
         {1, 2},
         u"\U0001F600"_s},
        {"ignoring check", u"x[abc]y"_s, QVTextCoreOperationRemoveIgnoringCheck, u"("_s, u")"_s, {2, 3}, u"xabcy"_s},
        {"ignoring check clipped",
         u"x[abc]y"_s,
         QVTextCoreOperationRemoveIgnoringCheck,
         u"<<<"_s,
         u">>>"_s,
         {2, 3},
         u"abc"_s},
        {"unknown operation", u"x(abc)y"_s, QVTextCoreOperation(3), u"("_s, u")"_s, {2, 3}, u"x(abc)y"_s},
    };
    QVLogCapture capture;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QString text = row.text;
        QVTextCore::modifySourceText(text, row.operation, row.before, row.after, row.range);
        EXPECT_EQ(text, row.expected);
        QVAttributedString attributed(row.text, {{bold, 700}});
        QVTextCore::modifySourceText(attributed, row.operation, row.before, row.after, row.range);
        EXPECT_EQ(attributed, QVAttributedString(row.expected, {{bold, 700}}));
        QVariant variant(row.text);
        QVTextCore::modifySourceText(variant, row.operation, row.before, row.after, row.range);
        EXPECT_EQ(variant, QVariant(row.expected));
    }
    // Only the unknown operation is misuse, logged once per call.
    EXPECT_EQ(capture.lines().size(), 3);
    EXPECT_TRUE(capture.containsFragment(u"unknown operation 3"_s));

    // The named forms are the worker's operations.
    QString text = u"ab"_s;
    QVTextCore::modifySourceTextInsertStringBefore(text, u"["_s, u"]"_s, {0, 2});
    EXPECT_EQ(text, u"[ab]"_s);
    QVTextCore::modifySourceTextRemoveStringBefore(text, u"["_s, u"]"_s, {1, 2});
    EXPECT_EQ(text, u"ab"_s);
    QVTextCore::modifySourceTextRemoveStringBeforeIgnoringCheck(text, u"["_s, u"]"_s, {1, 0});
    EXPECT_EQ(text, u""_s);

    // Inserted strings continue the attributes of the text next to them.
    QVAttributedString attributed(u"ab"_s);
    attributed.addAttribute(bold, 700, {0, 1});
    attributed.insertOpenDelimiter(u"<"_s, u">"_s, {1, 1});
    EXPECT_EQ(attributed.string(), u"a<b>"_s);
    QVRange boldRange;
    EXPECT_EQ(attributed.attributeAtIndex(bold, 0, &boldRange).toInt(), 700);
    EXPECT_EQ(boldRange, QVMakeRange(0, 2));
}

TEST(QVTextCoreTest, InPlaceFormsAgreeWithClassOperations)
{
    const DefaultLocale locale(u"de_DE"_s);
    const QString source = u"Straße \"Zitat\" 'X' HEIß"_s;
    const QVRange range = {3, 17};
    using StringEdit = std::function<void(QString &)>;
    using AttributedEdit = std::function<void(QVAttributedString &)>;
    struct Row
    {
        const char *name;
        StringEdit inPlace;
        AttributedEdit member;
        std::function<void(QVariant &)> classOperation;
    };
    const Row rows[] = {
        {"uppercase", [&](QString &t) { QVString::uppercaseRange(t, range); },
         [&](QVAttributedString &t) { t.uppercaseRange(range); },
         [&](QVariant &t) { QVTextCore::modifySourceTextConvertToCase(t, QVCaseTypeUppercase, range); }},
        {"lowercase", [&](QString &t) { QVString::lowercaseRange(t, range); },
         [&](QVAttributedString &t) { t.lowercaseRange(range); },
         [&](QVariant &t) { QVTextCore::modifySourceTextConvertToCase(t, QVCaseTypeLowercase, range); }},
        {"capitalize", [&](QString &t) { QVString::capitalizeRange(t, range); },
         [&](QVAttributedString &t) { t.capitalizeRange(range); },
         [&](QVariant &t) { QVTextCore::modifySourceTextConvertToCase(t, QVCaseTypeCapitalize, range); }},
        {"smarten", [&](QString &t) { QVString::smartenQuoteRange(t, range); },
         [&](QVAttributedString &t) { t.smartenQuoteRange(range); },
         [&](QVariant &t) { QVTextCore::modifySourceTextConvertToQuotation(t, QVQuotationTypeSmart, range); }},
        {"quotes", [&](QString &t) { QVString::insertLocalizedQuotesAroundRange(t, range); },
         [&](QVAttributedString &t) { t.insertLocalizedQuotesAroundRange(range); },
         [&](QVariant &t) { QVTextCore::modifySourceTextInsertLocalizedQuoteType(t, QVQuoteTypeStandard, range); }},
        {"delimiters", [&](QString &t) { QVString::insertDelimitersMatchingDelimiter(t, u"]"_s, range); },
         [&](QVAttributedString &t) { t.insertDelimitersMatchingDelimiter(u"]"_s, range); },
         [&](QVariant &t) { QVTextCore::modifySourceTextInsertDelimitersMatchingDelimiter(t, u"]"_s, range); }},
        {"open and close", [&](QString &t) { QVString::insertOpenDelimiter(t, u"/*"_s, u"*/"_s, range); },
         [&](QVAttributedString &t) { t.insertOpenDelimiter(u"/*"_s, u"*/"_s, range); },
         [&](QVariant &t) { QVTextCore::modifySourceTextInsertOpenDelimiter(t, u"/*"_s, u"*/"_s, range); }},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        QVariant expected(source);
        row.classOperation(expected);
        ASSERT_EQ(expected.metaType(), QMetaType::fromType<QString>());
        EXPECT_NE(expected.toString(), source);
        QString text = source;
        row.inPlace(text);
        EXPECT_EQ(text, expected.toString());
        QVAttributedString attributed(source, {{colour, u"blue"_s}});
        row.member(attributed);
        EXPECT_EQ(attributed, QVAttributedString(expected.toString(), {{colour, u"blue"_s}}));
        QVariant attributedVariant = QVariant::fromValue(QVAttributedString(source));
        row.classOperation(attributedVariant);
        EXPECT_EQ(attributedVariant.value<QVAttributedString>().string(), expected.toString());
    }
}

// The whole-stretch conversion must give exactly what the piece-by-piece walk
// gives, text and runs, whatever the text, the runs and the range.
TEST(QVTextCoreTest, FastConversionAgreesWithPieceByPiece)
{
    // clang-format off
    const QStringList pool = {
        u"a"_s, u"B"_s, u"z"_s, u" "_s, u"."_s, u"\n"_s, u"\u00DF"_s /* ß */, u"\u0149"_s /* ŉ */,
        u"\uFB00"_s /* ﬀ */, u"\u0130"_s /* İ */, u"\u03A3"_s /* Σ */, u"\u03C3"_s, u"\u0390"_s /* ΐ */,
        u"\u0301"_s, u"\u0345"_s, u"e\u0301"_s, u"\u00E9"_s, u"\u00DF\u0301"_s, u"\u1E9E"_s, u"\u200D"_s,
        u"\u0587"_s /* և */,
        u"\U0001F1EB\U0001F1F7"_s /* flag */, u"\U0001F1E9"_s, u"\U00010428"_s /* Deseret */, u"\U0001F44D"_s,
        QString(QChar(0xD800)) /* lone surrogate */,
    };
    // clang-format on
    QRandomGenerator random(20240611);
    const QStringList locales = {u"en_US"_s, u"de_DE"_s, u"hy_AM"_s, u"el_GR"_s, u"tr_TR"_s};
    for (int iteration = 0; iteration < 500; ++iteration) {
        const DefaultLocale locale(locales.at(iteration % locales.size()));
        QString text;
        const int pieces = int(random.bounded(1, 40));
        for (int i = 0; i < pieces; ++i)
            text += pool.at(int(random.bounded(qsizetype(pool.size()))));
        QVAttributedString attributed(text);
        const int runCount = int(random.bounded(0, 6));
        for (int i = 0; i < runCount; ++i) {
            const quint64 location = random.bounded(quint64(text.size()));
            const quint64 length = random.bounded(quint64(1), quint64(text.size()) - location + 1);
            attributed.addAttribute(i % 2 ? bold : colour, i, {location, length});
        }
        const quint64 location = random.bounded(quint64(text.size()) + 1);
        const QVRange range = {location, random.bounded(quint64(text.size()) - location + 2)};
        for (QVCaseType caseType : {QVCaseTypeUppercase, QVCaseTypeLowercase, QVCaseTypeCapitalize}) {
            SCOPED_TRACE(QStringLiteral("%1 case %2 range %3 text %4")
                             .arg(QLocale().name())
                             .arg(quint64(caseType))
                             .arg(QVRangeToString(range), attributed.description())
                             .toStdString());
            using namespace QVTextCorePrivate;
            const CaseConversion fast
                = convertToCase(text, &attributed, caseType, range, CaseConversionPath::Automatic);
            const CaseConversion reference
                = convertToCase(text, &attributed, caseType, range, CaseConversionPath::PieceByPiece);
            ASSERT_EQ(fast.text, reference.text);
            ASSERT_EQ(runsText(fast.runs), runsText(reference.runs));
            const CaseConversion plain = convertToCase(text, nullptr, caseType, range, CaseConversionPath::Automatic);
            ASSERT_EQ(plain.text, reference.text);
        }
    }
}

#include <QVKit/Text/QVTextCore.h>

#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVLoggingCategories.h>
#include <QVKit/Platform/QVStringPlatform.h>
#include <QVKit/Platform/QVUserDefaults.h>
#include <QVKit/Text/QVTextAttributeRun.h>
#include <QVKit/Text/QVTextCore_p.h>

#include <QtCore/QHash>
#include <QtCore/QLocale>

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using QVTextCorePrivate::CaseConversion;
using QVTextCorePrivate::CaseConversionPath;

namespace {

using Runs = QList<QVTextAttributeRun>;

// ---------------------------------------------------------------------------
// Sources and ranges

bool isString(const QVariant &source)
{
    return source.metaType() == QMetaType::fromType<QString>();
}

bool isAttributedString(const QVariant &source)
{
    return source.metaType() == QMetaType::fromType<QVAttributedString>();
}

void logInvalidSource(const QVariant &source)
{
    QVLog("Invalid source text: %@", source);
}

// The code units [start, end) of the range inside a text of the given size;
// false when the range starts past the end (or is the not-found range).
bool clipRange(qsizetype size, QVRange range, qsizetype *start, qsizetype *end)
{
    if (range.location > quint64(size))
        return false;
    *start = qsizetype(range.location);
    *end = *start + qsizetype(std::min(range.length, quint64(size) - range.location));
    return true;
}

// The runs of the range, moved so that the range starts at 0.
std::optional<Runs> runsForRange(const QVAttributedString &source, qsizetype start, qsizetype end)
{
    std::optional<Runs> runs = source.textAttributeRunsInRange(QVMakeRange(quint64(start), quint64(end - start)));
    if (runs && !runs->isEmpty())
        QVTextAttributeRun::shiftTextAttributeRunRanges(*runs, runs->first().range().location, -qint64(start), 0);
    return runs;
}

QVAttributedString attributedResult(const QString &text, const std::optional<Runs> &runs)
{
    QVAttributedString result(text);
    if (runs)
        result.setTextAttributeRuns(*runs);
    return result;
}

// Replacing a variant's value through a detached copy: clearing the variant
// first leaves the copy as the only owner, so editing it copies nothing.
template <typename Edit> void modifyVariant(QVariant &source, const Edit &edit)
{
    if (isString(source)) {
        QString text = source.toString();
        source = QVariant();
        edit(text);
        source = QVariant(text);
    } else if (isAttributedString(source)) {
        QVAttributedString text = source.value<QVAttributedString>();
        source = QVariant();
        edit(text);
        source = QVariant::fromValue(text);
    } else {
        logInvalidSource(source);
    }
}

// ---------------------------------------------------------------------------
// Run shifting after pieces of the range changed length

// One piece of the range whose converted text has another length: its offset
// from the range's start and its length in the source, and the change.
struct Growth
{
    qint64 offset = 0;
    qint64 length = 0;
    qint64 delta = 0;
};

// The rule of QVTextAttributeRun::shiftTextAttributeRunRanges for one run,
// with origin delta 0; false when the run is removed.
bool shiftRun(quint64 &location, quint64 &size, quint64 index, qint64 deltaLength)
{
    const quint64 delta = quint64(deltaLength);
    if (location <= index && index - location < size) {
        if (deltaLength < 0 && size <= quint64(0) - delta)
            return false;
        size += delta;
    } else if (location + size >= index + delta) {
        if (deltaLength < 0 && location < quint64(0) - delta)
            return false;
        location += delta;
    }
    return true;
}

// Gives the runs the ranges that one shiftTextAttributeRunRanges call per
// growth, at the piece's offset in the output so far, would give them.
// Calling it per growth costs runs × growths; here each run only walks the
// growths that reach into it. Growths entirely before a run move it by their
// sum whenever every one of them meets the rule's "move" test (checked
// through the largest offset + delta among them); all others are walked one
// by one with the rule itself, until one starts at or past the run's end:
// with positive deltas that one, and every later one, leaves the run alone.
void applyGrowths(Runs &runs, const std::vector<Growth> &growths)
{
    if (growths.empty() || runs.isEmpty())
        return;
    const bool allGrow = std::all_of(growths.cbegin(), growths.cend(), [](const Growth &g) { return g.delta > 0; });
    if (!allGrow) {
        qint64 grown = 0;
        for (const Growth &g : growths) {
            QVTextAttributeRun::shiftTextAttributeRunRanges(runs, quint64(g.offset + grown), 0, g.delta);
            grown += g.delta;
        }
        return;
    }

    const size_t count = growths.size();
    std::vector<qint64> grownBefore(count + 1, 0); // sum of the deltas of growths [0, k)
    std::vector<qint64> reachBefore(count + 1, 0); // max offset + delta over growths [0, k)
    std::vector<qint64> ends(count);
    for (size_t k = 0; k < count; ++k) {
        grownBefore[k + 1] = grownBefore[k] + growths[k].delta;
        reachBefore[k + 1] = std::max(reachBefore[k], growths[k].offset + growths[k].delta);
        ends[k] = growths[k].offset + growths[k].length;
    }

    for (QVTextAttributeRun &run : runs) {
        const QVRange original = run.range();
        quint64 location = original.location;
        quint64 size = original.length;
        size_t k = size_t(std::upper_bound(ends.cbegin(), ends.cend(), qint64(location)) - ends.cbegin());
        if (k > 0 && quint64(reachBefore[k]) <= QVMaxRange(original)) {
            location += quint64(grownBefore[k]);
        } else {
            k = 0;
        }
        for (; k < count; ++k) {
            const quint64 index = quint64(growths[k].offset + grownBefore[k]);
            if (index >= location + size)
                break;
            shiftRun(location, size, index, growths[k].delta); // never removes with a positive delta
        }
        run.setRange(QVMakeRange(location, size));
    }
}

// ---------------------------------------------------------------------------
// Case conversion

QString convertPiece(const QString &piece, QVCaseType caseType, const QLocale &locale)
{
    switch (caseType) {
    case QVCaseTypeUppercase:
        return QVString::uppercaseString(piece, locale);
    case QVCaseTypeLowercase:
        return QVString::lowercaseString(piece, locale);
    case QVCaseTypeCapitalize:
        return QVString::capitalizedString(piece, locale);
    default:
        return QString();
    }
}

bool isKnownCaseType(QVCaseType caseType)
{
    return caseType == QVCaseTypeUppercase || caseType == QVCaseTypeLowercase || caseType == QVCaseTypeCapitalize;
}

// The reference walk: one conversion per composed character (per word and
// the separators after it when capitalizing), appended in order, the runs
// shifted at each piece that changed length. Text before the first word
// belongs to no word and is kept as it is, so that nothing of the range is
// lost.
void convertPieceByPiece(const QString &text, qsizetype start, qsizetype end, QVCaseType caseType, const QLocale &locale,
                         CaseConversion &result)
{
    QString &output = result.text;
    output.reserve(end - start);
    const quint64 options = (caseType == QVCaseTypeCapitalize ? QVStringEnumerationByWords
                                                              : QVStringEnumerationByComposedCharacterSequences)
        | QVStringEnumerationSubstringNotRequired | QVStringEnumerationLocalized;
    qint64 growth = 0;
    qsizetype covered = start;
    QVString::enumerateSubstringsInRange(
        text, QVMakeRange(quint64(start), quint64(end - start)), options,
        [&](const QString &, QVRange, QVRange enclosing, bool *) {
            const qsizetype a = qsizetype(enclosing.location);
            const qsizetype b = a + qsizetype(enclosing.length);
            if (a > covered)
                output.append(QStringView(text).mid(covered, a - covered));
            const QString converted = convertPiece(text.mid(a, b - a), caseType, locale);
            const qint64 delta = converted.size() - (b - a);
            if (result.runs && delta != 0) {
                QVTextAttributeRun::shiftTextAttributeRunRanges(*result.runs, quint64(a - start + growth), 0, delta);
                growth += delta;
            }
            output.append(converted);
            covered = b;
        });
    if (covered < end)
        output.append(QStringView(text).mid(covered, end - covered));
}

// Upper and lower case map each code point by itself (full case mapping,
// no context) in every locale except these, whose rules look at neighbouring
// letters: Turkish and Azerbaijani dotted I, Lithuanian dot above, Greek
// accent removal in upper case.
bool mapsCodePointsAlone(QVCaseType caseType, const QLocale &locale)
{
    if (caseType != QVCaseTypeUppercase && caseType != QVCaseTypeLowercase)
        return false;
    switch (locale.language()) {
    case QLocale::Turkish:
    case QLocale::Azerbaijani:
    case QLocale::Lithuanian:
    case QLocale::Greek:
        return false;
    default:
        return true;
    }
}

// How many code units each BMP code unit becomes when converted alone, in
// one locale and case type; filled lazily by blocks of 256, so text in a few
// scripts only ever converts a few blocks. Surrogates count 0: a piece
// holding one is always converted to learn its length.
class MappedLengths
{
public:
    MappedLengths(const QLocale &locale, QVCaseType caseType)
        : m_locale(locale)
        , m_caseType(caseType)
    { }

    quint8 at(char16_t unit)
    {
        const int block = unit >> 8;
        if (!m_ready[size_t(block)].load(std::memory_order_acquire))
            fill(block);
        return m_lengths[unit];
    }

private:
    void fill(int block)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_ready[size_t(block)].load(std::memory_order_relaxed))
            return;
        for (int low = 0; low < 256; ++low) {
            const char16_t unit = char16_t((block << 8) | low);
            quint8 length = 0;
            if (!QChar::isSurrogate(unit)) {
                const qsizetype mapped = convertPiece(QString(QChar(unit)), m_caseType, m_locale).size();
                length = quint8(std::min<qsizetype>(mapped, 255));
            }
            m_lengths[unit] = length;
        }
        m_ready[size_t(block)].store(true, std::memory_order_release);
    }

    const QLocale m_locale;
    const QVCaseType m_caseType;
    std::mutex m_mutex;
    std::array<std::atomic<bool>, 256> m_ready {};
    std::array<quint8, 65536> m_lengths {};
};

MappedLengths &mappedLengths(const QLocale &locale, QVCaseType caseType)
{
    static std::mutex mutex;
    static std::map<std::pair<QString, QVCaseType>, std::unique_ptr<MappedLengths>> tables;
    const std::lock_guard<std::mutex> lock(mutex);
    std::unique_ptr<MappedLengths> &table = tables[{locale.bcp47Name(), caseType}];
    if (!table)
        table = std::make_unique<MappedLengths>(locale, caseType);
    return *table;
}

// The fast path of upper and lower case where code points map alone: the
// case mapping of a stretch is then the concatenation of its pieces'
// mappings, so whole stretches are converted at once. The one exception is
// capital sigma, whose lower case depends on the letters around it (final
// sigma): each piece holding one is converted alone, as the walk does.
// Pieces that change length are only looked for when runs are carried: a
// piece can only do so when it holds a code unit that changes length alone
// (or a surrogate), and only those pieces are found and converted again.
void convertStretches(const QString &text, qsizetype start, qsizetype end, QVCaseType caseType, const QLocale &locale,
                      CaseConversion &result)
{
    const bool tracking = result.runs.has_value();
    MappedLengths *lengths = tracking ? &mappedLengths(locale, caseType) : nullptr;
    QString &output = result.text;
    std::vector<Growth> growths;
    QHash<QString, qint64> pieceDeltas;

    auto convert = [&](qsizetype a, qsizetype b) {
        return convertPiece(a == 0 && b == text.size() ? text : text.mid(a, b - a), caseType, locale);
    };
    auto piece = [&](qsizetype index) {
        const QVRange cluster = QVString::rangeOfComposedCharacterSequenceAtIndex(text, quint64(index));
        return std::pair<qsizetype, qsizetype>(std::max(qsizetype(cluster.location), start),
                                               std::min(qsizetype(QVMaxRange(cluster)), end));
    };
    auto record = [&](qsizetype a, qsizetype b, qint64 delta) {
        if (delta != 0)
            growths.push_back(Growth {a - start, b - a, delta});
    };
    // Finds the pieces of [from, to) that change length; from and to are piece boundaries.
    auto findGrowths = [&](qsizetype from, qsizetype to) {
        if (!tracking)
            return;
        const QChar *units = text.constData();
        for (qsizetype j = from; j < to;) {
            if (lengths->at(units[j].unicode()) == 1) {
                ++j;
                continue;
            }
            const auto [a, b] = piece(j);
            qint64 delta = 0;
            if (b - a == 1 && a == j && !units[j].isSurrogate()) {
                delta = qint64(lengths->at(units[j].unicode())) - 1;
            } else {
                const QString key = text.mid(a, b - a);
                auto found = pieceDeltas.constFind(key);
                if (found == pieceDeltas.cend())
                    found = pieceDeltas.insert(key, convertPiece(key, caseType, locale).size() - key.size());
                delta = found.value();
            }
            record(a, b, delta);
            j = std::max(b, j + 1);
        }
    };

    if (caseType == QVCaseTypeUppercase) {
        output = convert(start, end);
        findGrowths(start, end);
    } else {
        const QStringView view(text);
        qsizetype position = start;
        while (position < end) {
            const qsizetype sigma = view.mid(position, end - position).indexOf(QChar(0x03A3));
            if (sigma < 0) {
                output.append(convert(position, end));
                findGrowths(position, end);
                break;
            }
            const auto [a, b] = piece(position + sigma);
            if (a > position) {
                output.append(convert(position, a));
                findGrowths(position, a);
            }
            const QString converted = convert(a, b);
            record(a, b, converted.size() - (b - a));
            output.append(converted);
            position = b;
        }
    }
    if (tracking)
        applyGrowths(*result.runs, growths);
}

CaseConversion convertCase(const QString &text, const QVAttributedString *attributes, QVCaseType caseType, QVRange range,
                           CaseConversionPath path)
{
    CaseConversion result;
    qsizetype start = 0;
    qsizetype end = 0;
    if (!isKnownCaseType(caseType)) {
        QVLog("Unknown caseType");
        result.text = u""_s;
        return result;
    }
    if (!clipRange(text.size(), range, &start, &end)) {
        result.text = u""_s;
        return result;
    }
    if (attributes)
        result.runs = runsForRange(*attributes, start, end);
    const QLocale locale;
    if (path == CaseConversionPath::Automatic && mapsCodePointsAlone(caseType, locale))
        convertStretches(text, start, end, caseType, locale, result);
    else
        convertPieceByPiece(text, start, end, caseType, locale, result);
    if (result.text.isNull())
        result.text = u""_s;
    return result;
}

// ---------------------------------------------------------------------------
// Quotes

// Marks the locale puts around a quotation: a private-use sentinel is quoted
// and the result split around it, so marks of any length come out whole.
std::pair<QString, QString> quotationMarks(const QLocale &locale, QLocale::QuotationStyle style)
{
    const QChar sentinel(0xE000);
    const QString quoted = locale.quoteString(QString(sentinel), style);
    const qsizetype at = quoted.indexOf(sentinel);
    if (at < 0)
        return {};
    return {quoted.left(at), quoted.mid(at + 1)};
}

// The typographic quotes that straightening turns into " (first row) and '.
constexpr char16_t doubleQuotes[] = {0x201C, 0x201D, 0x201E, 0x201F, 0x00AB, 0x00BB, 0x301D, 0x301E, 0x301F, 0xFF02};
constexpr char16_t singleQuotes[] = {0x2018, 0x2019, 0x201A, 0x201B, 0x2039, 0x203A, 0xFF07};

char16_t straightened(char16_t unit)
{
    if (std::find(std::begin(doubleQuotes), std::end(doubleQuotes), unit) != std::end(doubleQuotes))
        return u'"';
    if (std::find(std::begin(singleQuotes), std::end(singleQuotes), unit) != std::end(singleQuotes))
        return u'\'';
    return unit;
}

// A straight quote opens when nothing comes before it, or white space, an
// opening bracket, a dash or one of the locale's opening marks.
bool opensAfter(QStringView before, const QString &standardBegin, const QString &alternateBegin)
{
    if (before.isEmpty())
        return true;
    if ((!standardBegin.isEmpty() && before.endsWith(standardBegin))
        || (!alternateBegin.isEmpty() && before.endsWith(alternateBegin)))
        return true;
    char32_t last = before.back().unicode();
    if (before.size() >= 2 && QChar::isLowSurrogate(last) && before[before.size() - 2].isHighSurrogate())
        last = QChar::surrogateToUcs4(before[before.size() - 2], before.back());
    if (QChar::isSpace(last))
        return true;
    const QChar::Category category = QChar::category(last);
    return category == QChar::Punctuation_Open || category == QChar::Punctuation_Dash;
}

// Whether a letter or digit starts at index i (a surrogate pair counts as one character).
bool isWordCharacterAt(const QString &text, qsizetype i)
{
    if (i >= text.size())
        return false;
    char32_t c = text[i].unicode();
    if (QChar::isHighSurrogate(c) && i + 1 < text.size() && text[i + 1].isLowSurrogate())
        c = QChar::surrogateToUcs4(text[i], text[i + 1]);
    return QChar::isLetterOrNumber(c);
}

bool isKnownQuotationType(QVQuotationType quotationType)
{
    return quotationType == QVQuotationTypeStraight || quotationType == QVQuotationTypeSmart;
}

// The range's text with its quotes converted, and the pieces that changed
// length (a locale's mark may be longer than one code unit).
QString convertQuotation(const QString &text, qsizetype start, qsizetype end, QVQuotationType quotationType,
                         std::vector<Growth> &growths)
{
    QString output;
    output.reserve(end - start);
    if (quotationType == QVQuotationTypeStraight) {
        for (qsizetype i = start; i < end; ++i)
            output.append(QChar(straightened(text[i].unicode())));
        return output;
    }
    QString standardBegin;
    QString standardEnd;
    QString alternateBegin;
    QString alternateEnd;
    QVTextCore::stringsForQuoteType(QVQuoteTypeStandard, &standardBegin, &standardEnd);
    QVTextCore::stringsForQuoteType(QVQuoteTypeAlternative, &alternateBegin, &alternateEnd);
    const QString apostrophe(QChar(0x2019));
    // Single quotes opened in this range and not yet closed: a closing ' after
    // a word closes one of them, or else is a possessive apostrophe (dogs').
    qsizetype openSingles = 0;
    for (qsizetype i = start; i < end; ++i) {
        const QChar unit = text[i];
        if (unit != u'"' && unit != u'\'') {
            output.append(unit);
            continue;
        }
        const QStringView before = output.isEmpty() ? QStringView(text).left(start) : QStringView(output);
        const bool opens = opensAfter(before, standardBegin, alternateBegin);
        const QString *chosen = nullptr;
        if (unit == u'"') {
            chosen = opens ? &standardBegin : &standardEnd;
        } else if (!opens && (isWordCharacterAt(text, i + 1) || openSingles == 0)) {
            // An apostrophe is a letter's mark in every language (it's, l'eau,
            // rock'n'roll), never one of the locale's quotation marks.
            chosen = &apostrophe;
        } else {
            openSingles += opens ? 1 : -1;
            chosen = opens ? &alternateBegin : &alternateEnd;
        }
        const QString &mark = *chosen;
        if (mark.size() != 1)
            growths.push_back(Growth {i - start, 1, mark.size() - 1});
        output.append(mark);
    }
    return output;
}

// ---------------------------------------------------------------------------
// Inserting and removing around a range, for both kinds of text

QString plainText(const QString &text)
{
    return text;
}

QString plainText(const QVAttributedString &text)
{
    return text.string();
}

void insertText(QString &text, qsizetype at, const QString &string)
{
    text.insert(at, string);
}

void insertText(QVAttributedString &text, qsizetype at, const QString &string)
{
    if (!string.isEmpty())
        text.replaceCharactersInRange(QVMakeRange(quint64(at), 0), string);
}

void removeText(QString &text, qsizetype at, qsizetype count)
{
    text.remove(at, count);
}

void removeText(QVAttributedString &text, qsizetype at, qsizetype count)
{
    if (count > 0)
        text.deleteCharactersInRange(QVMakeRange(quint64(at), quint64(count)));
}

// The end is edited first, so that the range's start stays where it is.
template <typename Text>
void modifyAround(Text &source, QVTextCoreOperation operation, const QString &before, const QString &after, QVRange range)
{
    if (operation > QVTextCoreOperationRemoveIgnoringCheck) {
        QVLog("QVTextCore::modifySourceText: unknown operation %llu. Fix this.", operation);
        return;
    }
    const QString text = plainText(source);
    qsizetype start = 0;
    qsizetype end = 0;
    if (!clipRange(text.size(), range, &start, &end))
        return;
    const qsizetype beforeSize = before.size();
    const qsizetype afterSize = after.size();
    const QStringView view(text);

    switch (operation) {
    case QVTextCoreOperationInsert:
        insertText(source, end, after);
        insertText(source, start, before);
        return;
    case QVTextCoreOperationRemove:
        if (start >= beforeSize && text.size() - end >= afterSize && view.mid(start - beforeSize, beforeSize) == before
            && view.mid(end, afterSize) == after) {
            removeText(source, end, afterSize);
            removeText(source, start - beforeSize, beforeSize);
        } else if (end - start >= beforeSize + afterSize && view.mid(start, beforeSize) == before
                   && view.mid(end - afterSize, afterSize) == after) {
            removeText(source, end - afterSize, afterSize);
            removeText(source, start, beforeSize);
        }
        return;
    case QVTextCoreOperationRemoveIgnoringCheck:
        removeText(source, end, std::min(afterSize, text.size() - end));
        removeText(source, start - std::min(beforeSize, start), std::min(beforeSize, start));
        return;
    default:
        return;
    }
}

// ---------------------------------------------------------------------------
// Delimiters

struct DelimiterPair
{
    QString open;
    QString close;
};

// () [] {} <> “” ‘’ «» ‹› „“ 「」 『』, looked through in this order.
const QList<DelimiterPair> &builtInDelimiterPairs()
{
    static const QList<DelimiterPair> pairs = {
        {u"("_s, u")"_s},           {u"["_s, u"]"_s},           {u"{"_s, u"}"_s},           {u"<"_s, u">"_s},
        {u"\u201C"_s, u"\u201D"_s}, {u"\u2018"_s, u"\u2019"_s}, {u"\u00AB"_s, u"\u00BB"_s}, {u"\u2039"_s, u"\u203A"_s},
        {u"\u201E"_s, u"\u201C"_s}, {u"\u300C"_s, u"\u300D"_s}, {u"\u300E"_s, u"\u300F"_s},
    };
    return pairs;
}

QList<DelimiterPair> customDelimiterPairs(QVUserDefaults *defaults)
{
    QList<DelimiterPair> pairs;
    const QVariantList entries = defaults->arrayForKey(QVTextDelimitersCustomPairs);
    for (const QVariant &entry : entries) {
        const QMetaType type = entry.metaType();
        const bool isList = type == QMetaType::fromType<QVariantList>() || type == QMetaType::fromType<QStringList>();
        const QVariantList items = isList ? entry.toList() : QVariantList();
        const bool shaped = items.size() == 2 && isString(items.at(0)) && isString(items.at(1))
            && !items.at(0).toString().isEmpty() && !items.at(1).toString().isEmpty();
        if (!shaped) {
            qCDebug(lcQVText) << "Skipping a delimiter pair that is not two strings:" << entry;
            continue;
        }
        pairs.append({items.at(0).toString(), items.at(1).toString()});
    }
    return pairs;
}

} // namespace

// ---------------------------------------------------------------------------
// Private entry for the tests

namespace QVTextCorePrivate {

CaseConversion convertToCase(const QString &text, const QVAttributedString *attributes, QVCaseType caseType, QVRange range,
                             CaseConversionPath path)
{
    return convertCase(text, attributes, caseType, range, path);
}

} // namespace QVTextCorePrivate

// ---------------------------------------------------------------------------
// Case conversion

namespace {

void replaceText(QString &text, qsizetype start, qsizetype end, const QString &string)
{
    text.replace(start, end - start, string);
}

void replaceText(QVAttributedString &text, qsizetype start, qsizetype end, const QVAttributedString &string)
{
    text.replaceCharactersInRange(QVMakeRange(quint64(start), quint64(end - start)), string);
}

// Replaces the range (clipped to the text) by its converted text, of either kind.
template <typename Text>
void replaceRangeConvertedToCase(Text &source, QVCaseType caseType, QVRange range)
{
    if (!isKnownCaseType(caseType)) {
        QVLog("Unknown caseType");
        return;
    }
    qsizetype start = 0;
    qsizetype end = 0;
    if (!clipRange(plainText(source).size(), range, &start, &end) || start == end)
        return;
    replaceText(source, start, end, QVTextCore::sourceTextConvertToCase(source, caseType, range));
}

} // namespace

QVariant QVTextCore::sourceTextConvertToCase(const QVariant &source, QVCaseType caseType, QVRange range)
{
    if (isString(source))
        return QVariant(sourceTextConvertToCase(source.toString(), caseType, range));
    if (isAttributedString(source))
        return QVariant::fromValue(sourceTextConvertToCase(source.value<QVAttributedString>(), caseType, range));
    logInvalidSource(source);
    return QVariant();
}

QString QVTextCore::sourceTextConvertToCase(const QString &source, QVCaseType caseType, QVRange range)
{
    return convertCase(source, nullptr, caseType, range, CaseConversionPath::Automatic).text;
}

QVAttributedString QVTextCore::sourceTextConvertToCase(const QVAttributedString &source, QVCaseType caseType,
                                                       QVRange range)
{
    const CaseConversion converted
        = convertCase(source.string(), &source, caseType, range, CaseConversionPath::Automatic);
    return attributedResult(converted.text, converted.runs);
}

void QVTextCore::modifySourceTextConvertToCase(QVariant &source, QVCaseType caseType, QVRange range)
{
    modifyVariant(source, [&](auto &text) { modifySourceTextConvertToCase(text, caseType, range); });
}

void QVTextCore::modifySourceTextConvertToCase(QString &source, QVCaseType caseType, QVRange range)
{
    replaceRangeConvertedToCase(source, caseType, range);
}

void QVTextCore::modifySourceTextConvertToCase(QVAttributedString &source, QVCaseType caseType, QVRange range)
{
    replaceRangeConvertedToCase(source, caseType, range);
}

// ---------------------------------------------------------------------------
// Quotes

void QVTextCore::stringsForQuoteType(QVQuoteType type, QString *begin, QString *end)
{
    if (quint64(type) > quint64(QVQuoteTypeAlternative))
        QVLog("Unsupported quote type: %lu", quint64(type));
    const QLocale locale;
    std::pair<QString, QString> marks;
    if (type == QVQuoteTypeAlternative)
        marks = quotationMarks(locale, QLocale::AlternateQuotation);
    if (marks.first.isEmpty() && marks.second.isEmpty())
        marks = quotationMarks(locale, QLocale::StandardQuotation);
    if (begin)
        *begin = marks.first;
    if (end)
        *end = marks.second;
}

QVariant QVTextCore::sourceTextConvertToQuotation(const QVariant &source, QVQuotationType quotationType, QVRange range)
{
    if (isString(source))
        return QVariant(sourceTextConvertToQuotation(source.toString(), quotationType, range));
    if (isAttributedString(source))
        return QVariant::fromValue(
            sourceTextConvertToQuotation(source.value<QVAttributedString>(), quotationType, range));
    logInvalidSource(source);
    return QVariant();
}

QString QVTextCore::sourceTextConvertToQuotation(const QString &source, QVQuotationType quotationType, QVRange range)
{
    qsizetype start = 0;
    qsizetype end = 0;
    if (!clipRange(source.size(), range, &start, &end))
        return u""_s;
    if (!isKnownQuotationType(quotationType)) {
        QVLog("Unknown quotationType");
        return source.mid(start, end - start);
    }
    std::vector<Growth> growths;
    return convertQuotation(source, start, end, quotationType, growths);
}

QVAttributedString QVTextCore::sourceTextConvertToQuotation(const QVAttributedString &source, QVQuotationType quotationType,
                                                            QVRange range)
{
    qsizetype start = 0;
    qsizetype end = 0;
    if (!clipRange(qsizetype(source.length()), range, &start, &end))
        return QVAttributedString();
    const QVRange clipped = QVMakeRange(quint64(start), quint64(end - start));
    if (!isKnownQuotationType(quotationType)) {
        QVLog("Unknown quotationType");
        return source.attributedSubstringFromRange(clipped);
    }
    const QString text = source.string();
    std::vector<Growth> growths;
    const QString converted = convertQuotation(text, start, end, quotationType, growths);
    std::optional<Runs> runs = runsForRange(source, start, end);
    if (runs)
        applyGrowths(*runs, growths);
    return attributedResult(converted, runs);
}

void QVTextCore::modifySourceTextConvertToQuotation(QVariant &source, QVQuotationType quotationType, QVRange range)
{
    modifyVariant(source, [&](auto &text) { modifySourceTextConvertToQuotation(text, quotationType, range); });
}

void QVTextCore::modifySourceTextConvertToQuotation(QString &source, QVQuotationType quotationType, QVRange range)
{
    qsizetype start = 0;
    qsizetype end = 0;
    if (!clipRange(source.size(), range, &start, &end))
        return;
    if (!isKnownQuotationType(quotationType)) {
        QVLog("Unknown quotationType");
        return;
    }
    std::vector<Growth> growths;
    source.replace(start, end - start, convertQuotation(source, start, end, quotationType, growths));
}

void QVTextCore::modifySourceTextConvertToQuotation(QVAttributedString &source, QVQuotationType quotationType, QVRange range)
{
    qsizetype start = 0;
    qsizetype end = 0;
    if (!clipRange(qsizetype(source.length()), range, &start, &end) || start == end)
        return;
    if (!isKnownQuotationType(quotationType)) {
        QVLog("Unknown quotationType");
        return;
    }
    const QVAttributedString converted = sourceTextConvertToQuotation(source, quotationType, range);
    if (converted.string() != QStringView(source.string()).mid(start, end - start))
        source.replaceCharactersInRange(QVMakeRange(quint64(start), quint64(end - start)), converted);
}

void QVTextCore::modifySourceTextInsertLocalizedQuoteType(QVariant &source, QVQuoteType quoteType, QVRange range)
{
    modifyVariant(source, [&](auto &text) { modifySourceTextInsertLocalizedQuoteType(text, quoteType, range); });
}

void QVTextCore::modifySourceTextInsertLocalizedQuoteType(QString &source, QVQuoteType quoteType, QVRange range)
{
    QString begin;
    QString end;
    stringsForQuoteType(quoteType, &begin, &end);
    modifySourceText(source, QVTextCoreOperationInsert, begin, end, range);
}

void QVTextCore::modifySourceTextInsertLocalizedQuoteType(QVAttributedString &source, QVQuoteType quoteType, QVRange range)
{
    QString begin;
    QString end;
    stringsForQuoteType(quoteType, &begin, &end);
    modifySourceText(source, QVTextCoreOperationInsert, begin, end, range);
}

// ---------------------------------------------------------------------------
// Delimiters

bool QVTextCore::stringsMatchingDelimiter(const QString &delimiter, QString *open, QString *close)
{
    if (delimiter.isEmpty())
        return false;
    QVUserDefaults *defaults = QVUserDefaults::standardUserDefaults();
    QString foundOpen = delimiter;
    QString foundClose = delimiter;

    const QString matchingKey = QVTextDelimitersUseDelimiterMatching;
    const bool matching = !defaults->objectForKey(matchingKey).isValid() || defaults->boolForKey(matchingKey);
    if (matching) {
        const QList<DelimiterPair> custom = customDelimiterPairs(defaults);
        const DelimiterPair *found = nullptr;
        for (const QList<DelimiterPair> *pairs : {&custom, &builtInDelimiterPairs()}) {
            for (const DelimiterPair &pair : *pairs) {
                if (pair.open == delimiter || pair.close == delimiter) {
                    found = &pair;
                    break;
                }
            }
            if (found)
                break;
        }
        if (found) {
            bool disabled = false;
            const QVariantList switchedOff = defaults->arrayForKey(QVTextDelimitersDisabledMatches);
            for (const QVariant &entry : switchedOff)
                disabled = disabled || (isString(entry) && entry.toString() == found->open);
            if (!disabled) {
                foundOpen = found->open;
                foundClose = found->close;
            }
        }
    }
    if (open)
        *open = foundOpen;
    if (close)
        *close = foundClose;
    return true;
}

void QVTextCore::modifySourceTextInsertDelimitersMatchingDelimiter(QVariant &source, const QString &delimiter,
                                                                   QVRange range)
{
    modifyVariant(source,
                  [&](auto &text) { modifySourceTextInsertDelimitersMatchingDelimiter(text, delimiter, range); });
}

void QVTextCore::modifySourceTextInsertDelimitersMatchingDelimiter(QString &source, const QString &delimiter,
                                                                   QVRange range)
{
    QString open;
    QString close;
    if (stringsMatchingDelimiter(delimiter, &open, &close))
        modifySourceText(source, QVTextCoreOperationInsert, open, close, range);
}

void QVTextCore::modifySourceTextInsertDelimitersMatchingDelimiter(QVAttributedString &source, const QString &delimiter,
                                                                   QVRange range)
{
    QString open;
    QString close;
    if (stringsMatchingDelimiter(delimiter, &open, &close))
        modifySourceText(source, QVTextCoreOperationInsert, open, close, range);
}

void QVTextCore::modifySourceText(QVariant &source, QVTextCoreOperation operation, const QString &before, const QString &after,
                                  QVRange range)
{
    modifyVariant(source, [&](auto &text) { modifySourceText(text, operation, before, after, range); });
}

void QVTextCore::modifySourceText(QString &source, QVTextCoreOperation operation, const QString &before, const QString &after,
                                  QVRange range)
{
    modifyAround(source, operation, before, after, range);
}

void QVTextCore::modifySourceText(QVAttributedString &source, QVTextCoreOperation operation, const QString &before,
                                  const QString &after, QVRange range)
{
    modifyAround(source, operation, before, after, range);
}

// ---------------------------------------------------------------------------
// The source in the wanted form

QString QVTextCore::commonStringFromObject(const QVariant &object)
{
    if (isString(object))
        return object.toString();
    if (isAttributedString(object))
        return object.value<QVAttributedString>().string();
    return QString();
}

QString QVTextCore::commonMutableStringFromObject(const QVariant &object)
{
    return commonStringFromObject(object);
}

QVAttributedString QVTextCore::commonAttributedStringFromObject(const QVariant &object)
{
    if (isAttributedString(object))
        return object.value<QVAttributedString>();
    if (isString(object))
        return QVAttributedString(object.toString());
    return QVAttributedString();
}

QVAttributedString QVTextCore::commonMutableAttributedStringFromObject(const QVariant &object)
{
    return commonAttributedStringFromObject(object);
}

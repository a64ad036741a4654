#include "QVKit/Platform/QVStringPlatform.h"

#include "QVKit/Platform/QVUnicodeCategories_p.h"

#include <QtCore/QTextBoundaryFinder>
#include <QtCore/QVarLengthArray>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t CR = u'\r';
constexpr char16_t LF = u'\n';

// ---------------------------------------------------------------------------
// Code points

struct CodePoint
{
    char32_t value;
    qsizetype size; // 1 or 2 code units
};

// The code point starting at i; a surrogate pair cut by end, or a lone
// surrogate, reads as the single code unit.
CodePoint codePointAt(QStringView text, qsizetype i, qsizetype end)
{
    const char16_t unit = text[i].unicode();
    if (QChar::isHighSurrogate(unit) && i + 1 < end && QChar::isLowSurrogate(text[i + 1].unicode()))
        return {QChar::surrogateToUcs4(unit, text[i + 1].unicode()), 2};
    return {unit, 1};
}

// The code point ending at i (exclusive), not reaching before start.
CodePoint codePointBefore(QStringView text, qsizetype i, qsizetype start)
{
    const char16_t unit = text[i - 1].unicode();
    if (QChar::isLowSurrogate(unit) && i - 2 >= start && QChar::isHighSurrogate(text[i - 2].unicode()))
        return {QChar::surrogateToUcs4(text[i - 2].unicode(), unit), 2};
    return {unit, 1};
}

bool rangeLiesInside(qsizetype size, QVRange range)
{
    const quint64 length = quint64(size);
    return range.location <= length && range.length <= length - range.location;
}

// The range cut to the text: a location past the end moves to the end.
QVRange clippedRange(qsizetype size, QVRange range)
{
    const quint64 length = quint64(size);
    const quint64 location = std::min(range.location, length);
    return {location, std::min(range.length, length - location)};
}

// ---------------------------------------------------------------------------
// Composed character sequences
//
// QTextBoundaryFinder classifies its whole input when it is built, so the
// finder only ever sees a window around the index. The window's edges are
// "anchors": positions that are certainly cluster boundaries and that no
// grapheme rule looks back across (the look-backs are the emoji ZWJ rule and
// regional indicator pairing), so the window answers exactly as the whole
// string would.

bool isPrepend(char32_t c)
{
    return (c >= 0x0600 && c <= 0x0605) || c == 0x06DD || c == 0x070F || c == 0x0890 || c == 0x0891 || c == 0x08E2
        || c == 0x0D4E || c == 0x110BD || c == 0x110CD || c == 0x111C2 || c == 0x111C3 || c == 0x1193F || c == 0x11941
        || c == 0x11A3A || (c >= 0x11A84 && c <= 0x11A89) || c == 0x11D46 || c == 0x11F02;
}

bool isControlUnit(char16_t unit)
{
    return unit < 0x20 || (unit >= 0x7F && unit <= 0x9F);
}

// True for a code point that always begins a cluster of its own kind
// ("Other" for the grapheme rules, not an emoji that a ZWJ could join):
// ASCII, most letters outside the scripts with spacing marks, conjuncts or
// jamo, ordinary pictographs, and supplementary ideographs.
bool beginsClusterPlainly(char32_t c)
{
    if (c >= 0x20 && c < 0x7F)
        return true;
    if (c < 0xC0)
        return false;
    if (c >= 0x1F300 && c <= 0x1FAFF)
        return c < 0x1F3FB || c > 0x1F3FF; // skin tone modifiers extend the emoji before them
    if (c >= 0x20000 && c <= 0x3FFFF)
        return true;
    if (c > 0xFFFF)
        return false;
    if ((c >= 0x0900 && c <= 0x109F) || (c >= 0x1100 && c <= 0x11FF) || (c >= 0x1780 && c <= 0x17FF)
        || (c >= 0x1A00 && c <= 0x1CFF) || (c >= 0x2100 && c <= 0x2BFF) || (c >= 0x3000 && c <= 0x303F)
        || (c >= 0xA800 && c <= 0xABFF) || (c >= 0xAC00 && c <= 0xDFFF) || c >= 0xFF00)
        return false;
    switch (QChar::category(c)) {
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Titlecase:
    case QChar::Letter_Other:
        return true;
    default:
        return false;
    }
}

bool isGraphemeAnchor(QStringView text, qsizetype p)
{
    if (p <= 0 || p >= text.size())
        return true;
    const char16_t previous = text[p - 1].unicode();
    const char16_t current = text[p].unicode();
    if (previous == CR)
        return current != LF;
    if (isControlUnit(previous) || isControlUnit(current))
        return true;
    if (!beginsClusterPlainly(codePointAt(text, p, text.size()).value))
        return false;
    if (QChar::isLowSurrogate(current))
        return false;
    // A ZWJ joins a following pictograph; prepended marks join what follows.
    const char32_t before = codePointBefore(text, p, 0).value;
    return before != 0x200D && !isPrepend(before);
}

qsizetype graphemeAnchorAtOrBefore(QStringView text, qsizetype p)
{
    while (!isGraphemeAnchor(text, p))
        --p;
    return p;
}

qsizetype graphemeAnchorAtOrAfter(QStringView text, qsizetype p)
{
    while (!isGraphemeAnchor(text, p))
        ++p;
    return p;
}

bool isRegionalIndicator(char32_t c)
{
    return c >= 0x1F1E6 && c <= 0x1F1FF;
}

// Every cluster boundary of a window, from 0 to its size. Qt 6.4 pairs
// regional indicators wrongly when a pictograph precedes them ("👍🇫🇷" comes
// out as 👍, 🇫, 🇷…), so inside each run of regional indicators the
// boundaries are set here: one after every pair, counted from the run's start.
QList<qsizetype> graphemeBoundaries(QStringView window)
{
    QList<qsizetype> boundaries;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, window);
    for (qsizetype p = 0; p >= 0; p = finder.toNextBoundary())
        boundaries.append(p);

    qsizetype i = 0;
    while (i < window.size()) {
        const CodePoint first = codePointAt(window, i, window.size());
        if (!isRegionalIndicator(first.value)) {
            i += first.size;
            continue;
        }
        const qsizetype runStart = i;
        qsizetype runEnd = i;
        while (runEnd < window.size()) {
            const CodePoint next = codePointAt(window, runEnd, window.size());
            if (!isRegionalIndicator(next.value))
                break;
            runEnd += next.size;
        }
        // Regional indicators are all two code units long.
        const auto inside = [&](qsizetype p) { return p > runStart && p < runEnd; };
        boundaries.removeIf(inside);
        const auto at = std::lower_bound(boundaries.begin(), boundaries.end(), runEnd);
        QList<qsizetype> pairs;
        for (qsizetype p = runStart + 4; p < runEnd; p += 4)
            pairs.append(p);
        boundaries.insert(at - boundaries.begin(), pairs.size(), 0);
        std::copy(pairs.cbegin(), pairs.cend(), boundaries.begin() + (at - boundaries.begin()));
        i = runEnd;
    }
    return boundaries;
}

// The cluster holding index (0 <= index < size).
QVRange clusterAt(QStringView text, qsizetype index)
{
    const qsizetype start = graphemeAnchorAtOrBefore(text, index);
    const qsizetype end = graphemeAnchorAtOrAfter(text, index + 1);
    if (start == index && end == index + 1)
        return QVMakeRange(quint64(index), 1);
    const QList<qsizetype> boundaries = graphemeBoundaries(text.mid(start, end - start));
    const auto after = std::upper_bound(boundaries.cbegin(), boundaries.cend(), index - start);
    const qsizetype clusterStart = start + *(after - 1);
    const qsizetype clusterEnd = start + *after;
    return QVMakeRange(quint64(clusterStart), quint64(clusterEnd - clusterStart));
}

// ---------------------------------------------------------------------------
// Folding for case- and diacritic-insensitive search

struct FoldOptions
{
    bool caseInsensitive = false;
    bool diacriticInsensitive = false;
    bool decompose = false; // canonical decomposition, so that composed and decomposed forms compare equal
    bool turkic = false;
};

using FoldedUnits = QVarLengthArray<char32_t, 8>;

bool isTurkic(const std::optional<QLocale> &locale)
{
    return locale && (locale->language() == QLocale::Turkish || locale->language() == QLocale::Azerbaijani);
}

// Code points whose full upper-case mapping has more than one code point
// (ß, ŉ, ǰ, ΐ, ΰ, և, ẖ…ẚ, the Greek iota-subscript forms, the Latin and
// Armenian ligatures). Slightly generous: the mapping itself decides.
bool mayExpandInUpperCase(char32_t c)
{
    return c == 0xDF || c == 0x149 || c == 0x1F0 || c == 0x390 || c == 0x3B0 || c == 0x587
        || (c >= 0x1E96 && c <= 0x1E9E) || (c >= 0x1F50 && c <= 0x1FFF) || (c >= 0xFB00 && c <= 0xFB17);
}

void appendCodePoints(const QString &string, FoldedUnits &out)
{
    for (qsizetype i = 0; i < string.size();) {
        const CodePoint cp = codePointAt(string, i, string.size());
        out.append(cp.value);
        i += cp.size;
    }
}

// Full case folding of one code point.
void appendCaseFolded(char32_t c, bool turkic, FoldedUnits &out)
{
    if (c == 0x130) { // İ
        out.append(u'i');
        if (!turkic)
            out.append(0x307);
        return;
    }
    if (c == u'I') {
        out.append(turkic ? char32_t(0x131) : char32_t(u'i'));
        return;
    }
    if (c > 0x10FFFF || QChar::isSurrogate(c)) {
        out.append(c);
        return;
    }
    const char32_t folded = QChar::toCaseFolded(c);
    if (!mayExpandInUpperCase(folded)) {
        out.append(folded);
        return;
    }
    // Qt folds one code point to one; the multi-character folds (ß → ss) are
    // the lower case of the full upper-case mapping.
    FoldedUnits upper;
    appendCodePoints(QString::fromUcs4(&folded, 1).toUpper(), upper);
    if (upper.size() == 1) {
        out.append(folded);
        return;
    }
    for (char32_t u : upper)
        out.append(QChar::toCaseFolded(u));
}

void appendDecomposed(char32_t c, FoldedUnits &out)
{
    if (c < 0xC0 || c > 0x10FFFF || QChar::decompositionTag(c) != QChar::Canonical) {
        out.append(c);
        return;
    }
    const QString decomposition = QChar::decomposition(c);
    for (qsizetype i = 0; i < decomposition.size();) {
        const CodePoint cp = codePointAt(decomposition, i, decomposition.size());
        appendDecomposed(cp.value, out);
        i += cp.size;
    }
}

bool isDroppedMark(char32_t c)
{
    if (c < 0x300 || c > 0x10FFFF)
        return false;
    const QChar::Category category = QChar::category(c);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_Enclosing;
}

// Folds the code point at i into out; returns the code units consumed.
qsizetype foldAt(QStringView text, qsizetype i, qsizetype end, const FoldOptions &options, FoldedUnits &out)
{
    const char16_t unit = text[i].unicode();
    if (unit < 0x80) {
        if (!options.caseInsensitive || unit < u'A' || unit > u'Z') {
            out.append(unit);
            return 1;
        }
        if (unit == u'I' && options.turkic) {
            // Turkish: I with a combining dot above is the dotted small i.
            if (i + 1 < end && text[i + 1].unicode() == 0x307) {
                out.append(u'i');
                return 2;
            }
            out.append(0x131);
            return 1;
        }
        out.append(unit + (u'a' - u'A'));
        return 1;
    }
    const CodePoint cp = codePointAt(text, i, end);
    FoldedUnits cased;
    if (options.caseInsensitive)
        appendCaseFolded(cp.value, options.turkic, cased);
    else
        cased.append(cp.value);
    for (char32_t c : cased) {
        FoldedUnits decomposed;
        if (options.decompose)
            appendDecomposed(c, decomposed);
        else
            decomposed.append(c);
        for (char32_t d : decomposed) {
            if (!options.diacriticInsensitive || !isDroppedMark(d))
                out.append(d);
        }
    }
    return cp.size;
}

bool isCombining(char32_t c)
{
    return c >= 0x300 && c <= 0x10FFFF && QChar::combiningClass(c) > 0;
}

class FoldingMatcher
{
public:
    FoldingMatcher(QStringView text, qsizetype end, const QString &search, FoldOptions options, bool literal)
        : m_text(text)
        , m_end(end)
        , m_options(options)
        , m_literal(literal)
    {
        for (qsizetype i = 0; i < search.size();)
            i += foldAt(search, i, search.size(), options, m_search);
    }

    bool searchIsEmpty() const { return m_search.isEmpty(); }

    // The end of a match starting at p, or -1.
    qsizetype matchAt(qsizetype p) const
    {
        FoldedUnits units;
        p += foldAt(m_text, p, m_end, m_options, units);
        // A match never begins with a dropped mark, nor (comparing whole
        // characters) with a mark the search does not begin with.
        if (units.isEmpty() || units.front() != m_search.front())
            return -1;
        if (!m_literal && isCombining(units.front()) && !isCombining(m_search.front()))
            return -1;
        qsizetype matched = 0;
        for (;;) {
            if (units.size() > m_search.size() - matched)
                return -1; // the search ends inside this character's folding
            if (!std::equal(units.begin(), units.end(), m_search.begin() + matched))
                return -1;
            matched += units.size();
            if (matched == m_search.size())
                break;
            if (p >= m_end)
                return -1;
            units.clear();
            p += foldAt(m_text, p, m_end, m_options, units);
        }
        if (m_options.diacriticInsensitive) {
            // The marks ignored after the match belong to its last character.
            while (p < m_end) {
                units.clear();
                const qsizetype used = foldAt(m_text, p, m_end, m_options, units);
                if (!units.isEmpty())
                    break;
                p += used;
            }
        } else if (!m_literal && p < m_end && isCombining(codePointAt(m_text, p, m_end).value)) {
            return -1; // the text's character goes on with a mark the search lacks
        }
        return p;
    }

    // Folded length of the code point at p, for the anchored backwards bound.
    qsizetype foldedLength(qsizetype p) const
    {
        FoldedUnits units;
        foldAt(m_text, p, m_end, m_options, units);
        return units.size();
    }

    qsizetype searchLength() const { return m_search.size(); }

private:
    QStringView m_text;
    qsizetype m_end;
    FoldOptions m_options;
    bool m_literal;
    FoldedUnits m_search;
};

QVRange foldingSearch(QStringView text, const QString &search, QVStringCompareOptions options, qsizetype start,
                      qsizetype end, const std::optional<QLocale> &locale)
{
    const bool literal = options & QVLiteralSearch;
    FoldOptions fold;
    fold.caseInsensitive = options & QVCaseInsensitiveSearch;
    fold.diacriticInsensitive = options & QVDiacriticInsensitiveSearch;
    fold.decompose = !literal || fold.diacriticInsensitive;
    fold.turkic = fold.caseInsensitive && isTurkic(locale);
    const FoldingMatcher matcher(text, end, search, fold, literal);
    if (matcher.searchIsEmpty())
        return QVNotFoundRange(); // a search of marks only, all ignored
    const bool anchored = options & QVAnchoredSearch;

    if (!(options & QVBackwardsSearch)) {
        for (qsizetype p = start; p < end; p += codePointAt(text, p, end).size) {
            const qsizetype matchEnd = matcher.matchAt(p);
            if (matchEnd >= 0)
                return QVMakeRange(quint64(p), quint64(matchEnd - p));
            if (anchored)
                break;
        }
        return QVNotFoundRange();
    }

    qsizetype foldedSinceP = 0;
    for (qsizetype p = end; p > start;) {
        p -= codePointBefore(text, p, start).size;
        const qsizetype matchEnd = matcher.matchAt(p);
        if (matchEnd >= 0 && (!anchored || matchEnd == end))
            return QVMakeRange(quint64(p), quint64(matchEnd - p));
        if (anchored) {
            // A match from further back would fold to more than the search
            // before reaching the end (the margin covers two-unit foldings).
            foldedSinceP += matcher.foldedLength(p);
            if (foldedSinceP > matcher.searchLength() + 2)
                break;
        }
    }
    return QVNotFoundRange();
}

// ---------------------------------------------------------------------------
// Lines and paragraphs

bool isLineTerminator(char16_t unit, bool paragraphs)
{
    switch (unit) {
    case LF:
    case CR:
    case 0x85:
    case 0x2029:
        return true;
    case 0x2028:
        return !paragraphs;
    default:
        return false;
    }
}

// The start of the line holding position p: after the last terminator before
// it, where the LF of a CR LF belongs to the line the pair ends.
qsizetype lineStartAt(QStringView text, qsizetype p, bool paragraphs)
{
    while (p > 0) {
        const char16_t previous = text[p - 1].unicode();
        if (isLineTerminator(previous, paragraphs) && !(previous == CR && p < text.size() && text[p] == LF))
            return p;
        --p;
    }
    return 0;
}

// The end, terminator included, of the line holding position p.
qsizetype lineEndAt(QStringView text, qsizetype p, bool paragraphs)
{
    for (; p < text.size(); ++p) {
        const char16_t unit = text[p].unicode();
        if (isLineTerminator(unit, paragraphs))
            return (unit == CR && p + 1 < text.size() && text[p + 1] == LF) ? p + 2 : p + 1;
    }
    return text.size();
}

QVRange lineOrParagraphRange(const QString &text, QVRange range, bool paragraphs)
{
    const QVRange clipped = clippedRange(text.size(), range);
    const qsizetype location = qsizetype(clipped.location);
    const qsizetype start = lineStartAt(text, location, paragraphs);
    // A range that ends right after a terminator keeps to its own lines; only an
    // empty range stands on the line that begins where it is.
    const qsizetype last = clipped.length > 0 ? location + qsizetype(clipped.length) - 1 : location;
    const qsizetype end = lineEndAt(text, last, paragraphs);
    return QVMakeRange(quint64(start), quint64(end - start));
}

// ---------------------------------------------------------------------------
// Substring enumeration

struct Item
{
    qsizetype start;
    qsizetype end;
    qsizetype enclosingStart;
    qsizetype enclosingEnd;
};

// Returns false to stop.
using ItemSink = std::function<bool(const Item &)>;

void enumerateLines(QStringView text, qsizetype start, qsizetype end, bool paragraphs, const ItemSink &sink)
{
    qsizetype p = start;
    while (p < end) {
        qsizetype j = p;
        while (j < end && !isLineTerminator(text[j].unicode(), paragraphs))
            ++j;
        qsizetype next = j;
        if (j < end)
            next = (text[j] == CR && j + 1 < end && text[j + 1] == LF) ? j + 2 : j + 1;
        if (!sink(Item {p, j, p, next}))
            return;
        p = next;
    }
}

void enumerateComposedCharacters(QStringView text, qsizetype start, qsizetype end, bool reverse, const ItemSink &sink)
{
    const qsizetype windowStart = graphemeAnchorAtOrBefore(text, start);
    const qsizetype windowEnd = graphemeAnchorAtOrAfter(text, end);
    const QList<qsizetype> boundaries = graphemeBoundaries(text.mid(windowStart, windowEnd - windowStart));
    auto report = [&](qsizetype i) {
        // Characters that straddle the range's edges are cut to it.
        const qsizetype a = std::max(boundaries[i] + windowStart, start);
        const qsizetype b = std::min(boundaries[i + 1] + windowStart, end);
        return a >= b || sink(Item {a, b, a, b});
    };
    const qsizetype count = boundaries.size() - 1;
    if (!reverse) {
        for (qsizetype i = 0; i < count; ++i) {
            if (!report(i))
                return;
        }
    } else {
        for (qsizetype i = count - 1; i >= 0; --i) {
            if (!report(i))
                return;
        }
    }
}

bool isWordCharacter(char32_t c)
{
    if (c < 0x80)
        return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
    return QVUnicode::isLetterOrMark(c) || QVUnicode::isNumber(c);
}

bool isWhiteOrNewline(char32_t c)
{
    static const QVCharacterSet whiteOrNewline = QVCharacterSet::whitespaceAndNewlineCharacterSet();
    return whiteOrNewline.characterIsMember(c);
}

// Words and sentences: segments from QTextBoundaryFinder over whole lines
// around the range (no word or sentence rule looks across a line break),
// keeping the segments that hold a word character (words) or anything but
// white space (sentences). Each item's enclosing range runs on to the next
// item, or to the end of the range; filler before the first item belongs to
// no item.
void enumerateSegments(QStringView text, qsizetype start, qsizetype end, bool sentences, const ItemSink &sink)
{
    auto isContextBreak = [&](qsizetype p) {
        if (p <= 0 || p >= text.size())
            return true;
        const char16_t previous = text[p - 1].unicode();
        return isLineTerminator(previous, false) && !(previous == CR && text[p] == LF);
    };
    qsizetype windowStart = start;
    while (!isContextBreak(windowStart))
        --windowStart;
    qsizetype windowEnd = end;
    while (!isContextBreak(windowEnd))
        ++windowEnd;

    QTextBoundaryFinder finder(sentences ? QTextBoundaryFinder::Sentence : QTextBoundaryFinder::Word,
                               text.mid(windowStart, windowEnd - windowStart));
    finder.setPosition(start - windowStart);
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();

    std::optional<Item> pending;
    qsizetype a = finder.position() + windowStart;
    while (a < end) {
        const qsizetype next = finder.toNextBoundary();
        if (next < 0)
            break;
        const qsizetype b = next + windowStart;
        const qsizetype segmentStart = std::max(a, start);
        const qsizetype segmentEnd = std::min(b, end);
        a = b;
        bool keep = false;
        qsizetype contentEnd = segmentEnd;
        if (sentences) {
            while (contentEnd > segmentStart) {
                const CodePoint cp = codePointBefore(text, contentEnd, segmentStart);
                if (!isWhiteOrNewline(cp.value))
                    break;
                contentEnd -= cp.size;
            }
            keep = contentEnd > segmentStart;
        } else {
            for (qsizetype i = segmentStart; i < segmentEnd && !keep;) {
                const CodePoint cp = codePointAt(text, i, segmentEnd);
                keep = isWordCharacter(cp.value);
                i += cp.size;
            }
        }
        if (!keep)
            continue;
        if (pending) {
            pending->enclosingEnd = segmentStart;
            if (!sink(*pending))
                return;
        }
        pending = Item {segmentStart, contentEnd, segmentStart, end};
    }
    if (pending)
        sink(*pending);
}

} // namespace

namespace QVString {

QVRange fullRange(const QString &text)
{
    return QVMakeRange(0, quint64(text.size()));
}

QVRange rangeOfComposedCharacterSequenceAtIndex(const QString &text, quint64 index)
{
    if (index >= quint64(text.size()))
        return QVMakeRange(quint64(text.size()), 0);
    return clusterAt(text, qsizetype(index));
}

QVRange rangeOfComposedCharacterSequencesForRange(const QString &text, QVRange range)
{
    const qsizetype size = text.size();
    if (range.location >= quint64(size))
        return QVMakeRange(quint64(size), 0);
    const QVRange clipped = clippedRange(size, range);
    const qsizetype location = qsizetype(clipped.location);
    const qsizetype end = location + qsizetype(clipped.length);
    const qsizetype start = qsizetype(clusterAt(text, location).location);
    // Both edges widen: an empty range inside a character covers that character.
    qsizetype widenedEnd = size;
    if (end < size) {
        const QVRange atEnd = clusterAt(text, end);
        widenedEnd = qsizetype(atEnd.location) == end ? end : qsizetype(QVMaxRange(atEnd));
    }
    return QVMakeRange(quint64(start), quint64(widenedEnd - start));
}

// Plain searches compare code units even without QVLiteralSearch: searching a
// large text repeatedly must cost no more than QStringView::indexOf, and
// normalising the text for every call would not. Canonical equivalence is
// applied where the text is folded anyway (case or diacritic insensitivity).
QVRange rangeOfString(const QString &text, const QString &search, QVStringCompareOptions options, QVRange range,
                      const std::optional<QLocale> &locale)
{
    if (text.isEmpty() || search.isEmpty() || !rangeLiesInside(text.size(), range))
        return QVNotFoundRange();
    const qsizetype start = qsizetype(range.location);
    const qsizetype end = start + qsizetype(range.length);
    const bool backwards = options & QVBackwardsSearch;
    const bool anchored = options & QVAnchoredSearch;

    if (!(options & (QVCaseInsensitiveSearch | QVDiacriticInsensitiveSearch))) {
        const QStringView haystack = QStringView(text).mid(start, end - start);
        const qsizetype size = search.size();
        qsizetype found = -1;
        if (anchored && backwards)
            found = haystack.endsWith(search) ? haystack.size() - size : -1;
        else if (anchored)
            found = haystack.startsWith(search) ? 0 : -1;
        else if (backwards)
            // An explicit start: Qt 6.4's default one lets a one-unit needle
            // match past the end of a view that ends before its string does.
            found = size > haystack.size() ? -1 : haystack.lastIndexOf(search, haystack.size() - size);
        else
            found = haystack.indexOf(search);
        return found < 0 ? QVNotFoundRange() : QVMakeRange(quint64(start + found), quint64(size));
    }
    return foldingSearch(text, search, options, start, end, locale);
}

QVRange rangeOfString(const QString &text, const QString &search, QVStringCompareOptions options)
{
    return rangeOfString(text, search, options, fullRange(text), std::nullopt);
}

QVRange rangeOfCharacterFromSet(const QString &text, const QVCharacterSet &set, QVStringCompareOptions options,
                                QVRange range)
{
    if (text.isEmpty() || !rangeLiesInside(text.size(), range))
        return QVNotFoundRange();
    const qsizetype start = qsizetype(range.location);
    const qsizetype end = start + qsizetype(range.length);
    const bool anchored = options & QVAnchoredSearch;
    if (!(options & QVBackwardsSearch)) {
        for (qsizetype i = start; i < end;) {
            const CodePoint cp = codePointAt(text, i, end);
            if (set.characterIsMember(cp.value))
                return QVMakeRange(quint64(i), quint64(cp.size));
            if (anchored)
                break;
            i += cp.size;
        }
    } else {
        for (qsizetype i = end; i > start;) {
            const CodePoint cp = codePointBefore(text, i, start);
            i -= cp.size;
            if (set.characterIsMember(cp.value))
                return QVMakeRange(quint64(i), quint64(cp.size));
            if (anchored)
                break;
        }
    }
    return QVNotFoundRange();
}

QVRange rangeOfCharacterFromSet(const QString &text, const QVCharacterSet &set, QVStringCompareOptions options)
{
    return rangeOfCharacterFromSet(text, set, options, fullRange(text));
}

// Items straddling the range's edges are cut to it, so that nothing outside the
// range is reported while the boundaries inside it stay those of the whole
// text. QVStringEnumerationLocalized has no effect: QTextBoundaryFinder applies
// the same Unicode rules in every locale.
void enumerateSubstringsInRange(const QString &text, QVRange range, QVStringEnumerationOptions options,
                                const QVSubstringBlock &block)
{
    if (!block)
        return;
    const QVRange clipped = clippedRange(text.size(), range);
    const qsizetype start = qsizetype(clipped.location);
    const qsizetype end = start + qsizetype(clipped.length);
    if (start >= end)
        return;
    const bool reverse = options & QVStringEnumerationReverse;
    const bool substringRequired = !(options & QVStringEnumerationSubstringNotRequired);

    auto call = [&](const Item &item) {
        bool stop = false;
        block(substringRequired ? text.mid(item.start, item.end - item.start) : QString(),
              QVMakeRange(quint64(item.start), quint64(item.end - item.start)),
              QVMakeRange(quint64(item.enclosingStart), quint64(item.enclosingEnd - item.enclosingStart)), &stop);
        return !stop;
    };

    const quint64 kind = options & 0xFF;
    if (kind == QVStringEnumerationByComposedCharacterSequences) {
        enumerateComposedCharacters(text, start, end, reverse, call);
        return;
    }

    std::vector<Item> collected;
    const ItemSink forward = reverse ? ItemSink([&collected](const Item &item) {
        collected.push_back(item);
        return true;
    })
                                     : ItemSink(call);
    switch (kind) {
    case QVStringEnumerationByLines:
    case QVStringEnumerationByParagraphs:
        enumerateLines(text, start, end, kind == QVStringEnumerationByParagraphs, forward);
        break;
    case QVStringEnumerationByWords:
    case QVStringEnumerationBySentences:
        enumerateSegments(text, start, end, kind == QVStringEnumerationBySentences, forward);
        break;
    default:
        return; // kinds beyond sentences yield nothing, as an empty text would
    }
    for (auto it = collected.rbegin(); it != collected.rend(); ++it) {
        if (!call(*it))
            return;
    }
}

// Out-of-text ranges are clipped, so the answer is always a range of the text.
QVRange lineRangeForRange(const QString &text, QVRange range)
{
    return lineOrParagraphRange(text, range, false);
}

QVRange paragraphRangeForRange(const QString &text, QVRange range)
{
    return lineOrParagraphRange(text, range, true);
}

namespace {

// Turkish and Azerbaijani case the i's themselves; ICU (through QLocale) does
// too, but these pairs must not depend on how Qt was built.
QString turkicUpper(const QString &text)
{
    QString mapped = text;
    for (QChar &c : mapped) {
        if (c == u'i')
            c = QChar(0x130);
    }
    return QLocale::c().toUpper(mapped);
}

QString turkicLower(const QString &text)
{
    QString mapped;
    mapped.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'I') {
            if (i + 1 < text.size() && text[i + 1].unicode() == 0x307) {
                mapped.append(u'i');
                ++i;
            } else {
                mapped.append(QChar(0x131));
            }
        } else if (c.unicode() == 0x130) {
            mapped.append(u'i');
        } else {
            mapped.append(c);
        }
    }
    return QLocale::c().toLower(mapped);
}

QString titleCased(char32_t c, const std::optional<QLocale> &locale)
{
    if (c == u'i' && isTurkic(locale))
        return QString(QChar(0x130));
    if (c == 0x149) // ŉ: the apostrophe stays, the n is capital
        return u"\u02BCN"_s;
    const char32_t title = QChar::toTitleCase(c);
    const QString single = QString::fromUcs4(&c, 1);
    if (title != c || !mayExpandInUpperCase(c))
        return QString::fromUcs4(&title, 1);
    // ß → Ss, ﬁ → Fi: the first letter of the full upper case, then lower case.
    const QString upper = single.toUpper();
    const qsizetype firstSize = codePointAt(upper, 0, upper.size()).size;
    return upper.left(firstSize) + upper.mid(firstSize).toLower();
}

} // namespace

QString uppercaseString(const QString &text, const std::optional<QLocale> &locale)
{
    if (isTurkic(locale))
        return turkicUpper(text);
    // The C locale maps through ICU in one linear pass with the root rules;
    // QString::toUpper rebuilds the string at every letter that grows (ß, ﬀ),
    // which turns long texts quadratic.
    return locale ? locale->toUpper(text) : QLocale::c().toUpper(text);
}

QString lowercaseString(const QString &text, const std::optional<QLocale> &locale)
{
    if (isTurkic(locale))
        return turkicLower(text);
    return locale ? locale->toLower(text) : QLocale::c().toLower(text);
}

// Words are those of the word enumeration; the text between them is kept as it is.
QString capitalizedString(const QString &text, const std::optional<QLocale> &locale)
{
    if (text.isEmpty())
        return text;
    QString result;
    result.reserve(text.size());
    qsizetype copied = 0;
    enumerateSegments(text, 0, text.size(), false, [&](const Item &word) {
        result.append(QStringView(text).mid(copied, word.start - copied));
        const CodePoint first = codePointAt(text, word.start, word.end);
        result.append(titleCased(first.value, locale));
        result.append(lowercaseString(text.mid(word.start + first.size, word.end - word.start - first.size), locale));
        copied = word.end;
        return true;
    });
    result.append(QStringView(text).mid(copied));
    return result;
}

} // namespace QVString

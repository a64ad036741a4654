#include <QVKit/Text/QVStringCharacterBased.h>

#include <QVKit/Platform/QVAssert.h>
#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVStringPlatform.h>
#include <QVKit/Text/QVStringStatistics.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// Padding is built in memory before it is added; a wanted count that would
// need more code units than this is a caller's mistake, not a request to fill
// the machine's memory.
constexpr quint64 largestPadding = quint64(1) << 30;

quint64 textLength(const QString &text)
{
    return quint64(text.length());
}

// True when range lies within text; written so that no sum can wrap.
bool rangeFitsText(const QString &text, QVRange range)
{
    const quint64 length = textLength(text);
    return range.location != QVNotFound && range.location <= length && range.length <= length - range.location;
}

void assertStringDirection(QVStringDirection direction)
{
    const bool isDirectionStart = direction == QVStringDirectionStart;
    const bool isDirectionEnd = direction == QVStringDirectionEnd;
    QV_ASSERT_TEXT(isDirectionStart || isDirectionEnd, "isDirectionStart || isDirectionEnd");
}

// The range of the last count characters of text; {length, 0} for a count of 0.
QVRange rangeOfLastCharacters(const QString &text, quint64 count)
{
    const quint64 length = textLength(text);
    if (count == 0)
        return QVMakeRange(length, 0);
    quint64 seen = 0;
    quint64 start = length;
    QVString::enumerateSubstringsInRange(
        text, QVString::fullRange(text),
        QVStringEnumerationByComposedCharacterSequences | QVStringEnumerationReverse
            | QVStringEnumerationSubstringNotRequired,
        [&](const QString &, QVRange characterRange, QVRange, bool *stop) {
            start = characterRange.location;
            if (++seen == count)
                *stop = true;
        });
    return QVMakeRange(start, length - start);
}

quint64 magnitude(qint64 value)
{
    // Written so that the most negative value does not overflow.
    return value < 0 ? quint64(-(value + 1)) + 1 : quint64(value);
}

} // namespace

namespace QVString {

QVRange extendRangeInDirection(const QString &text, QVRange range, quint64 characterCount,
                               QVCharacterDirection direction)
{
    const bool isDirectionLeft = direction == QVCharacterDirectionLeft;
    const bool isDirectionRight = direction == QVCharacterDirectionRight;
    QV_ASSERT_TEXT(isDirectionLeft || isDirectionRight, "isDirectionLeft || isDirectionRight");

    if (!rangeFitsText(text, range))
        return QVNotFoundRange();

    const quint64 length = textLength(text);
    const quint64 maximum = QVMaxRange(range);
    // No string has more characters than code units: the count reaches the edge.
    if (characterCount >= length)
        return isDirectionLeft ? QVMakeRange(0, maximum) : QVMakeRange(range.location, length - range.location);

    const quint64 before = characterCountInRange(text, range);

    // First guess: one code unit per character, which is right for plain text.
    QVRange extended = range;
    if (isDirectionLeft) {
        const quint64 step = std::min(characterCount, range.location);
        extended = QVMakeRange(range.location - step, range.length + step);
        // The moved edge may have landed inside a character (a surrogate pair,
        // a letter with its marks); take that character whole so the count
        // below never counts a part of one.
        if (step > 0) {
            const quint64 start = rangeOfComposedCharacterSequenceAtIndex(text, extended.location).location;
            extended = QVMakeRange(start, maximum - start);
        }
    } else {
        const quint64 step = std::min(length - maximum, characterCount);
        extended.length += step;
        if (step > 0) {
            const QVRange last = rangeOfComposedCharacterSequenceAtIndex(text, QVMaxRange(extended) - 1);
            extended.length = QVMaxRange(last) - extended.location;
        }
    }

    const quint64 wanted = before + characterCount;
    const quint64 reached = characterCountInRange(text, extended);
    if (reached >= wanted)
        return extended;

    // Wide characters used up the code units: step outwards one whole
    // character at a time for the characters still missing.
    for (quint64 missing = wanted - reached; missing > 0; --missing) {
        if (isDirectionLeft) {
            if (extended.location == 0)
                break;
            const quint64 start = rangeOfComposedCharacterSequenceAtIndex(text, extended.location - 1).location;
            extended = QVMakeRange(start, QVMaxRange(extended) - start);
        } else {
            if (QVMaxRange(extended) >= length)
                break;
            const QVRange next = rangeOfComposedCharacterSequenceAtIndex(text, QVMaxRange(extended));
            extended.length = QVMaxRange(next) - extended.location;
        }
    }
    return extended;
}

QVRange extendRangeLeft(const QString &text, QVRange range, quint64 characterCount)
{
    return extendRangeInDirection(text, range, characterCount, QVCharacterDirectionLeft);
}

QVRange extendRangeRight(const QString &text, QVRange range, quint64 characterCount)
{
    return extendRangeInDirection(text, range, characterCount, QVCharacterDirectionRight);
}

QVRange extendRange(const QString &text, QVRange range, quint64 characterCount)
{
    // A range that does not fit stays {QVNotFound, 0} through both steps.
    return extendRangeRight(text, extendRangeLeft(text, range, characterCount), characterCount);
}

static QString substringOrNull(const QString &text, QVRange range)
{
    if (range.location == QVNotFound)
        return QString();
    // An empty range is still a range: its substring is empty, not null.
    const QString substring = text.mid(qsizetype(range.location), qsizetype(range.length));
    return substring.isNull() ? u""_s : substring;
}

QString extendSubstringAtRangeLeft(const QString &text, QVRange range, quint64 characterCount)
{
    return substringOrNull(text, extendRangeLeft(text, range, characterCount));
}

QString extendSubstringAtRangeRight(const QString &text, QVRange range, quint64 characterCount)
{
    return substringOrNull(text, extendRangeRight(text, range, characterCount));
}

QVRange characterRangeBeforeRange(const QString &text, QVRange range)
{
    if (!rangeFitsText(text, range) || range.location == 0)
        return QVNotFoundRange();
    return rangeOfComposedCharacterSequenceAtIndex(text, range.location - 1);
}

QVRange characterRangeAfterRange(const QString &text, QVRange range)
{
    if (!rangeFitsText(text, range) || QVMaxRange(range) >= textLength(text))
        return QVNotFoundRange();
    return rangeOfComposedCharacterSequenceAtIndex(text, QVMaxRange(range));
}

QString characterSubstringBeforeRange(const QString &text, QVRange range)
{
    return substringOrNull(text, characterRangeBeforeRange(text, range));
}

QString characterSubstringAfterRange(const QString &text, QVRange range)
{
    return substringOrNull(text, characterRangeAfterRange(text, range));
}

QVRange firstCharacterRange(const QString &text)
{
    if (text.isEmpty())
        return QVNotFoundRange();
    return rangeOfComposedCharacterSequenceAtIndex(text, 0);
}

QVRange lastCharacterRange(const QString &text)
{
    if (text.isEmpty())
        return QVNotFoundRange();
    return rangeOfComposedCharacterSequenceAtIndex(text, textLength(text) - 1);
}

QString firstCharacter(const QString &text)
{
    return substringOrNull(text, firstCharacterRange(text));
}

QString lastCharacter(const QString &text)
{
    return substringOrNull(text, lastCharacterRange(text));
}

QVRange rangeWithCharacterCount(const QString &text, quint64 characterCount, QVRange range)
{
    const quint64 length = textLength(text);
    if (range.location == QVNotFound || range.location > length)
        return QVNotFoundRange();
    if (characterCount == 0)
        return QVMakeRange(range.location, 0);

    // A range reaching past the end counts the characters up to the end.
    const QVRange searched = QVMakeRange(range.location, std::min(range.length, length - range.location));
    quint64 seen = 0;
    quint64 end = range.location;
    enumerateSubstringsInRange(text, searched,
                               QVStringEnumerationByComposedCharacterSequences
                                   | QVStringEnumerationSubstringNotRequired,
                               [&](const QString &, QVRange characterRange, QVRange, bool *stop) {
                                   end = QVMaxRange(characterRange);
                                   if (++seen == characterCount)
                                       *stop = true;
                               });
    return QVMakeRange(range.location, end - range.location);
}

void padToCharacterCount(QString &text, quint64 characterCount, const QString &padString,
                         QVStringDirection direction)
{
    assertStringDirection(direction);
    if (padString.isEmpty())
        return;
    const quint64 current = QVString::characterCount(text);
    if (current >= characterCount)
        return;

    const quint64 missing = characterCount - current;
    const quint64 padCharacters = QVString::characterCount(padString);
    // Deliberately (missing mod 2) + missing / p repeats rather than a
    // rounded-up quotient: a pad string of several characters can leave the
    // text short of the wanted count, as callers of this family expect.
    const quint64 repeats = std::max<quint64>(1, missing % 2 + missing / padCharacters);
    if (repeats > largestPadding / textLength(padString)) {
        QVLog("%s: padding to %llu characters needs more memory than a string may take. Fix this.",
              "QVString::padToCharacterCount", characterCount);
        return;
    }

    QString padding = padString.repeated(qsizetype(repeats));
    // A surplus goes from the start of the padding: truncating towards the
    // end keeps its last characters.
    truncateToCharacterCount(padding, missing, QString(), QVStringDirectionEnd);
    if (direction == QVStringDirectionStart)
        text.prepend(padding);
    else
        text.append(padding);
}

QString stringByPaddingToCharacterCount(const QString &text, quint64 characterCount, const QString &padString,
                                        QVStringDirection direction)
{
    QString copy = text;
    padToCharacterCount(copy, characterCount, padString, direction);
    return copy;
}

void truncateToCharacterCount(QString &text, quint64 characterCount, const QString &truncationString,
                              QVStringDirection direction)
{
    assertStringDirection(direction);
    const quint64 current = QVString::characterCount(text);
    const quint64 truncationCharacters = QVString::characterCount(truncationString);
    if (current <= characterCount || truncationCharacters >= current)
        return;

    // A truncation string with more characters than wanted (but fewer than
    // the text) replaces the whole text: the result is as short as this
    // operation can make it while still marking the cut.
    const quint64 keep = characterCount > truncationCharacters ? characterCount - truncationCharacters : 0;
    if (direction == QVStringDirectionStart) {
        const QVRange kept = rangeWithCharacterCount(text, keep, fullRange(text));
        text.truncate(qsizetype(kept.length));
        text.append(truncationString);
    } else {
        const QVRange kept = rangeOfLastCharacters(text, keep);
        text.remove(0, qsizetype(kept.location));
        text.prepend(truncationString);
    }
}

QString stringByTruncatingToCharacterCount(const QString &text, quint64 characterCount,
                                           const QString &truncationString, QVStringDirection direction)
{
    QString copy = text;
    truncateToCharacterCount(copy, characterCount, truncationString, direction);
    return copy;
}

void padOrTruncateToCharacterCount(QString &text, quint64 characterCount, const QString &padString,
                                   QVStringDirection padDirection, const QString &truncationString,
                                   QVStringDirection truncationDirection)
{
    // Both directions are checked whichever way the text goes, so a wrong
    // one is caught on the first call rather than on the first long text.
    assertStringDirection(padDirection);
    assertStringDirection(truncationDirection);
    const quint64 current = QVString::characterCount(text);
    if (current < characterCount)
        padToCharacterCount(text, characterCount, padString, padDirection);
    else if (current > characterCount)
        truncateToCharacterCount(text, characterCount, truncationString, truncationDirection);
}

QString stringByPaddingOrTruncatingToCharacterCount(const QString &text, quint64 characterCount,
                                                    const QString &padString, QVStringDirection padDirection,
                                                    const QString &truncationString,
                                                    QVStringDirection truncationDirection)
{
    QString copy = text;
    padOrTruncateToCharacterCount(copy, characterCount, padString, padDirection, truncationString,
                                  truncationDirection);
    return copy;
}

void insertString(QString &text, const QString &separator, qint64 everyNthCharacter, QVRange range)
{
    const quint64 length = textLength(text);
    const quint64 every = magnitude(everyNthCharacter);
    if (separator.isEmpty() || every == 0 || every >= length)
        return;
    if (range.location == QVNotFound || range.location > length)
        return;
    range.length = std::min(range.length, length - range.location);
    if (range.length < 2)
        return;

    // Collect the characters first: the text changes under the walk.
    QVRangeList characters;
    enumerateSubstringsInRange(
        text, range, QVStringEnumerationByComposedCharacterSequences | QVStringEnumerationSubstringNotRequired,
        [&](const QString &, QVRange characterRange, QVRange, bool *) { characters.append(characterRange); });

    quint64 counted = 0;
    if (everyNthCharacter > 0) {
        qsizetype inserted = 0;
        for (const QVRange &character : std::as_const(characters)) {
            if (++counted < every)
                continue;
            counted = 0;
            // Comparing unshifted positions is the same as comparing the
            // insertion point with the end of the range grown by the
            // separators inserted so far.
            if (QVMaxRange(character) == QVMaxRange(range))
                continue;
            text.insert(qsizetype(QVMaxRange(character)) + inserted * separator.length(), separator);
            ++inserted;
        }
    } else {
        // From the end: each insertion lies before everything still to be
        // walked, so no position needs shifting.
        for (qsizetype index = characters.size() - 1; index >= 0; --index) {
            if (++counted < every)
                continue;
            counted = 0;
            if (index == 0)
                continue;
            text.insert(qsizetype(characters.at(index).location), separator);
        }
    }
}

void insertString(QString &text, const QString &separator, qint64 everyNthCharacter)
{
    insertString(text, separator, everyNthCharacter, fullRange(text));
}

} // namespace QVString

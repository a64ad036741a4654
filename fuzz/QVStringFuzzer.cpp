// Drives arbitrary UTF-16 (lone surrogates included), ranges and options through
// the search, edge and editing operations of the string engine. Nothing may
// crash, and no assertion may fire: the inputs avoid only the documented
// programming errors (unknown edges and directions, odd pair lists, ranges past
// the end where a range test requires them inside).

#include <QVKit/Platform/QVStringPlatform.h>
#include <QVKit/Text/QVMutableStringAdditions.h>
#include <QVKit/Text/QVRangeFunctions.h>
#include <QVKit/Text/QVStringAdditions.h>
#include <QVKit/Text/QVStringCharacterBased.h>
#include <QVKit/Text/QVStringStatistics.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// Reads the fuzzer's bytes front to back; running out yields zeros.
class Input
{
public:
    Input(const uint8_t *data, size_t size) : m_data(data), m_size(size) {}

    quint64 number(quint64 bound)
    {
        quint64 value = 0;
        for (int i = 0; i < 4; ++i)
            value = (value << 8) | byte();
        return bound ? value % bound : value;
    }
    uint8_t byte() { return m_offset < m_size ? m_data[m_offset++] : 0; }
    bool flag() { return byte() & 1; }

    QString text(qsizetype maxUnits)
    {
        const qsizetype units = qsizetype(number(quint64(maxUnits) + 1));
        QString result;
        result.reserve(units);
        for (qsizetype i = 0; i < units && m_offset + 1 < m_size; ++i) {
            // A small alphabet now and then, so that searches find something.
            const char16_t unit = char16_t(byte() | (byte() << 8));
            result.append(QChar(unit % 7 == 0 ? char16_t(u'a' + unit % 3) : unit));
        }
        return result;
    }

    QVRange range(quint64 length)
    {
        switch (byte() % 4) {
        case 0:
            return QVNotFoundRange();
        case 1: {
            const quint64 location = number(length + 1);
            return QVMakeRange(location, number(length - location + 1));
        }
        case 2:
            return QVMakeRange(number(length + 8), number(length + 8));
        default:
            return QVMakeRange(number(0), number(0));
        }
    }

    QVStringCompareOptions compareOptions()
    {
        static constexpr quint64 bits[] = {QVCaseInsensitiveSearch, QVLiteralSearch, QVBackwardsSearch,
                                           QVAnchoredSearch, QVDiacriticInsensitiveSearch};
        QVStringCompareOptions options = 0;
        const uint8_t choice = byte();
        for (size_t i = 0; i < std::size(bits); ++i) {
            if (choice & (1u << i))
                options |= bits[i];
        }
        return options;
    }

private:
    const uint8_t *m_data;
    size_t m_size;
    size_t m_offset = 0;
};

// A range inside the text, as the range tests require.
QVRange insideRange(Input &input, const QString &text)
{
    const quint64 length = quint64(text.size());
    const quint64 location = input.number(length + 1);
    return QVMakeRange(location, input.number(length - location + 1));
}

void check(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Input input(data, size);
    const QString text = input.text(256);
    const QString search = input.text(8);
    const QString other = input.text(8);
    const quint64 length = quint64(text.size());
    const QVStringCompareOptions options = input.compareOptions();
    const QVRange range = input.range(length);

    // Search: every found range lies inside the text.
    const QVRange found = QVString::rangeOfString(text, search, options, range);
    check(found.location == QVNotFound || QVMaxRange(found) <= length);
    if (const QVOptionalRangeList all = QVString::rangesOfString(text, search, options, range)) {
        for (const QVRange &match : *all)
            check(QVMaxRange(match) <= length);
    }
    QVString::greedyRangeOfString(text, search, options, range);
    QVString::countOfString(text, search, options, range);
    QVString::rangesBetweenString(text, search, other, input.flag(), input.byte() & 0x1C, options, range);
    QVString::fullRangesOfCharacterFromSet(text, QVCharacterSet::characterSetWithCharactersInString(search),
                                           options, range);
    QVString::rangeOfComposedCharacterSequencesForRange(text, range);
    QVString::ensureComposedCharacterRanges(text, {range, input.range(length)});
    QVString::rangeWithCharacterCount(text, input.number(16), range);
    QVString::enumerateSubstringsInRange(text, range, input.byte() % 5 | (input.flag() ? QVStringEnumerationReverse : 0),
                                         [](const QString &, QVRange, QVRange, bool *) {});

    // Edges, with every option bit.
    const QVStringEdgeOptions edgeOptions = input.byte() & 0xF;
    QVString::rangeOfPrefix(text, search, edgeOptions);
    QVString::rangeOfSuffix(text, search, edgeOptions);
    QVString::stringByStrippingPrefix(text, search, edgeOptions);
    QVString::stringByStrippingSuffix(text, search, edgeOptions);
    QVString::stringByTrimmingString(text);

    // Range tests need a range inside the text.
    const QVRange inside = insideRange(input, text);
    QVString::isRangeDelimitedByString(text, inside, search, options);
    QVString::rangeAfterRange(text, range);
    QVString::extendRange(text, range, input.number(8));
    QVString::characterRangeBeforeRange(text, range);
    QVString::characterRangeAfterRange(text, range);

    // Editing: the results stay well-formed lengths, and nothing crashes.
    const quint64 count = input.number(64);
    const auto direction = QVStringDirection(input.byte() % 2);
    QVString::stringByPaddingToCharacterCount(text, count, search, direction);
    QVString::stringByTruncatingToCharacterCount(text, count, search, direction);
    QString edited = text;
    QVString::insertString(edited, search, qint64(input.number(16)) - 8, range);
    QVString::replaceStringPairs(edited, {search, other}, options, QVString::fullRange(edited));
    QVString::replaceOccurrencesBetweenString(edited, search, other, search, input.flag(), 0, options);
    QVString::trimString(edited);
    QVString::condenseMultipleSpaces(edited);

    QVRangeSanitize({range, found, inside});
    QVRangeSubtract(QVRangeList{inside}, QVRangeList{found});
    return 0;
}

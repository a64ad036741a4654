#include "QVStringStatistics.h"

#include <QVKit/Platform/QVStringPlatform.h>

namespace QVString {

quint64 characterCount(const QString &text)
{
    return characterCountInRange(text, fullRange(text));
}

quint64 characterCountInRange(const QString &text, QVRange range)
{
    const quint64 length = quint64(text.size());
    if (range.location > length)
        return 0;
    // Clip instead of refusing: a count over a range that runs past the end
    // is the count of what is there.
    range.length = qMin(range.length, length - range.location);
    if (range.length == 0)
        return 0;
    // A range that cuts a character counts that character once, whole.
    range = rangeOfComposedCharacterSequencesForRange(text, range);
    quint64 count = 0;
    enumerateSubstringsInRange(
        text, range, QVStringEnumerationByComposedCharacterSequences | QVStringEnumerationSubstringNotRequired,
        [&count](const QString &, QVRange, QVRange, bool *) { ++count; });
    return count;
}

} // namespace QVString

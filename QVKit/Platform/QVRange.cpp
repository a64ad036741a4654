#include "QVKit/Platform/QVRange.h"

#include <QtCore/QStringList>

using namespace Qt::StringLiterals;

QString QVRangeToString(QVRange range)
{
    return u"{%1, %2}"_s.arg(range.location).arg(range.length);
}

QVRange QVRangeFromString(QStringView text)
{
    quint64 numbers[2] = {0, 0};
    int found = 0;
    qsizetype i = 0;
    while (i < text.size() && found < 2) {
        if (!text[i].isDigit() || text[i].unicode() > 0x7F) {
            ++i;
            continue;
        }
        quint64 value = 0;
        while (i < text.size() && text[i].unicode() >= u'0' && text[i].unicode() <= u'9') {
            const quint64 digit = text[i].unicode() - u'0';
            // Saturate rather than wrap: an oversized number reads as the largest one.
            value = value > (std::numeric_limits<quint64>::max() - digit) / 10
                        ? std::numeric_limits<quint64>::max()
                        : value * 10 + digit;
            ++i;
        }
        numbers[found++] = value;
    }
    return QVRange{numbers[0], numbers[1]};
}

QString QVRangeListToString(const QVOptionalRangeList &ranges)
{
    if (!ranges)
        return u"(null)"_s;
    QStringList parts;
    parts.reserve(ranges->size());
    for (const QVRange &range : *ranges)
        parts.append(QVRangeToString(range));
    return u'(' + parts.join(u", "_s) + u')';
}

QDebug operator<<(QDebug debug, QVRange range)
{
    QDebugStateSaver saver(debug);
    debug.nospace().noquote() << "QVRange" << QVRangeToString(range);
    return debug;
}

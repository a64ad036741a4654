#include "QVRandom.h"

#include <QVKit/Platform/QVLog.h>
#include <QVKit/Platform/QVStringPlatform.h>

#include <QtCore/QRandomGenerator>
#include <QtCore/QStringDecoder>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

using namespace Qt::StringLiterals;

namespace {

// The largest bound the 32-bit draw accepts is 2^32 - 1, so n + 1 fits for n up to 2^32 - 2.
constexpr quint64 largestExactUpperBound = 4294967294ULL;
constexpr quint32 doubleSteps = 4294967295U;

QRandomGenerator *generator()
{
    return QRandomGenerator::system();
}

} // namespace

quint64 QVRandom::unsignedIntegerUpTo(quint64 n)
{
    if (n == 0)
        return 0;
    if (n <= largestExactUpperBound)
        return generator()->bounded(quint32(n + 1)); // Lemire's method: no modulo bias
    // doubleValue() < 1, so the product stays below 2^64 even for n = 2^64 - 1 and the
    // conversion goes through the unsigned type for values beyond 2^63.
    return quint64(std::round(doubleValue() * double(n)));
}

quint64 QVRandom::unsignedIntegerBetween(quint64 a, quint64 b)
{
    const quint64 low = std::min(a, b);
    const quint64 high = std::max(a, b);
    return low + unsignedIntegerUpTo(high - low);
}

qint64 QVRandom::integerBetween(qint64 a, qint64 b)
{
    const qint64 low = std::min(a, b);
    const qint64 high = std::max(a, b);
    // The span of two signed values can exceed the signed range; unsigned arithmetic wraps it back.
    const quint64 span = quint64(high) - quint64(low);
    return qint64(quint64(low) + unsignedIntegerUpTo(span));
}

double QVRandom::doubleValue()
{
    return double(generator()->bounded(doubleSteps)) / 4294967295.0;
}

double QVRandom::doubleUpTo(double x)
{
    return doubleBetween(0.0, x);
}

double QVRandom::doubleBetween(double a, double b)
{
    if (a == b)
        return a;
    const double low = std::min(a, b);
    const double high = std::max(a, b);
    return doubleValue() / (1.0 / (high - low)) + low;
}

bool QVRandom::boolValue()
{
    return unsignedIntegerUpTo(1) != 0;
}

QString QVRandom::stringWithCharacters(const QString &characters, qint64 count)
{
    if (count <= 0 || characters.isEmpty())
        return QString();
    const quint64 lastPosition = quint64(characters.size()) - 1;
    QString result;
    result.reserve(qsizetype(std::min<qint64>(count, 1 << 20)));
    for (qint64 i = 0; i < count; ++i) {
        const QVRange character =
            QVString::rangeOfComposedCharacterSequenceAtIndex(characters, unsignedIntegerUpTo(lastPosition));
        result.append(QStringView(characters).mid(qsizetype(character.location), qsizetype(character.length)));
    }
    return result;
}

QString QVRandom::stringOfLength(quint64 n)
{
    if (n == 0)
        return u""_s;
    const QByteArray bytes = dataWithLength(n);
    if (bytes.isNull())
        return QString();
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return QString();
    return text;
}

QByteArray QVRandom::dataWithLength(quint64 n)
{
    if (n == 0)
        return QByteArray();
    QByteArray data;
    // A length no buffer can hold is the caller's mistake, not a reason to stop the program.
    try {
        if (n > quint64(std::numeric_limits<qsizetype>::max()))
            throw std::bad_alloc();
        data = QByteArray(qsizetype(n), Qt::Uninitialized);
    } catch (const std::bad_alloc &) {
        QVLog("%s: cannot allocate %llu bytes. Fix this.", "QVRandom::dataWithLength", n);
        return QByteArray();
    }
    // The system generator reads the kernel's cryptographic source (getrandom) and cannot
    // report a failure, so the "error: %d" status line of other byte sources never arises.
    std::array<quint32, 256> words;
    char *out = data.data();
    qsizetype remaining = data.size();
    while (remaining > 0) {
        const qsizetype chunk = std::min<qsizetype>(remaining, qsizetype(sizeof(words)));
        const qsizetype wordCount = (chunk + qsizetype(sizeof(quint32)) - 1) / qsizetype(sizeof(quint32));
        generator()->fillRange(words.data(), wordCount);
        std::memcpy(out, words.data(), size_t(chunk));
        out += chunk;
        remaining -= chunk;
    }
    return data;
}

QVRange QVRandom::rangeWithinString(const QString &text)
{
    const quint64 length = quint64(text.size());
    if (length == 0)
        return QVRange{0, 0};
    const quint64 location = unsignedIntegerUpTo(length);
    const quint64 rangeLength = unsignedIntegerUpTo(length - location);
    return QVString::rangeOfComposedCharacterSequencesForRange(text, QVRange{location, rangeLength});
}

quint64 QVRandom::indexForCount(quint64 count)
{
    if (count == 0)
        return QVNotFound;
    return unsignedIntegerUpTo(count - 1);
}

QPointF QVRandom::pointWithinRect(const QRectF &rect)
{
    const QRectF r = rect.normalized();
    return QPointF(doubleBetween(r.left(), r.right()), doubleBetween(r.top(), r.bottom()));
}

QSizeF QVRandom::sizeWithinRect(const QRectF &rect)
{
    const QRectF r = rect.normalized();
    return QSizeF(doubleUpTo(r.width()), doubleUpTo(r.height()));
}

QRectF QVRandom::rectWithinRect(const QRectF &rect)
{
    const QRectF r = rect.normalized();
    const QPointF origin = pointWithinRect(r);
    const QSizeF size(doubleUpTo(r.right() - origin.x()), doubleUpTo(r.bottom() - origin.y()));
    return QRectF(origin, size);
}

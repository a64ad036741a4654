#include "QVKit/Collections/QVNonEmpty.h"

#include <QtCore/QDateTime>
#include <QtCore/QStringList>
#include <QtCore/QUrl>
#include <QtCore/QUuid>

using namespace Qt::StringLiterals;

namespace {

template <typename T>
const T &held(const QVariant &value)
{
    return *static_cast<const T *>(value.constData());
}

bool isNumber(int typeId)
{
    switch (typeId) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return true;
    default:
        return false;
    }
}

size_t hashNumber(double number, size_t seed)
{
    // 0.0 and -0.0 compare equal and must hash alike.
    return qHash(number == 0.0 ? 0.0 : number, seed);
}

} // namespace

size_t qHash(const QVariant &value, size_t seed) noexcept
{
    if (!value.isValid())
        return seed;
    const QMetaType type = value.metaType();
    const int id = type.id();
    // QVariant compares numbers, and strings that read as numbers, by value
    // across types: those all hash by their value as a double.
    if (isNumber(id))
        return hashNumber(value.toDouble(), seed);
    switch (id) {
    case QMetaType::Nullptr:
        return qHash(quintptr(0x6e756c6c), seed);
    case QMetaType::QString: {
        const QString &text = held<QString>(value);
        bool ok = false;
        const double number = text.toDouble(&ok);
        if (ok)
            return hashNumber(number, seed);
        if (text == u"true"_s)
            return hashNumber(1.0, seed);
        if (text == u"false"_s)
            return hashNumber(0.0, seed);
        return qHash(text, seed);
    }
    case QMetaType::QByteArray:
        return qHash(held<QByteArray>(value), seed);
    case QMetaType::QChar:
        return qHash(held<QChar>(value), seed);
    case QMetaType::QStringList:
        return qHashRange(held<QStringList>(value).cbegin(), held<QStringList>(value).cend(), seed);
    case QMetaType::QVariantList: {
        const QVariantList &list = held<QVariantList>(value);
        return qHashRange(list.cbegin(), list.cend(), seed);
    }
    case QMetaType::QVariantMap: {
        size_t hash = seed;
        const QVariantMap &map = held<QVariantMap>(value);
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            hash = qHashMulti(hash, it.key(), it.value());
        return hash;
    }
    case QMetaType::QVariantHash: {
        // Iteration order is not part of a hash's value: combine commutatively.
        size_t hash = seed;
        const QVariantHash &map = held<QVariantHash>(value);
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            hash += qHashMulti(0, it.key(), it.value());
        return hash;
    }
    case QMetaType::QDateTime:
        return qHash(held<QDateTime>(value), seed);
    case QMetaType::QDate:
        return qHash(held<QDate>(value), seed);
    case QMetaType::QTime:
        return qHash(held<QTime>(value), seed);
    case QMetaType::QUrl:
        return qHash(held<QUrl>(value), seed);
    case QMetaType::QUuid:
        return qHash(held<QUuid>(value), seed);
    default:
        break;
    }
    if (type == QMetaType::fromType<QVVariantSet>()) {
        const QVVariantSet &set = held<QVVariantSet>(value);
        return qHashRangeCommutative(set.cbegin(), set.cend(), seed);
    }
    if (type == QMetaType::fromType<QVIndexSet>())
        return qHash(held<QVIndexSet>(value), seed);
    if (type == QMetaType::fromType<QVAttributedString>())
        return qHash(held<QVAttributedString>(value).string(), seed);
    // Correct but coarse: every value of an unknown type shares one hash.
    return qHash(id, seed);
}

namespace QVCollections {

bool isNonEmpty(const QString &value)
{
    return !value.isEmpty();
}

bool isNonEmpty(const QByteArray &value)
{
    return !value.isEmpty();
}

bool isNonEmpty(const QVAttributedString &value)
{
    return value.length() > 0;
}

bool isNonEmpty(const QVIndexSet &value)
{
    return !value.isEmpty();
}

bool isNonEmpty(const QVariant &value)
{
    if (!value.isValid())
        return false;
    const QMetaType type = value.metaType();
    switch (type.id()) {
    case QMetaType::QString:
        return !held<QString>(value).isEmpty();
    case QMetaType::QByteArray:
        return !held<QByteArray>(value).isEmpty();
    case QMetaType::QStringList:
        return !held<QStringList>(value).isEmpty();
    case QMetaType::QVariantList:
        return !held<QVariantList>(value).isEmpty();
    case QMetaType::QVariantMap:
        return !held<QVariantMap>(value).isEmpty();
    case QMetaType::QVariantHash:
        return !held<QVariantHash>(value).isEmpty();
    default:
        break;
    }
    if (type == QMetaType::fromType<QVVariantSet>())
        return !held<QVVariantSet>(value).isEmpty();
    if (type == QMetaType::fromType<QVAttributedString>())
        return isNonEmpty(held<QVAttributedString>(value));
    if (type == QMetaType::fromType<QVIndexSet>())
        return !held<QVIndexSet>(value).isEmpty();
    return true;
}

QVariant nonEmptyReturn(const QVariant &value)
{
    return isNonEmpty(value) ? value : QVariant();
}

} // namespace QVCollections

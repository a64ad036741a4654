#include "QVKit/Collections/QVCacheItem.h"

#include "QVKit/Platform/QVFormat.h"

#include <QtCore/QByteArray>
#include <QtCore/QMetaType>
#include <QtCore/QString>


namespace {

bool isNumber(const QVariant &value)
{
    switch (value.metaType().id()) {
    case QMetaType::Bool:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Float:
    case QMetaType::Double:
        return true;
    default:
        return false;
    }
}

} // namespace

// Constant-initialised, so nothing runs at load; only tests ever set it.
std::function<double()> *QVCacheItemBase::s_testClock = nullptr;

void QVCacheItemBase::setClockForTesting(std::function<double()> clock)
{
    delete s_testClock;
    s_testClock = clock ? new std::function<double()>(std::move(clock)) : nullptr;
}

namespace QVCacheDetail {

size_t variantHash(const QVariant &value, size_t seed) noexcept
{
    if (!value.isValid())
        return seed;
    // Equal numbers of different types convert to the same double; adding
    // 0.0 folds -0.0 into 0.0, which compares equal to it.
    if (isNumber(value))
        return qHash(value.toDouble() + 0.0, seed);
    switch (value.metaType().id()) {
    case QMetaType::QString:
        return qHash(value.toString(), seed);
    case QMetaType::QByteArray:
        return qHash(value.toByteArray(), seed);
    default:
        // Equal values of one type describe themselves alike, and the
        // description exists for every type.
        return qHashMulti(seed, value.metaType().id(), QVDescription(value));
    }
}

bool variantEqual(const QVariant &a, const QVariant &b)
{
    if (isNumber(a) && isNumber(b))
        return a == b;
    return a.metaType() == b.metaType() && a == b;
}

} // namespace QVCacheDetail

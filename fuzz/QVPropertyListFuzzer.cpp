// Feeds arbitrary bytes to the property-list reader. Whatever it accepts must
// write back out and read in again as exactly the same value; anything else
// must fail with an error, never crash.
#include <QVKit/Platform/QVPropertyListSerialization.h>

#include <QtCore/QDateTime>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

// Stricter than QVariant's ==: same types, NaN equal to NaN, -0 apart from 0,
// dates in the same kind of time (UTC, local or offset).
bool sameValue(const QVariant &a, const QVariant &b)
{
    if (a.typeId() != b.typeId())
        return false;
    switch (a.typeId()) {
    case QMetaType::QVariantMap: {
        const QVariantMap ma = a.toMap();
        const QVariantMap mb = b.toMap();
        if (ma.size() != mb.size())
            return false;
        for (auto ia = ma.begin(), ib = mb.begin(); ia != ma.end(); ++ia, ++ib) {
            if (ia.key() != ib.key() || !sameValue(ia.value(), ib.value()))
                return false;
        }
        return true;
    }
    case QMetaType::QVariantList: {
        const QVariantList la = a.toList();
        const QVariantList lb = b.toList();
        if (la.size() != lb.size())
            return false;
        for (qsizetype i = 0; i < la.size(); ++i) {
            if (!sameValue(la[i], lb[i]))
                return false;
        }
        return true;
    }
    case QMetaType::Double: {
        const double da = a.toDouble();
        const double db = b.toDouble();
        if (std::isnan(da) || std::isnan(db))
            return std::isnan(da) && std::isnan(db);
        return da == db && std::signbit(da) == std::signbit(db);
    }
    case QMetaType::QString:
        return a.toString() == b.toString() && a.toString().isNull() == b.toString().isNull();
    case QMetaType::QDateTime:
        return a.toDateTime() == b.toDateTime() && a.toDateTime().timeSpec() == b.toDateTime().timeSpec();
    default:
        return a == b;
    }
}

[[noreturn]] void fail(const char *what, const QByteArray &detail)
{
    std::fprintf(stderr, "QVPropertyListFuzzer: %s\n%s\n", what, detail.constData());
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    const QByteArray input = QByteArray::fromRawData(reinterpret_cast<const char *>(bytes), qsizetype(size));
    QVError error;
    const QVariant value = QVPropertyListSerialization::propertyListWithData(input, &error);
    if (!value.isValid()) {
        if (error.isNull() || error.localizedDescription().isEmpty())
            fail("rejected without an error", input);
        return 0;
    }
    if (!QVPropertyListSerialization::propertyListIsValid(value))
        fail("read a value that is not valid for writing", input);
    const QByteArray written = QVPropertyListSerialization::dataWithPropertyList(value, &error);
    if (written.isNull())
        fail("could not write back what was read", error.localizedDescription().toUtf8());
    const QVariant reread = QVPropertyListSerialization::propertyListWithData(written, &error);
    if (!reread.isValid())
        fail("could not read back what was written", written + "\n" + error.localizedDescription().toUtf8());
    if (!sameValue(value, reread))
        fail("read back a different value", written);
    return 0;
}

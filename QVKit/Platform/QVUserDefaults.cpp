#include "QVKit/Platform/QVUserDefaults.h"

#include "QVKit/Platform/QVAssert.h"
#include "QVKit/Platform/QVBundle.h"
#include "QVKit/Platform/QVLog.h"
#include "QVKit/Platform/QVLoggingCategories.h"
#include "QVKit/Platform/QVNotificationCenter.h"
#include "QVKit/Platform/QVPropertyListSerialization.h"

#include <QtCore/QDateTime>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileDevice>
#include <QtCore/QFileInfo>
#include <QtCore/QLockFile>
#include <QtCore/QMap>
#include <QtCore/QRandomGenerator>
#include <QtCore/QSaveFile>
#include <QtCore/QStandardPaths>

#include <cmath>
#include <limits>
#include <optional>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

// The outcome of reading the store's file.
struct FileContents
{
    QVUserDefaults::Status status = QVUserDefaults::Status::NoError;
    QVariantMap dictionary;
    // Why the file does not read, for errorString(); empty when it does.
    QString problem;
};

// A missing file and an empty one are an empty store; anything else must be
// a property list whose top level is a dictionary.
FileContents readStoreFile(const QString &path)
{
    FileContents result;
    QFile file(path);
    if (!file.exists())
        return result;
    if (!file.open(QIODevice::ReadOnly)) {
        result.status = QVUserDefaults::Status::AccessError;
        result.problem = u"cannot read: %1"_s.arg(file.errorString());
        return result;
    }
    const QByteArray data = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        result.status = QVUserDefaults::Status::AccessError;
        result.problem = u"cannot read: %1"_s.arg(file.errorString());
        return result;
    }
    if (data.isEmpty())
        return result;
    QVError error;
    const QVariant plist = QVPropertyListSerialization::propertyListWithData(data, &error);
    if (!plist.isValid()) {
        result.status = QVUserDefaults::Status::FormatError;
        result.problem = error.localizedDescription();
    } else if (plist.typeId() != QMetaType::QVariantMap) {
        result.status = QVUserDefaults::Status::FormatError;
        result.problem = u"not a property-list dictionary (its top level is %1)"_s.arg(
            QString::fromLatin1(plist.metaType().name()));
    } else {
        result.dictionary = plist.toMap();
    }
    return result;
}

// QLockFile::tryLock sleeps 100 ms, then twice as long each time, between
// attempts; writers of a settings file hold its lock for a millisecond or two,
// so short, jittered waits let a crowd of them through without stalling.
bool acquire(QLockFile &lock, std::chrono::milliseconds timeout)
{
    const QDeadlineTimer deadline(timeout);
    std::chrono::microseconds pause(500);
    for (;;) {
        if (lock.tryLock(0))
            return true;
        if (lock.error() != QLockFile::LockFailedError || deadline.hasExpired())
            return false;
        const auto jitter = std::chrono::microseconds(QRandomGenerator::global()->bounded(qint64(pause.count())));
        std::this_thread::sleep_for(std::min<std::chrono::microseconds>(
            pause + jitter, std::chrono::duration_cast<std::chrono::microseconds>(deadline.remainingTimeAsDuration())));
        pause = std::min<std::chrono::microseconds>(pause * 2, std::chrono::milliseconds(20));
    }
}

// Where a damaged file is kept: "NAME.corrupt-YYYYMMDD-HHMMSS" beside it,
// with "-1", "-2", ... when that name is taken.
QString asidePath(const QString &path)
{
    const QString stem = path + u".corrupt-"_s + QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss"_s);
    QString candidate = stem;
    for (int n = 1; QFileInfo::exists(candidate); ++n)
        candidate = stem + u'-' + QString::number(n);
    return candidate;
}

enum class Kind { None, String, Integer, Real, Boolean, Date, Data, Array, Dictionary, Other };

Kind kindOf(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
        return Kind::None;
    case QMetaType::QString:
        return Kind::String;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return Kind::Integer;
    case QMetaType::Double:
    case QMetaType::Float:
        return Kind::Real;
    case QMetaType::Bool:
        return Kind::Boolean;
    case QMetaType::QDateTime:
        return Kind::Date;
    case QMetaType::QByteArray:
        return Kind::Data;
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return Kind::Array;
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return Kind::Dictionary;
    default:
        return Kind::Other;
    }
}

bool isNumber(Kind kind)
{
    return kind == Kind::Integer || kind == Kind::Real;
}

// Integers wider than qint64 exist only as qulonglong above the signed range.
bool isUnsignedAboveSignedRange(const QVariant &value)
{
    return (value.typeId() == QMetaType::ULongLong || value.typeId() == QMetaType::ULong)
           && value.toULongLong() > quint64(std::numeric_limits<qint64>::max());
}

// "Did the answer of a read change?" Unlike QVariant::operator==, which
// converts between strings, numbers and booleans, this compares property-list
// values: the same kind, then the same value (numbers by value, whatever their
// C++ width).
bool samePropertyList(const QVariant &a, const QVariant &b)
{
    const Kind kind = kindOf(a);
    if (isNumber(kind) && isNumber(kindOf(b))) {
        if (kind == Kind::Integer && kindOf(b) == Kind::Integer) {
            if (isUnsignedAboveSignedRange(a) != isUnsignedAboveSignedRange(b))
                return false;
            return isUnsignedAboveSignedRange(a) ? a.toULongLong() == b.toULongLong()
                                                 : a.toLongLong() == b.toLongLong();
        }
        return a.toDouble() == b.toDouble();
    }
    if (kind != kindOf(b))
        return false;
    switch (kind) {
    case Kind::None:
        return true;
    case Kind::String:
        return a.toString() == b.toString();
    case Kind::Boolean:
        return a.toBool() == b.toBool();
    case Kind::Date:
        return a.toDateTime() == b.toDateTime();
    case Kind::Data:
        return a.toByteArray() == b.toByteArray();
    case Kind::Array: {
        const QVariantList left = a.toList();
        const QVariantList right = b.toList();
        if (left.size() != right.size())
            return false;
        for (qsizetype i = 0; i < left.size(); ++i) {
            if (!samePropertyList(left.at(i), right.at(i)))
                return false;
        }
        return true;
    }
    case Kind::Dictionary: {
        const QVariantMap left = a.toMap();
        const QVariantMap right = b.toMap();
        if (left.size() != right.size())
            return false;
        for (auto it = left.cbegin(), other = right.cbegin(); it != left.cend(); ++it, ++other) {
            if (it.key() != other.key() || !samePropertyList(it.value(), other.value()))
                return false;
        }
        return true;
    }
    default:
        return a == b;
    }
}

bool sameDictionary(const QVariantMap &a, const QVariantMap &b)
{
    return samePropertyList(QVariant(a), QVariant(b));
}

qint64 clampedInteger(double value)
{
    if (std::isnan(value))
        return 0;
    // 2^63 is exactly representable; anything at or beyond it saturates.
    constexpr double limit = 9223372036854775808.0;
    if (value >= limit)
        return std::numeric_limits<qint64>::max();
    if (value < -limit)
        return std::numeric_limits<qint64>::min();
    return qint64(value);
}

struct StandardState
{
    QString configuredPath;
    std::unique_ptr<QVUserDefaults> instance;
};

StandardState &standardState()
{
    static StandardState state;
    return state;
}

} // namespace

struct QVUserDefaults::Private
{
    QString filePath;
    // What the file held when last read or written.
    QVariantMap stored;
    // Changes not yet in the file: a value, or nothing for a removal. They
    // are applied on top of whatever the file holds when they are written.
    QMap<QString, std::optional<QVariant>> pending;
    QVariantMap registered;
    Status status = Status::NoError;
    QString errorString;
    QString recoveredFilePath;
    std::chrono::milliseconds lockTimeout = std::chrono::seconds(10);
    bool writeScheduled = false;

    void setOutcome(Status newStatus, const QString &subject = {}, const QString &problem = {})
    {
        status = newStatus;
        errorString = newStatus == Status::NoError ? QString() : subject + u": "_s + problem;
    }

    // Re-reads the file; on failure the values in memory stay.
    bool read()
    {
        FileContents contents = readStoreFile(filePath);
        setOutcome(contents.status, filePath, contents.problem);
        if (contents.status != Status::NoError) {
            qCWarning(lcQVSettings) << errorString;
            return false;
        }
        stored = std::move(contents.dictionary);
        return true;
    }

    // The set values as a read answers them: the file's, with pending changes on top.
    QVariantMap persistent() const
    {
        QVariantMap result = stored;
        for (auto it = pending.cbegin(); it != pending.cend(); ++it) {
            if (it.value())
                result.insert(it.key(), *it.value());
            else
                result.remove(it.key());
        }
        return result;
    }

    std::optional<QVariant> persistentValue(const QString &key) const
    {
        const auto change = pending.constFind(key);
        if (change != pending.cend())
            return change.value();
        const auto value = stored.constFind(key);
        return value != stored.cend() ? std::optional<QVariant>(value.value()) : std::nullopt;
    }

    // Read, merge and replace under the lock file, so that no other process
    // (or store object) can write between our read and our replace: every
    // write that reports success is in the file.
    bool write();
};

bool QVUserDefaults::Private::write()
{
    recoveredFilePath.clear();
    const QFileInfo info(filePath);
    if (!QDir().mkpath(info.absolutePath())) {
        setOutcome(Status::AccessError, filePath, u"cannot create the folder %1"_s.arg(info.absolutePath()));
        return false;
    }
    QLockFile lock(filePath + u".lock"_s);
    if (!acquire(lock, lockTimeout)) {
        const QString lockPath = filePath + u".lock"_s;
        if (lock.error() == QLockFile::LockFailedError) {
            setOutcome(Status::LockError, lockPath,
                       u"the settings file is locked by another process (waited %1 s)"_s.arg(
                           double(lockTimeout.count()) / 1000.0));
        } else {
            setOutcome(Status::AccessError, lockPath, u"cannot create the lock file"_s);
        }
        return false;
    }

    FileContents contents = readStoreFile(filePath);
    if (contents.status == Status::AccessError) {
        setOutcome(contents.status, filePath, contents.problem);
        return false;
    }
    if (contents.status == Status::FormatError) {
        // The damaged bytes are the user's: keep them beside the new file
        // instead of writing over them.
        const QString aside = asidePath(filePath);
        if (!QFile::rename(filePath, aside)) {
            setOutcome(Status::AccessError, filePath, u"damaged, and cannot be moved aside to %1"_s.arg(aside));
            return false;
        }
        recoveredFilePath = aside;
        qCWarning(lcQVSettings).noquote() << filePath << "was damaged (" << contents.problem << "); kept it as"
                                          << aside;
    }

    const QVariantMap base = contents.dictionary;
    stored = base;
    const QVariantMap merged = persistent();
    if (recoveredFilePath.isEmpty() && samePropertyList(QVariant(base), QVariant(merged))) {
        pending.clear();
        setOutcome(Status::NoError);
        return true;
    }

    QVError error;
    const QByteArray data = QVPropertyListSerialization::dataWithPropertyList(merged, &error);
    if (data.isNull()) {
        setOutcome(Status::FormatError, filePath, error.localizedDescription());
        return false;
    }
    QSaveFile file(filePath);
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit()) {
        setOutcome(Status::AccessError, filePath, u"cannot write: %1"_s.arg(file.errorString()));
        return false;
    }
    stored = merged;
    pending.clear();
    setOutcome(Status::NoError);
    return true;
}

QVUserDefaults *QVUserDefaults::standardUserDefaults()
{
    StandardState &state = standardState();
    if (!state.instance) {
        QString path = state.configuredPath;
        if (path.isEmpty())
            path = qEnvironmentVariable("QVKIT_USER_DEFAULTS_PATH");
        if (path.isEmpty())
            path = defaultFilePath();
        state.instance = std::make_unique<QVUserDefaults>(path);
    }
    return state.instance.get();
}

void QVUserDefaults::setStandardUserDefaultsFilePath(const QString &filePath)
{
    StandardState &state = standardState();
    state.configuredPath = filePath;
    if (!state.instance || filePath.isEmpty())
        return;
    QVUserDefaults *defaults = state.instance.get();
    if (defaults->d->filePath == filePath)
        return;
    defaults->synchronize();
    // Changes the old file refused belong to it, not to the new one.
    defaults->d->pending.clear();
    defaults->d->stored.clear();
    defaults->d->filePath = filePath;
    defaults->d->read();
    defaults->notifyChange();
}

QString QVUserDefaults::defaultFilePath()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    if (folder.isEmpty())
        folder = QDir::homePath() + u"/.config"_s;
    return folder + u'/' + QVBundle::bundleIdentifier() + u".plist"_s;
}

QVUserDefaults::QVUserDefaults(const QString &filePath, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    QV_ASSERT(!filePath.isEmpty());
    d->filePath = filePath;
    d->read();
}

QVUserDefaults::~QVUserDefaults()
{
    // Pending changes are written as the store goes; nothing is logged here,
    // since the standard store may be destroyed after the logging machinery.
    if (!d->pending.isEmpty())
        d->write();
}

QString QVUserDefaults::filePath() const
{
    return d->filePath;
}

QVUserDefaults::Status QVUserDefaults::status() const
{
    return d->status;
}

QString QVUserDefaults::errorString() const
{
    return d->errorString;
}

QString QVUserDefaults::recoveredFilePath() const
{
    return d->recoveredFilePath;
}

void QVUserDefaults::setLockTimeout(std::chrono::milliseconds timeout)
{
    d->lockTimeout = timeout;
}

void QVUserDefaults::registerDefaults(const QVariantMap &defaults)
{
    if (defaults.isEmpty())
        return;
    d->registered.insert(defaults);
    notifyChange();
}

QVariantMap QVUserDefaults::registeredDefaults() const
{
    return d->registered;
}

QVariant QVUserDefaults::objectForKey(const QString &key) const
{
    if (!key.isEmpty()) {
        if (const std::optional<QVariant> value = d->persistentValue(key))
            return *value;
    }
    return d->registered.value(key);
}

QString QVUserDefaults::stringForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    switch (kindOf(value)) {
    case Kind::String: {
        // A stored empty string must not read like an absent key.
        const QString text = value.toString();
        return text.isNull() ? u""_s : text;
    }
    case Kind::Integer:
        return isUnsignedAboveSignedRange(value) ? QString::number(value.toULongLong())
                                                 : QString::number(value.toLongLong());
    case Kind::Real:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    default:
        return {};
    }
}

QVariantList QVUserDefaults::arrayForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    return kindOf(value) == Kind::Array ? value.toList() : QVariantList();
}

QStringList QVUserDefaults::stringArrayForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList();
    if (kindOf(value) != Kind::Array)
        return {};
    QStringList result;
    const QVariantList list = value.toList();
    for (const QVariant &element : list) {
        if (kindOf(element) != Kind::String)
            return {};
        result.append(element.toString());
    }
    return result;
}

QVariantMap QVUserDefaults::dictionaryForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    return kindOf(value) == Kind::Dictionary ? value.toMap() : QVariantMap();
}

QByteArray QVUserDefaults::dataForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (kindOf(value) != Kind::Data)
        return {};
    const QByteArray data = value.toByteArray();
    // Stored empty data reads as empty, not as absent.
    return data.isNull() ? QByteArray("") : data;
}

bool QVUserDefaults::boolForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    switch (kindOf(value)) {
    case Kind::Boolean:
        return value.toBool();
    case Kind::Integer:
        return isUnsignedAboveSignedRange(value) || value.toLongLong() != 0;
    case Kind::Real:
        return value.toDouble() != 0.0;
    case Kind::String: {
        const QString text = value.toString().trimmed();
        return text.compare(u"YES"_s, Qt::CaseInsensitive) == 0
               || text.compare(u"true"_s, Qt::CaseInsensitive) == 0 || text == u"1"_s;
    }
    default:
        return false;
    }
}

qint64 QVUserDefaults::integerForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    switch (kindOf(value)) {
    case Kind::Boolean:
        return value.toBool() ? 1 : 0;
    case Kind::Integer:
        return isUnsignedAboveSignedRange(value) ? std::numeric_limits<qint64>::max()
                                                 : value.toLongLong();
    case Kind::Real:
        return clampedInteger(value.toDouble());
    case Kind::String: {
        const QString text = value.toString().trimmed();
        bool ok = false;
        const qint64 integer = text.toLongLong(&ok);
        if (ok)
            return integer;
        const double real = text.toDouble(&ok);
        return ok ? clampedInteger(real) : 0;
    }
    default:
        return 0;
    }
}

double QVUserDefaults::doubleForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    switch (kindOf(value)) {
    case Kind::Boolean:
        return value.toBool() ? 1.0 : 0.0;
    case Kind::Integer:
    case Kind::Real:
        return value.toDouble();
    case Kind::String: {
        bool ok = false;
        const double real = value.toString().trimmed().toDouble(&ok);
        return ok ? real : 0.0;
    }
    default:
        return 0.0;
    }
}

QUrl QVUserDefaults::urlForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    QString text;
    if (kindOf(value) == Kind::String)
        text = value.toString();
    else if (kindOf(value) == Kind::Data)
        text = QString::fromUtf8(value.toByteArray());
    else
        return {};

    // Paths stand for files, as users write them into preferences by hand.
    if (text == u"~"_s || text.startsWith(u"~/"_s))
        return QUrl::fromLocalFile(QDir::homePath() + text.mid(1));
    if (text.startsWith(u'/'))
        return QUrl::fromLocalFile(text);
    const QUrl url(text);
    return url.isValid() && !url.scheme().isEmpty() ? url : QUrl();
}

void QVUserDefaults::setObject(const QVariant &value, const QString &key)
{
    if (key.isEmpty()) {
        QVLog("%s: refusing to store a value under an empty key. Fix this.", "QVUserDefaults::setObject");
        return;
    }
    if (!value.isValid()) {
        removeObjectForKey(key);
        return;
    }
    // Store what the file will give back (UTC dates, 64-bit integers, plain
    // lists and maps), so that this process reads what every other one reads.
    QVariant stored;
    if (QVPropertyListSerialization::propertyListIsValid(value)) {
        stored = QVPropertyListSerialization::propertyListWithData(
            QVPropertyListSerialization::dataWithPropertyList(value));
    }
    if (!stored.isValid()) {
        QVLog("%s: refusing to store a value of type %s under key \"%@\". Fix this.",
              "QVUserDefaults::setObject", value.typeName(), key);
        return;
    }

    const QVariant before = objectForKey(key);
    d->pending.insert(key, stored);
    scheduleWrite();
    if (!samePropertyList(before, objectForKey(key)))
        notifyChange();
}

void QVUserDefaults::setBool(bool value, const QString &key)
{
    setObject(QVariant(value), key);
}

void QVUserDefaults::setInteger(qint64 value, const QString &key)
{
    setObject(QVariant(qlonglong(value)), key);
}

void QVUserDefaults::setDouble(double value, const QString &key)
{
    setObject(QVariant(value), key);
}

void QVUserDefaults::setUrl(const QUrl &value, const QString &key)
{
    if (value.isEmpty())
        removeObjectForKey(key);
    else
        setObject(value.toString(), key);
}

void QVUserDefaults::removeObjectForKey(const QString &key)
{
    removeObjectsForKeys({key});
}

void QVUserDefaults::removeObjectsForKeys(const QStringList &keys)
{
    bool changed = false;
    for (const QString &key : keys) {
        if (key.isEmpty() || !d->persistentValue(key))
            continue;
        const QVariant before = objectForKey(key);
        d->pending.insert(key, std::nullopt);
        scheduleWrite();
        changed = changed || !samePropertyList(before, objectForKey(key));
    }
    if (changed)
        notifyChange();
}

QVariantMap QVUserDefaults::dictionaryRepresentation() const
{
    QVariantMap result = d->registered;
    result.insert(persistentDictionary());
    return result;
}

QVariantMap QVUserDefaults::persistentDictionary() const
{
    return d->persistent();
}

bool QVUserDefaults::synchronize()
{
    const QVariantMap before = dictionaryRepresentation();
    const bool ok = d->pending.isEmpty() ? d->read() : d->write();
    if (!sameDictionary(before, dictionaryRepresentation()))
        notifyChange();
    return ok;
}

void QVUserDefaults::scheduleWrite()
{
    // Changes reach the file soon without waiting for synchronize(), which
    // also picks up what other processes wrote.
    if (d->writeScheduled)
        return;
    d->writeScheduled = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            d->writeScheduled = false;
            synchronize();
        },
        Qt::QueuedConnection);
}

void QVUserDefaults::notifyChange()
{
    Q_EMIT didChange();
    QVNotificationCenter::defaultCenter()->postNotificationName(QVUserDefaultsDidChangeNotification,
                                                                this);
}

#include "QVKit/Platform/QVUserDefaults.h"

#include "QVKit/Platform/QVAssert.h"
#include "QVKit/Platform/QVBundle.h"
#include "QVKit/Platform/QVLog.h"
#include "QVKit/Platform/QVLoggingCategories.h"
#include "QVKit/Platform/QVNotificationCenter.h"
#include "QVKit/Platform/QVPropertyListSerialization.h"

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileDevice>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtCore/QStandardPaths>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

// QSettings reads '/' and '\' in a key as group separators and normalizes them
// away ("/a" becomes "a", "a\b" becomes "a/b"). The store hands QSettings only
// escaped keys, and the file format functions translate back, so every key
// reaches the file exactly as the caller wrote it.
QString escapedKey(const QString &key)
{
    QString result;
    result.reserve(key.size());
    for (QChar c : key) {
        if (c == u'%')
            result += u"%25"_s;
        else if (c == u'/')
            result += u"%2F"_s;
        else if (c == u'\\')
            result += u"%5C"_s;
        else
            result += c;
    }
    return result;
}

QString unescapedKey(const QString &key)
{
    if (!key.contains(u'%'))
        return key;
    QString result;
    result.reserve(key.size());
    for (qsizetype i = 0; i < key.size(); ++i) {
        const QStringView code = QStringView(key).mid(i, 3);
        if (code == u"%25")
            result += u'%';
        else if (code == u"%2F")
            result += u'/';
        else if (code == u"%5C")
            result += u'\\';
        else {
            result += key.at(i);
            continue;
        }
        i += 2;
    }
    return result;
}

// A preferences file holds exactly one dictionary at its top level.
bool parseDictionary(const QByteArray &data, QVariantMap *dictionary)
{
    const QVariant plist = QVPropertyListSerialization::propertyListWithData(data);
    if (plist.typeId() != QMetaType::QVariantMap)
        return false;
    if (dictionary)
        *dictionary = plist.toMap();
    return true;
}

bool readPropertyListSettings(QIODevice &device, QSettings::SettingsMap &map)
{
    QVariantMap dictionary;
    if (!parseDictionary(device.readAll(), &dictionary)) {
        const auto *file = qobject_cast<QFileDevice *>(&device);
        qCDebug(lcQVSettings) << "not a property-list dictionary:" << (file ? file->fileName() : QString());
        return false;
    }
    for (auto it = dictionary.cbegin(); it != dictionary.cend(); ++it)
        map.insert(escapedKey(it.key()), it.value());
    return true;
}

bool writePropertyListSettings(QIODevice &device, const QSettings::SettingsMap &map)
{
    // QSettings replaces the file even when its last read failed, which would
    // throw away a file the user may still repair. The check runs here, under
    // QSettings' lock file, so no other writer can slip in between.
    if (const auto *file = qobject_cast<QFileDevice *>(&device)) {
        QFile existing(file->fileName());
        if (existing.exists() && existing.size() > 0) {
            if (!existing.open(QIODevice::ReadOnly) || !parseDictionary(existing.readAll(), nullptr)) {
                qCDebug(lcQVSettings) << "refusing to replace an unreadable file:" << file->fileName();
                return false;
            }
        }
    }

    QVariantMap dictionary;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        dictionary.insert(unescapedKey(it.key()), it.value());
    QVError error;
    const QByteArray data = QVPropertyListSerialization::dataWithPropertyList(dictionary, &error);
    if (data.isNull()) {
        qCWarning(lcQVSettings) << "cannot write settings:" << error.localizedDescription();
        return false;
    }
    return device.write(data) == data.size();
}

QSettings::Format propertyListFormat()
{
    static const QSettings::Format format =
        QSettings::registerFormat(u"plist"_s, readPropertyListSettings, writePropertyListSettings);
    QV_ASSERT(format != QSettings::InvalidFormat);
    return format;
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
    std::unique_ptr<QSettings> settings;
    QVariantMap registered;
    // One log line per spell of an unreadable file, not one per attempt.
    bool reportedUnreadable = false;
    bool writeScheduled = false;

    void openSettings()
    {
        // The new object shares QSettings' per-file cache with the old one,
        // so changes not yet written survive the swap.
        settings = std::make_unique<QSettings>(filePath, propertyListFormat());
    }

    // QSettings remembers its first error forever; a fresh object lets each
    // attempt report its own outcome.
    bool syncSettings()
    {
        if (settings->status() != QSettings::NoError)
            openSettings();
        settings->sync();
        return settings->status() == QSettings::NoError;
    }

    bool fileIsUnreadable() const
    {
        QFile file(filePath);
        if (!file.exists() || file.size() == 0)
            return false;
        return !file.open(QIODevice::ReadOnly) || !parseDictionary(file.readAll(), nullptr);
    }

    void reportOutcome(bool ok)
    {
        if (ok) {
            reportedUnreadable = false;
            return;
        }
        if (fileIsUnreadable()) {
            if (!reportedUnreadable) {
                QVLog("QVUserDefaults: %@ is not a readable property list; leaving it untouched and "
                      "keeping changes in memory. Fix or remove the file.",
                      filePath);
                reportedUnreadable = true;
            }
        } else {
            qCWarning(lcQVSettings) << "could not read or write" << filePath << "status"
                                    << settings->status();
        }
    }
};

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
    defaults->d->filePath = filePath;
    defaults->d->openSettings();
    defaults->d->reportOutcome(defaults->d->settings->status() == QSettings::NoError);
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
    d->openSettings();
    d->reportOutcome(d->settings->status() == QSettings::NoError);
}

QVUserDefaults::~QVUserDefaults()
{
    // QSettings writes pending changes when it goes; nothing is logged here,
    // since the standard store may be destroyed after the logging machinery.
    d->settings->sync();
}

QString QVUserDefaults::filePath() const
{
    return d->filePath;
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
        const QString stored = escapedKey(key);
        if (d->settings->contains(stored))
            return d->settings->value(stored);
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
    d->settings->setValue(escapedKey(key), stored);
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
        if (key.isEmpty())
            continue;
        const QString stored = escapedKey(key);
        if (!d->settings->contains(stored))
            continue;
        const QVariant before = objectForKey(key);
        d->settings->remove(stored);
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
    QVariantMap result;
    const QStringList keys = d->settings->allKeys();
    for (const QString &key : keys)
        result.insert(unescapedKey(key), d->settings->value(key));
    return result;
}

bool QVUserDefaults::synchronize()
{
    const QVariantMap before = dictionaryRepresentation();
    const bool ok = d->syncSettings();
    d->reportOutcome(ok);
    if (!sameDictionary(before, dictionaryRepresentation()))
        notifyChange();
    return ok;
}

void QVUserDefaults::scheduleWrite()
{
    // Changes reach the file soon without waiting for synchronize(). QSettings
    // would write on its own too, but silently; going through synchronize()
    // reports an unreadable file and picks up what other processes wrote.
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
    QVNotificationCenter::defaultCenter()->postNotificationName(QVUserDefaultsDidChangeNotification.toString(),
                                                                this);
}

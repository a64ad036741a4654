// Placeholder: being written.
#include "QVKit/Platform/QVUserDefaults.h"

struct QVUserDefaults::Private { QString filePath; };
QVUserDefaults *QVUserDefaults::standardUserDefaults() { static QVUserDefaults s{QString()}; return &s; }
void QVUserDefaults::setStandardUserDefaultsFilePath(const QString &) {}
QString QVUserDefaults::defaultFilePath() { return {}; }
QVUserDefaults::QVUserDefaults(const QString &filePath, QObject *parent) : QObject(parent), d(new Private{filePath}) {}
QVUserDefaults::~QVUserDefaults() = default;
QString QVUserDefaults::filePath() const { return d->filePath; }
void QVUserDefaults::registerDefaults(const QVariantMap &) {}
QVariantMap QVUserDefaults::registeredDefaults() const { return {}; }
QVariant QVUserDefaults::objectForKey(const QString &) const { return {}; }
QString QVUserDefaults::stringForKey(const QString &) const { return {}; }
QVariantList QVUserDefaults::arrayForKey(const QString &) const { return {}; }
QStringList QVUserDefaults::stringArrayForKey(const QString &) const { return {}; }
QVariantMap QVUserDefaults::dictionaryForKey(const QString &) const { return {}; }
QByteArray QVUserDefaults::dataForKey(const QString &) const { return {}; }
bool QVUserDefaults::boolForKey(const QString &) const { return false; }
qint64 QVUserDefaults::integerForKey(const QString &) const { return 0; }
double QVUserDefaults::doubleForKey(const QString &) const { return 0; }
QUrl QVUserDefaults::urlForKey(const QString &) const { return {}; }
void QVUserDefaults::setObject(const QVariant &, const QString &) {}
void QVUserDefaults::setBool(bool, const QString &) {}
void QVUserDefaults::setInteger(qint64, const QString &) {}
void QVUserDefaults::setDouble(double, const QString &) {}
void QVUserDefaults::setUrl(const QUrl &, const QString &) {}
void QVUserDefaults::removeObjectForKey(const QString &) {}
void QVUserDefaults::removeObjectsForKeys(const QStringList &) {}
QVariantMap QVUserDefaults::dictionaryRepresentation() const { return {}; }
QVariantMap QVUserDefaults::persistentDictionary() const { return {}; }
bool QVUserDefaults::synchronize() { return false; }
void QVUserDefaults::notifyChange() {}

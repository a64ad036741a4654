#include "QVKit/Platform/QVBundle.h"

#include "QVKit/Platform/QVLoggingCategories.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>
#include <QtCore/QTranslator>

using namespace Qt::StringLiterals;

namespace {

QString applicationProperty(const char *name)
{
    const QCoreApplication *application = QCoreApplication::instance();
    return application ? application->property(name).toString() : QString();
}

} // namespace

QString QVBundle::translationContext(const QString &table)
{
    return table.isEmpty() ? u"Localizable"_s : table;
}

QString QVBundle::localizedString(const QString &key, const QString &defaultValue, const QString &table)
{
    if (key.isEmpty())
        return defaultValue;
    const QByteArray context = translationContext(table).toUtf8();
    const QByteArray source = key.toUtf8();
    // Qt answers the source text itself when no installed translator has an
    // entry; the key is not meant for display, so the default stands in.
    const QString translated = QCoreApplication::translate(context.constData(), source.constData());
    if (translated.isEmpty() || translated == key)
        return defaultValue;
    return translated;
}

bool QVBundle::installTranslations(const QLocale &locale, const QString &baseName, const QString &directory)
{
    QCoreApplication *application = QCoreApplication::instance();
    if (!application)
        return false;
    // Owned by the application: translations stay installed for its lifetime.
    auto *translator = new QTranslator(application);
    if (!translator->load(locale, baseName, u"_"_s, directory)) {
        qCDebug(lcQVLocalization) << "no translation" << baseName << "for" << locale.name() << "in" << directory;
        delete translator;
        return false;
    }
    return QCoreApplication::installTranslator(translator);
}

QString QVBundle::applicationName()
{
    return QCoreApplication::applicationName();
}

QString QVBundle::shortVersionString()
{
    return QCoreApplication::applicationVersion();
}

QString QVBundle::bundleVersion()
{
    const QString build = applicationProperty("QVBundleVersion");
    return build.isEmpty() ? shortVersionString() : build;
}

QString QVBundle::bundleIdentifier()
{
    const QString identifier = applicationProperty("QVBundleIdentifier");
    if (!identifier.isEmpty())
        return identifier;
    const QString name = applicationName();
    QStringList domain = QCoreApplication::organizationDomain().split(u'.', Qt::SkipEmptyParts);
    if (domain.isEmpty())
        return name;
    std::reverse(domain.begin(), domain.end());
    return domain.join(u'.') + u'.' + name;
}

QVariant QVBundle::objectForInfoDictionaryKey(const QString &key)
{
    if (key == u"CFBundleName"_s)
        return applicationName();
    if (key == u"CFBundleShortVersionString"_s)
        return shortVersionString();
    if (key == u"CFBundleVersion"_s)
        return bundleVersion();
    if (key == u"CFBundleIdentifier"_s)
        return bundleIdentifier();
    return {};
}

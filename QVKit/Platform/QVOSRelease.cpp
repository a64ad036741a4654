#include "QVKit/Platform/QVOSRelease.h"

#include "QVKit/Platform/QVLoggingCategories.h"

#include <QtCore/QFile>
#include <QtCore/QStringList>

using namespace Qt::StringLiterals;

namespace {

// Shell-style quoting as os-release allows it: one pair of quotes around the
// value, with backslash escapes inside double quotes.
QString unquoted(QStringView value)
{
    if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') && value.back() == value.front()) {
        const QChar quote = value.front();
        value = value.sliced(1, value.size() - 2);
        if (quote == u'\'')
            return value.toString();
        QString result;
        result.reserve(value.size());
        for (qsizetype i = 0; i < value.size(); ++i) {
            if (value[i] == u'\\' && i + 1 < value.size())
                ++i;
            result.append(value[i]);
        }
        return result;
    }
    return value.toString();
}

} // namespace

QVOSRelease QVOSRelease::fromOsRelease(const QString &text)
{
    QVOSRelease release;
    const QStringList lines = text.split(u'\n');
    for (const QString &rawLine : lines) {
        const QStringView line = QStringView(rawLine).trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        const qsizetype equals = line.indexOf(u'=');
        if (equals <= 0)
            continue;
        const QStringView key = line.first(equals).trimmed();
        const QString value = unquoted(line.sliced(equals + 1).trimmed());
        if (key == u"NAME")
            release.m_name = value;
        else if (key == u"VERSION_ID")
            release.m_versionId = value;
        else if (key == u"PRETTY_NAME")
            release.m_prettyName = value;
    }
    return release;
}

QVOSRelease QVOSRelease::current()
{
    for (const QString &path : {u"/etc/os-release"_s, u"/usr/lib/os-release"_s}) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly | QIODevice::Text))
            return fromOsRelease(QString::fromUtf8(file.readAll()));
    }
    qCDebug(lcQVPlatform) << "no os-release file could be read";
    return {};
}

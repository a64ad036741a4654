#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

/**
 * The operating system's identification from os-release: its name
 * ("Debian GNU/Linux"), version ("12") and pretty name. A value that could
 * not be read is null.
 */
class QVKIT_EXPORT QVOSRelease
{
public:
    /** Parses os-release text: KEY=value lines, values optionally quoted, "#" comments. */
    static QVOSRelease fromOsRelease(const QString &text);
    /** The running system's, read from /etc/os-release, else /usr/lib/os-release. */
    static QVOSRelease current();

    bool isNull() const { return m_name.isNull() && m_versionId.isNull(); }
    /** NAME, or a null string. */
    QString name() const { return m_name; }
    /** VERSION_ID, or a null string (rolling releases have none). */
    QString versionId() const { return m_versionId; }
    /** PRETTY_NAME, or a null string. */
    QString prettyName() const { return m_prettyName; }

private:
    QString m_name;
    QString m_versionId;
    QString m_prettyName;
};

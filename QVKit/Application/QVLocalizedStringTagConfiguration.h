#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QUrl>

#include <optional>

/** Tag texts (normally written with their angle brackets) mapped to their replacements, in key order. */
using QVTagReplacements = QMap<QString, QString>;

/**
 * The optional inputs of one tag replacement: the file whose name, path and
 * extension fill the file tags, and the caller's own tags. Both start absent;
 * an absent dictionary lets a directly passed one take its place, while an
 * empty one does not.
 */
class QVKIT_EXPORT QVLocalizedStringTagConfiguration
{
public:
    /** An empty configuration. */
    static QVLocalizedStringTagConfiguration configuration() { return {}; }

    QUrl fileURL() const { return m_fileURL; }
    void setFileURL(const QUrl &fileURL) { m_fileURL = fileURL; }

    std::optional<QVTagReplacements> customTagReplacement() const { return m_customTagReplacement; }
    void setCustomTagReplacement(const std::optional<QVTagReplacements> &replacement)
    {
        m_customTagReplacement = replacement;
    }

private:
    QUrl m_fileURL;
    std::optional<QVTagReplacements> m_customTagReplacement;
};

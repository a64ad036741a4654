#pragma once

#include <QVKit/Platform/QVFormat.h>

#include <QtCore/QStringList>

#include <memory>

/**
 * Writes one line to the platform log: Qt's message handler, which by default
 * prints to standard error. The library's promised log lines go through here,
 * word for word, in Qt's default category at info level.
 */
QVKIT_EXPORT void QVLogText(const QString &line);

/** printf-style logging with "%@" for a value's description (see QVFormat). */
template <typename... Arguments>
void QVLog(const char *format, const Arguments &...arguments)
{
    QVLogText(QVFormat(format, arguments...));
}

/**
 * Captures what is logged while it lives, for tests.
 *
 * Installs its own Qt message handler and restores the previous one when
 * destroyed; captures nest, the innermost one receiving the messages. With
 * passThrough, messages also reach the previous handler.
 */
class QVKIT_EXPORT QVLogCapture
{
public:
    explicit QVLogCapture(bool passThrough = false);
    ~QVLogCapture();
    QVLogCapture(const QVLogCapture &) = delete;
    QVLogCapture &operator=(const QVLogCapture &) = delete;

    /** Every captured message's text, oldest first. */
    QStringList lines() const;
    /** True when some captured line equals the text exactly. */
    bool contains(const QString &line) const;
    /** True when some captured line contains the fragment. */
    bool containsFragment(const QString &fragment) const;
    void clear();

private:
    static void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message);

    struct Private;
    std::unique_ptr<Private> d;
};

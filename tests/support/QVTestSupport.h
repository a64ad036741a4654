#pragma once

#include <QtCore/QString>

#include <chrono>
#include <functional>

namespace QVTest {

/**
 * Runs the event loop until the condition holds or the deadline passes, and
 * answers the condition's last value. Tests wait on conditions, never on clocks.
 */
bool waitUntil(const std::function<bool()> &condition,
               std::chrono::milliseconds deadline = std::chrono::seconds(10));

/** A file under tests/data. */
QString dataPath(const QString &relativePath);

/** A helper program built from tests/helpers. */
QString helperPath(const QString &name);

/** The temporary home folder this test process was given (XDG folders live below it). */
QString temporaryHome();

} // namespace QVTest

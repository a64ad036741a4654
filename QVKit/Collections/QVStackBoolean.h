#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

#include <functional>
#include <memory>

/**
 * A nestable on/off switch whose state follows a count of enable() minus
 * disable() calls.
 *
 * Made with initial state false, it is on while the count is above zero: it
 * turns on at the first enable() and off when every enable() has been matched
 * by a disable(). Made with initial state true, it is on while the count is
 * zero or above, and turns off at the first unmatched disable(). The optional
 * callable is told the new state each time the state changes, and only then.
 * An instance is used from one thread at a time.
 */
class QVKIT_EXPORT QVStackBoolean
{
public:
    /** Called with the new state after each change of state. */
    using Block = std::function<void(bool enabled)>;

    explicit QVStackBoolean(bool initialState, Block block = {});
    static QVStackBoolean stackBooleanWithInitialState(bool initialState, Block block = {});
    ~QVStackBoolean();
    QVStackBoolean(const QVStackBoolean &) = delete;
    QVStackBoolean &operator=(const QVStackBoolean &) = delete;

    /** Adds one to the count. */
    void enable();
    /** Subtracts one from the count. */
    void disable();

    bool isEnabled() const;
    bool initialState() const;
    qint64 enableCount() const;

    /** "QVStackBoolean 0x…: count = 1  isEnabled = YES". */
    QString description() const;

private:
    void changeCount(qint64 delta);

    struct Private;
    std::unique_ptr<Private> d;
};

#include "QVKit/Collections/QVStackBoolean.h"

#include <QVKit/Platform/QVFormat.h>

struct QVStackBoolean::Private
{
    bool initialState = false;
    qint64 enableCount = 0;
    Block block;
};

QVStackBoolean::QVStackBoolean(bool initialState, Block block) : d(std::make_unique<Private>())
{
    d->initialState = initialState;
    d->block = std::move(block);
}

QVStackBoolean QVStackBoolean::stackBooleanWithInitialState(bool initialState, Block block)
{
    return QVStackBoolean(initialState, std::move(block));
}

QVStackBoolean::~QVStackBoolean() = default;

void QVStackBoolean::enable()
{
    changeCount(+1);
}

void QVStackBoolean::disable()
{
    changeCount(-1);
}

void QVStackBoolean::changeCount(qint64 delta)
{
    const bool wasEnabled = isEnabled();
    d->enableCount += delta;
    const bool enabled = isEnabled();
    if (enabled != wasEnabled && d->block)
        d->block(enabled);
}

bool QVStackBoolean::isEnabled() const
{
    // With initial state true the switch stays on at zero and goes off only
    // below it; with false it needs a positive count to be on.
    return d->initialState ? d->enableCount >= 0 : d->enableCount > 0;
}

bool QVStackBoolean::initialState() const
{
    return d->initialState;
}

qint64 QVStackBoolean::enableCount() const
{
    return d->enableCount;
}

QString QVStackBoolean::description() const
{
    return QVFormat("%@ %p: count = %ld  isEnabled = %@", "QVStackBoolean", static_cast<const void *>(this),
                    d->enableCount, isEnabled() ? "YES" : "NO");
}

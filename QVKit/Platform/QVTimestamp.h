#pragma once

#include <QVKit/QVKitExport.h>

/**
 * Monotonic seconds since an arbitrary start, on a clock that stops while the
 * machine is suspended (CLOCK_MONOTONIC). Use for intervals of the running
 * program, such as a cache's access times.
 */
QVKIT_EXPORT double QVTimestamp() noexcept;

/** As QVTimestamp, on a clock that keeps counting during suspend (CLOCK_BOOTTIME). */
QVKIT_EXPORT double QVTimestampContinuous() noexcept;

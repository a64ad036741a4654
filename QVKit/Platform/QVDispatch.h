#pragma once

#include <QVKit/QVKitExport.h>

#include <functional>

/**
 * Runs the block on the main (GUI) thread and returns when it has finished.
 *
 * On the main thread the block runs inline, so callers need not know where
 * they are; elsewhere it is queued to the application object and the caller
 * blocks until the main thread's event loop has run it. Without an
 * application object there is no main queue and the block runs inline.
 */
QVKIT_EXPORT void qv_dispatch_sync_safely_on_main_queue(const std::function<void()> &block);

/** True on the thread that owns the application object (or when there is none). */
QVKIT_EXPORT bool qv_is_main_thread();

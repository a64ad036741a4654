#pragma once

#include <atomic>
#include <mutex>
#include <utility>

/**
 * A run-once guard that also remembers whether its body has run.
 *
 * The body runs exactly once per guard, even when several threads arrive
 * together; later calls return at once. Shared objects should prefer a
 * function-local static; this guard is for one-way switches (such as
 * redirecting the logs) whose "already done" state callers may ask about.
 */
class QVOnce
{
public:
    template <typename Body>
    void run(Body &&body)
    {
        std::call_once(m_flag, [&] {
            std::forward<Body>(body)();
            m_done.store(true, std::memory_order_release);
        });
    }

    /** True once a body has run to completion. */
    bool hasRun() const noexcept { return m_done.load(std::memory_order_acquire); }

private:
    std::once_flag m_flag;
    std::atomic<bool> m_done{false};
};

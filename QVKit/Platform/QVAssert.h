#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QtGlobal>

/**
 * Stops the program with the assertion report: the condition text, the
 * operation and the source (file name without folder or extension) with its
 * line. Active in every build type: a failed assertion is a programming error,
 * never an expected failure.
 */
[[noreturn]] QVKIT_EXPORT void qv_assert_failed(const char *condition, const char *operation,
                                                const char *file, int line) noexcept;

/** The report's text, shared with tests that match on it. */
QVKIT_EXPORT QString qv_assert_report(const char *condition, const char *operation, const char *file,
                                      int line);

/** Asserts a condition and names it as written. */
#define QV_ASSERT(condition) QV_ASSERT_TEXT(condition, #condition)

/**
 * Asserts a condition but names it with the given text, for reports whose
 * wording is fixed independently of the C++ expression that checks it.
 */
#define QV_ASSERT_TEXT(condition, text)                                                            \
    (Q_LIKELY(static_cast<bool>(condition))                                                        \
         ? void(0)                                                                                 \
         : ::qv_assert_failed(text, Q_FUNC_INFO, __FILE__, __LINE__))

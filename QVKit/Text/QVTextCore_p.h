#pragma once

// Not part of the installed interface: the case conversion's two paths, open
// to the tests that prove they agree.

#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Platform/QVRange.h>
#include <QVKit/QVKitExport.h>
#include <QVKit/Text/QVTextAttributeRun.h>

#include <QtCore/QList>
#include <QtCore/QString>

#include <optional>

namespace QVTextCorePrivate {

/** The converted text of a range and, for attributed sources, its runs moved to start at 0. */
struct CaseConversion
{
    QString text;
    std::optional<QList<QVTextAttributeRun>> runs;
};

enum class CaseConversionPath {
    /** Whole stretches at once where that provably matches the piece-by-piece walk. */
    Automatic,
    /** One case mapping per character (per word when capitalizing); the reference. */
    PieceByPiece,
};

/**
 * Converts the range of text (clipped to it) to the case type in the current
 * locale. With attributes (the attributed source of text), its runs over the
 * range are carried along. An unknown case type gives an empty text.
 */
QVKIT_EXPORT CaseConversion convertToCase(const QString &text, const QVAttributedString *attributes, QVCaseType caseType,
                                          QVRange range, CaseConversionPath path);

} // namespace QVTextCorePrivate

#pragma once

// Unicode classifications shared by the character sets and the string
// platform layer, on Qt's character database. Code points past U+10FFFF
// belong to no category.

#include <QtCore/QChar>

namespace QVUnicode {

constexpr char32_t LastCodePoint = 0x10FFFF;

inline bool isNewline(char32_t c)
{
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

inline bool isWhitespace(char32_t c)
{
    return c == 0x09 || (c <= LastCodePoint && QChar::category(c) == QChar::Separator_Space);
}

inline bool isLetterOrMark(char32_t c)
{
    if (c > LastCodePoint)
        return false;
    switch (QChar::category(c)) {
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Titlecase:
    case QChar::Letter_Modifier:
    case QChar::Letter_Other:
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
        return true;
    default:
        return false;
    }
}

inline bool isPunctuation(char32_t c)
{
    if (c > LastCodePoint)
        return false;
    switch (QChar::category(c)) {
    case QChar::Punctuation_Connector:
    case QChar::Punctuation_Dash:
    case QChar::Punctuation_Open:
    case QChar::Punctuation_Close:
    case QChar::Punctuation_InitialQuote:
    case QChar::Punctuation_FinalQuote:
    case QChar::Punctuation_Other:
        return true;
    default:
        return false;
    }
}

inline bool isDecimalDigit(char32_t c)
{
    return c <= LastCodePoint && QChar::category(c) == QChar::Number_DecimalDigit;
}

inline bool isNumber(char32_t c)
{
    if (c > LastCodePoint)
        return false;
    const QChar::Category category = QChar::category(c);
    return category == QChar::Number_DecimalDigit || category == QChar::Number_Letter
           || category == QChar::Number_Other;
}

} // namespace QVUnicode

#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QString>

#include <functional>
#include <memory>

/**
 * A set of Unicode code points, as a predicate: the ready-made sets below,
 * sets of given characters or ranges, and the inverse of any set.
 *
 * Membership is decided per code point; a surrogate pair is tested as the
 * code point it encodes, a lone surrogate as itself. Sets are cheap values.
 */
class QVKIT_EXPORT QVCharacterSet
{
public:
    /** The empty set. */
    QVCharacterSet();

    /** Space and tab, and the other horizontal spaces (Unicode Zs plus U+0009). */
    static QVCharacterSet whitespaceCharacterSet();
    /** Whitespace plus the newline characters. */
    static QVCharacterSet whitespaceAndNewlineCharacterSet();
    /** U+000A…U+000D, U+0085, U+2028, U+2029. */
    static QVCharacterSet newlineCharacterSet();
    /** Letters and marks (Unicode L* and M*). */
    static QVCharacterSet letterCharacterSet();
    /** Decimal digits (Unicode Nd). */
    static QVCharacterSet decimalDigitCharacterSet();
    /** Punctuation (Unicode P*). */
    static QVCharacterSet punctuationCharacterSet();
    /** Exactly the code points of the string. */
    static QVCharacterSet characterSetWithCharactersInString(const QString &characters);
    /** The code points first … first + length - 1. */
    static QVCharacterSet characterSetWithRange(char32_t first, char32_t length);

    /** Every code point not in this set. */
    QVCharacterSet invertedSet() const;

    bool characterIsMember(char32_t codePoint) const;

    /** True for two sets made the same way (the same ready-made set, the same characters); not a full set comparison. */
    bool operator==(const QVCharacterSet &other) const;

private:
    struct Data;
    explicit QVCharacterSet(std::shared_ptr<const Data> data);
    static std::shared_ptr<const Data> sharedData(int kind);
    std::shared_ptr<const Data> d;
};

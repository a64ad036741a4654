#include "QVKit/Platform/QVCharacterSet.h"

#include <QtCore/QChar>

#include <algorithm>
#include <vector>

namespace {

enum class SetKind {
    Characters, // the sorted code points below (empty for the empty set)
    Range,
    Whitespace,
    WhitespaceAndNewline,
    Newline,
    Letter,
    DecimalDigit,
    Punctuation,
};

constexpr char32_t LastCodePoint = 0x10FFFF;

bool isNewline(char32_t c)
{
    return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

bool isWhitespace(char32_t c)
{
    return c == 0x09 || (c <= LastCodePoint && QChar::category(c) == QChar::Separator_Space);
}

bool isLetterOrMark(char32_t c)
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

bool isPunctuation(char32_t c)
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

} // namespace

struct QVCharacterSet::Data
{
    SetKind kind = SetKind::Characters;
    bool inverted = false;
    std::vector<char32_t> codePoints; // sorted, unique
    char32_t first = 0;
    char32_t length = 0;

    bool contains(char32_t c) const
    {
        switch (kind) {
        case SetKind::Characters:
            return std::binary_search(codePoints.begin(), codePoints.end(), c);
        case SetKind::Range:
            // Unsigned difference: no overflow for a range reaching the top of char32_t.
            return c >= first && c - first < length;
        case SetKind::Whitespace:
            return isWhitespace(c);
        case SetKind::WhitespaceAndNewline:
            return isWhitespace(c) || isNewline(c);
        case SetKind::Newline:
            return isNewline(c);
        case SetKind::Letter:
            return isLetterOrMark(c);
        case SetKind::DecimalDigit:
            return c <= LastCodePoint && QChar::category(c) == QChar::Number_DecimalDigit;
        case SetKind::Punctuation:
            return isPunctuation(c);
        }
        return false;
    }
};

// The ready-made sets are shared: every copy points at the same immutable data.
std::shared_ptr<const QVCharacterSet::Data> QVCharacterSet::sharedData(int setKind)
{
    const auto kind = SetKind(setKind);
    auto make = [kind] {
        auto data = std::make_shared<QVCharacterSet::Data>();
        data->kind = kind;
        return std::shared_ptr<const QVCharacterSet::Data>(std::move(data));
    };
    switch (kind) {
    case SetKind::Whitespace: {
        static const auto set = make();
        return set;
    }
    case SetKind::WhitespaceAndNewline: {
        static const auto set = make();
        return set;
    }
    case SetKind::Newline: {
        static const auto set = make();
        return set;
    }
    case SetKind::Letter: {
        static const auto set = make();
        return set;
    }
    case SetKind::DecimalDigit: {
        static const auto set = make();
        return set;
    }
    case SetKind::Punctuation: {
        static const auto set = make();
        return set;
    }
    case SetKind::Characters:
    case SetKind::Range:
        break;
    }
    static const auto empty = std::shared_ptr<const QVCharacterSet::Data>(std::make_shared<QVCharacterSet::Data>());
    return empty;
}

QVCharacterSet::QVCharacterSet()
    : d(sharedData(int(SetKind::Characters)))
{
}

QVCharacterSet::QVCharacterSet(std::shared_ptr<const Data> data)
    : d(std::move(data))
{
}

QVCharacterSet QVCharacterSet::whitespaceCharacterSet()
{
    return QVCharacterSet(sharedData(int(SetKind::Whitespace)));
}

QVCharacterSet QVCharacterSet::whitespaceAndNewlineCharacterSet()
{
    return QVCharacterSet(sharedData(int(SetKind::WhitespaceAndNewline)));
}

QVCharacterSet QVCharacterSet::newlineCharacterSet()
{
    return QVCharacterSet(sharedData(int(SetKind::Newline)));
}

QVCharacterSet QVCharacterSet::letterCharacterSet()
{
    return QVCharacterSet(sharedData(int(SetKind::Letter)));
}

QVCharacterSet QVCharacterSet::decimalDigitCharacterSet()
{
    return QVCharacterSet(sharedData(int(SetKind::DecimalDigit)));
}

QVCharacterSet QVCharacterSet::punctuationCharacterSet()
{
    return QVCharacterSet(sharedData(int(SetKind::Punctuation)));
}

QVCharacterSet QVCharacterSet::characterSetWithCharactersInString(const QString &characters)
{
    auto data = std::make_shared<Data>();
    data->kind = SetKind::Characters;
    const qsizetype size = characters.size();
    data->codePoints.reserve(size);
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t unit = characters.at(i).unicode();
        // A lone surrogate is kept as itself, so it can be searched for.
        if (QChar::isHighSurrogate(unit) && i + 1 < size && QChar::isLowSurrogate(characters.at(i + 1).unicode())) {
            data->codePoints.push_back(QChar::surrogateToUcs4(unit, characters.at(i + 1).unicode()));
            ++i;
        } else {
            data->codePoints.push_back(unit);
        }
    }
    std::sort(data->codePoints.begin(), data->codePoints.end());
    data->codePoints.erase(std::unique(data->codePoints.begin(), data->codePoints.end()), data->codePoints.end());
    data->codePoints.shrink_to_fit();
    return QVCharacterSet(std::move(data));
}

QVCharacterSet QVCharacterSet::characterSetWithRange(char32_t first, char32_t length)
{
    auto data = std::make_shared<Data>();
    data->kind = SetKind::Range;
    data->first = first;
    data->length = length;
    return QVCharacterSet(std::move(data));
}

QVCharacterSet QVCharacterSet::invertedSet() const
{
    auto data = std::make_shared<Data>(*d);
    data->inverted = !d->inverted;
    return QVCharacterSet(std::move(data));
}

bool QVCharacterSet::characterIsMember(char32_t codePoint) const
{
    return d->contains(codePoint) != d->inverted;
}

bool QVCharacterSet::operator==(const QVCharacterSet &other) const
{
    if (d == other.d)
        return true;
    if (d->kind != other.d->kind || d->inverted != other.d->inverted)
        return false;
    switch (d->kind) {
    case SetKind::Characters:
        return d->codePoints == other.d->codePoints;
    case SetKind::Range:
        // Two empty ranges hold the same (no) code points wherever they start.
        return d->length == other.d->length && (d->length == 0 || d->first == other.d->first);
    default:
        return true;
    }
}

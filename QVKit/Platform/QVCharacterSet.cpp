#include "QVKit/Platform/QVCharacterSet.h"

#include "QVKit/Platform/QVUnicodeCategories_p.h"

#include <QtCore/QChar>

#include <algorithm>
#include <array>
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
            return QVUnicode::isWhitespace(c);
        case SetKind::WhitespaceAndNewline:
            return QVUnicode::isWhitespace(c) || QVUnicode::isNewline(c);
        case SetKind::Newline:
            return QVUnicode::isNewline(c);
        case SetKind::Letter:
            return QVUnicode::isLetterOrMark(c);
        case SetKind::DecimalDigit:
            return QVUnicode::isDecimalDigit(c);
        case SetKind::Punctuation:
            return QVUnicode::isPunctuation(c);
        }
        return false;
    }
};

// The ready-made sets are shared: every copy points at the same immutable
// data, made once on first use of any of them.
std::shared_ptr<const QVCharacterSet::Data> QVCharacterSet::sharedData(int setKind)
{
    constexpr int kindCount = int(SetKind::Punctuation) + 1;
    static const auto sets = [] {
        std::array<std::shared_ptr<const QVCharacterSet::Data>, kindCount> made;
        for (int kind = 0; kind < kindCount; ++kind) {
            auto data = std::make_shared<QVCharacterSet::Data>();
            // Characters and ranges are made per set; their shared form is the empty set.
            if (kind != int(SetKind::Range))
                data->kind = SetKind(kind);
            made[size_t(kind)] = std::move(data);
        }
        return made;
    }();
    return sets[size_t(setKind)];
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

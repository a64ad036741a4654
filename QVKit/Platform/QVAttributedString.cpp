#include "QVKit/Platform/QVAttributedString.h"

#include "QVKit/Platform/QVFormat.h"
#include "QVKit/Platform/QVLog.h"

#include <QtCore/QSharedData>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// One stretch of attributes: it starts at `start` and reaches to the next
// stretch's start, or to the end of the text for the last one.
struct Stretch
{
    quint64 start = 0;
    QVTextAttributes attributes;
};

// Two values of one attribute are the same when both are absent or both are
// present and equal.
bool sameValue(const QVariant &a, const QVariant &b)
{
    if (!a.isValid() || !b.isValid())
        return a.isValid() == b.isValid();
    return a == b;
}

// Invalid values mean "no value": dropping them keeps equal dictionaries equal.
QVTextAttributes withoutInvalidValues(const QVTextAttributes &attributes)
{
    QVTextAttributes result = attributes;
    for (auto it = result.begin(); it != result.end();) {
        if (it.value().isValid())
            ++it;
        else
            it = result.erase(it);
    }
    return result;
}

const QVTextAttributes &emptyAttributes()
{
    static const QVTextAttributes empty;
    return empty;
}

void logRangeOutOfBounds(const char *operation, QVRange range, quint64 length)
{
    QVLog("%s: range %@ out of bounds for length %llu. Fix this.", operation, QVRangeToString(range), length);
}

// The part of the range inside [0, length), as [start, end).
std::pair<quint64, quint64> clippedBounds(QVRange range, quint64 length)
{
    const quint64 start = std::min(range.location, length);
    const quint64 end = start + std::min(range.length, length - start);
    return {start, end};
}

} // namespace

class QVAttributedStringData : public QSharedData
{
public:
    QString text;

    // The stretches, in text order, cover [0, length) without gaps (none for
    // empty text) and no two neighbours have equal dictionaries.
    //
    // They are kept in a gap buffer: `store` holds them with an unused gap at
    // [gapBegin, gapEnd), placed where the last edit happened. Stretches before
    // the gap hold their start; those after it hold their start minus the
    // length of the text (wrapping), so that they follow a text edit at the gap
    // without being touched. An edit moves the gap to itself first, which costs
    // only the stretches between the two edits: edits that go through the text
    // in order, forwards or backwards, never move the whole list.
    std::vector<Stretch> store;
    size_t gapBegin = 0;
    size_t gapEnd = 0;

    quint64 length() const { return quint64(text.size()); }
    size_t gapLength() const { return gapEnd - gapBegin; }
    size_t count() const { return store.size() - gapLength(); }
    size_t physical(size_t index) const { return index < gapBegin ? index : index + gapLength(); }

    quint64 startOf(size_t index) const
    {
        return index < gapBegin ? store[index].start : store[index + gapLength()].start + length();
    }
    quint64 endOf(size_t index) const { return index + 1 < count() ? startOf(index + 1) : length(); }
    const QVTextAttributes &attributesOf(size_t index) const { return store[physical(index)].attributes; }
    QVTextAttributes &attributesOf(size_t index) { return store[physical(index)].attributes; }

    // The stretch holding the position; position < length().
    size_t stretchIndexAt(quint64 position) const
    {
        // Edits tend to follow one another, so look beside the gap, where the
        // last one happened, before searching.
        const size_t total = count();
        if (gapBegin > 0 && startOf(gapBegin - 1) <= position) {
            if (gapBegin == total || startOf(gapBegin) > position)
                return gapBegin - 1;
            if (gapBegin + 1 == total || startOf(gapBegin + 1) > position)
                return gapBegin;
        }
        // The last stretch that starts at or before the position; stretch 0 starts at 0.
        size_t low = 0;
        size_t high = total;
        while (high - low > 1) {
            const size_t middle = low + (high - low) / 2;
            if (startOf(middle) <= position)
                low = middle;
            else
                high = middle;
        }
        return low;
    }

    // Moves the gap so that it follows the first `index` stretches.
    void moveGap(size_t index)
    {
        const quint64 textLength = length();
        if (index < gapBegin) {
            const size_t moved = gapBegin - index;
            std::move_backward(store.begin() + qsizetype(index), store.begin() + qsizetype(gapBegin),
                               store.begin() + qsizetype(gapEnd));
            gapBegin -= moved;
            gapEnd -= moved;
            for (size_t i = gapEnd; i < gapEnd + moved; ++i)
                store[i].start -= textLength;
        } else if (index > gapBegin) {
            const size_t moved = index - gapBegin;
            std::move(store.begin() + qsizetype(gapEnd), store.begin() + qsizetype(gapEnd + moved),
                      store.begin() + qsizetype(gapBegin));
            for (size_t i = gapBegin; i < gapBegin + moved; ++i)
                store[i].start += textLength;
            gapBegin += moved;
            gapEnd += moved;
        }
    }

    // Makes the gap hold at least `needed` stretches, growing it geometrically.
    void reserveGap(size_t needed)
    {
        if (gapLength() >= needed)
            return;
        resizeGap(needed + std::max<size_t>(16, count()));
    }

    void resizeGap(size_t newGapLength)
    {
        const size_t tail = store.size() - gapEnd;
        std::vector<Stretch> resized(gapBegin + newGapLength + tail);
        std::move(store.begin(), store.begin() + qsizetype(gapBegin), resized.begin());
        std::move(store.begin() + qsizetype(gapEnd), store.end(), resized.begin() + qsizetype(gapBegin + newGapLength));
        store = std::move(resized);
        gapEnd = gapBegin + newGapLength;
    }

    // Inserts stretches at the index; the caller fills them in, in the order given.
    void insertAt(size_t index, quint64 start, const QVTextAttributes &attributes)
    {
        moveGap(index);
        reserveGap(1);
        store[gapBegin++] = Stretch{start, attributes};
    }

    // Removes the stretches first..last (exclusive).
    void eraseRange(size_t first, size_t last)
    {
        if (first >= last)
            return;
        moveGap(last);
        for (size_t i = first; i < last; ++i)
            store[i] = Stretch{};
        gapBegin = first;
        // Give back the room of a list that has mostly gone, as after clearing a long text.
        if (gapLength() > 2 * count() + 1024)
            resizeGap(count() / 2 + 16);
    }

    // Makes a stretch start at the position (0 <= position <= length()) and
    // returns its index; the length itself gives the number of stretches.
    size_t splitAt(quint64 position)
    {
        if (position >= length())
            return count();
        const size_t index = stretchIndexAt(position);
        if (startOf(index) == position)
            return index;
        // Copied first: inserting may move the stretch it comes from.
        const QVTextAttributes attributes = attributesOf(index);
        insertAt(index + 1, position, attributes);
        return index + 1;
    }

    // Merges equal neighbours at the boundaries before the stretches first..last
    // (inclusive), in one pass so that a wide edit does not erase one by one.
    void mergeBoundaries(size_t first, size_t last)
    {
        if (count() < 2)
            return;
        first = std::max<size_t>(first, 1);
        last = std::min(last, count() - 1);
        if (first > last)
            return;
        // With the gap after them, the stretches up to `last` are in place and hold their starts.
        moveGap(last + 1);
        size_t write = first;
        for (size_t read = first; read <= last; ++read) {
            if (store[read].attributes == store[write - 1].attributes)
                continue;
            if (write != read)
                store[write] = std::move(store[read]);
            ++write;
        }
        eraseRange(write, last + 1);
    }

    // Replaces [location, location + removedLength) by the text with its own
    // stretches, source(i) giving the start (relative to the text) and the
    // attributes of stretch i. The range must lie inside the text.
    template <typename Source>
    void replace(quint64 location, quint64 removedLength, const QString &replacement, size_t sourceCount,
                 Source source)
    {
        const size_t first = splitAt(location);
        const size_t last = splitAt(location + removedLength);
        eraseRange(first, last);
        moveGap(first);
        reserveGap(sourceCount);
        for (size_t i = 0; i < sourceCount; ++i) {
            const auto [start, attributes] = source(i);
            store[gapBegin++] = Stretch{start + location, attributes};
        }
        // The stretches after the gap count from the end, so they move with the text.
        text.replace(qsizetype(location), qsizetype(removedLength), replacement);
        mergeBoundaries(first, first + sourceCount);
    }

    // Applies the change to every stretch of [location, end), which lies inside
    // the text and is not empty.
    template <typename Change>
    void changeAttributes(quint64 location, quint64 end, Change change)
    {
        const size_t first = splitAt(location);
        const size_t last = splitAt(end);
        for (size_t i = first; i < last; ++i)
            change(attributesOf(i));
        mergeBoundaries(first, last);
    }
};

namespace {

// One empty value shared by default-constructed and moved-from strings, so
// that neither allocates and a moved-from string is still a usable empty one.
const QSharedDataPointer<QVAttributedStringData> &sharedEmptyData()
{
    static const QSharedDataPointer<QVAttributedStringData> empty(new QVAttributedStringData);
    return empty;
}

} // namespace

QVAttributedString::QVAttributedString() : d(sharedEmptyData()) {}

QVAttributedString::QVAttributedString(const QString &string, const QVTextAttributes &attributes)
    : d(new QVAttributedStringData)
{
    d->text = string;
    if (!string.isEmpty())
        d->insertAt(0, 0, withoutInvalidValues(attributes));
}

QVAttributedString::QVAttributedString(const QVAttributedString &other) = default;
QVAttributedString::QVAttributedString(QVAttributedString &&other) noexcept : d(sharedEmptyData())
{
    d.swap(other.d);
}

QVAttributedString &QVAttributedString::operator=(const QVAttributedString &other) = default;

QVAttributedString &QVAttributedString::operator=(QVAttributedString &&other) noexcept
{
    d.swap(other.d);
    return *this;
}
QVAttributedString::~QVAttributedString() = default;

QString QVAttributedString::string() const
{
    return d->text;
}

quint64 QVAttributedString::length() const
{
    return d->length();
}

QVTextAttributes QVAttributedString::attributesAtIndex(quint64 index, QVRange *effectiveRange) const
{
    return attributesAtIndex(index, effectiveRange, QVMakeRange(0, d->length()));
}

QVTextAttributes QVAttributedString::attributesAtIndex(quint64 index, QVRange *longestEffectiveRange,
                                                       QVRange rangeLimit) const
{
    const auto [limitStart, limitEnd] = clippedBounds(rangeLimit, d->length());
    if (index >= d->length()) {
        if (longestEffectiveRange)
            *longestEffectiveRange = QVMakeRange(index, 0);
        return {};
    }
    const size_t stretch = d->stretchIndexAt(index);
    if (longestEffectiveRange) {
        const quint64 start = std::max(d->startOf(stretch), limitStart);
        const quint64 end = std::min(d->endOf(stretch), limitEnd);
        // An index outside the limit has no stretch inside it.
        *longestEffectiveRange = index >= start && index < end ? QVMakeRange(start, end - start)
                                                                : QVMakeRange(index, 0);
    }
    return d->attributesOf(stretch);
}

QVariant QVAttributedString::attributeAtIndex(const QString &name, quint64 index, QVRange *effectiveRange) const
{
    return attributeAtIndex(name, index, effectiveRange, QVMakeRange(0, d->length()));
}

QVariant QVAttributedString::attributeAtIndex(const QString &name, quint64 index, QVRange *longestEffectiveRange,
                                              QVRange rangeLimit) const
{
    if (index >= d->length()) {
        if (longestEffectiveRange)
            *longestEffectiveRange = QVMakeRange(index, 0);
        return {};
    }
    const size_t stretch = d->stretchIndexAt(index);
    const QVariant value = d->attributesOf(stretch).value(name);
    if (longestEffectiveRange) {
        const auto [limitStart, limitEnd] = clippedBounds(rangeLimit, d->length());
        if (index < limitStart || index >= limitEnd) {
            *longestEffectiveRange = QVMakeRange(index, 0);
            return value;
        }
        // Widen across neighbouring stretches where only other attributes
        // change, but no further than the limit.
        size_t first = stretch;
        while (first > 0 && d->startOf(first) > limitStart
               && sameValue(d->attributesOf(first - 1).value(name), value))
            --first;
        size_t last = stretch;
        while (last + 1 < d->count() && d->startOf(last + 1) < limitEnd
               && sameValue(d->attributesOf(last + 1).value(name), value))
            ++last;
        const quint64 start = std::max(d->startOf(first), limitStart);
        const quint64 end = std::min(d->endOf(last), limitEnd);
        *longestEffectiveRange = QVMakeRange(start, end - start);
    }
    return value;
}

void QVAttributedString::enumerateAttribute(const QString &name, QVRange range,
                                            QVAttributedStringEnumerationOptions options,
                                            const AttributeBlock &block) const
{
    // Holding the data keeps the walk valid even if the block edits this string.
    const QSharedDataPointer<QVAttributedStringData> data = d;
    const auto [start, end] = clippedBounds(range, data->length());
    if (start == end || !block)
        return;
    const size_t first = data->stretchIndexAt(start);
    const size_t last = data->stretchIndexAt(end - 1);
    bool stop = false;
    if (options & QVAttributedStringEnumerationReverse) {
        size_t i = last;
        while (!stop) {
            const QVariant value = data->attributesOf(i).value(name);
            const quint64 runEnd = std::min(data->endOf(i), end);
            while (i > first && sameValue(data->attributesOf(i - 1).value(name), value))
                --i;
            const quint64 runStart = std::max(data->startOf(i), start);
            block(value, QVMakeRange(runStart, runEnd - runStart), &stop);
            if (i == first)
                break;
            --i;
        }
    } else {
        size_t i = first;
        while (!stop && i <= last) {
            const QVariant value = data->attributesOf(i).value(name);
            const quint64 runStart = std::max(data->startOf(i), start);
            while (i < last && sameValue(data->attributesOf(i + 1).value(name), value))
                ++i;
            const quint64 runEnd = std::min(data->endOf(i), end);
            block(value, QVMakeRange(runStart, runEnd - runStart), &stop);
            ++i;
        }
    }
}

void QVAttributedString::enumerateAttributes(QVRange range, QVAttributedStringEnumerationOptions options,
                                             const AttributesBlock &block) const
{
    const QSharedDataPointer<QVAttributedStringData> data = d;
    // Named variables, not a structured binding: the lambda below captures them.
    const auto bounds = clippedBounds(range, data->length());
    const quint64 start = bounds.first;
    const quint64 end = bounds.second;
    if (start == end || !block)
        return;
    const size_t first = data->stretchIndexAt(start);
    const size_t last = data->stretchIndexAt(end - 1);
    const auto yield = [&](size_t i, bool *stop) {
        const quint64 runStart = std::max(data->startOf(i), start);
        const quint64 runEnd = std::min(data->endOf(i), end);
        block(data->attributesOf(i), QVMakeRange(runStart, runEnd - runStart), stop);
    };
    bool stop = false;
    if (options & QVAttributedStringEnumerationReverse) {
        for (size_t i = last + 1; !stop && i-- > first;)
            yield(i, &stop);
    } else {
        for (size_t i = first; !stop && i <= last; ++i)
            yield(i, &stop);
    }
}

QVAttributedString QVAttributedString::attributedSubstringFromRange(QVRange range) const
{
    const auto [start, end] = clippedBounds(range, d->length());
    QVAttributedString result;
    if (start == end)
        return result;
    QVAttributedStringData *out = result.d.data();
    out->text = d->text.mid(qsizetype(start), qsizetype(end - start));
    const size_t first = d->stretchIndexAt(start);
    const size_t last = d->stretchIndexAt(end - 1);
    out->reserveGap(last - first + 1);
    for (size_t i = first; i <= last; ++i)
        out->insertAt(i - first, std::max(d->startOf(i), start) - start, d->attributesOf(i));
    return result;
}

void QVAttributedString::replaceCharactersInRange(QVRange range, const QString &string)
{
    const QVAttributedStringData *current = d.constData();
    const quint64 length = current->length();
    if (range.location > length || range.length > length - range.location) {
        logRangeOutOfBounds("QVAttributedString::replaceCharactersInRange", range, length);
        return;
    }
    if (range.length == 0 && string.isEmpty())
        return;
    // Plain text continues the attributes of the text it replaces or follows.
    Stretch inherited;
    if (length > 0) {
        const quint64 source = range.length > 0 || range.location == 0 ? range.location : range.location - 1;
        inherited.attributes = current->attributesOf(current->stretchIndexAt(source));
    }
    d->replace(range.location, range.length, string, string.isEmpty() ? 0 : 1,
               [&inherited](size_t) { return std::pair<quint64, const QVTextAttributes &>(0, inherited.attributes); });
}

void QVAttributedString::replaceCharactersInRange(QVRange range, const QVAttributedString &string)
{
    const quint64 length = d.constData()->length();
    if (range.location > length || range.length > length - range.location) {
        logRangeOutOfBounds("QVAttributedString::replaceCharactersInRange", range, length);
        return;
    }
    // A copy of the argument keeps its stretches intact when it is this string.
    const QVAttributedString source = string;
    if (range.length == 0 && source.isEmpty())
        return;
    const QVAttributedStringData *from = source.d.constData();
    d->replace(range.location, range.length, from->text, from->count(), [from](size_t i) {
        return std::pair<quint64, const QVTextAttributes &>(from->startOf(i), from->attributesOf(i));
    });
}

void QVAttributedString::insertAttributedString(const QVAttributedString &string, quint64 index)
{
    const quint64 length = d.constData()->length();
    if (index > length) {
        QVLog("%s: index %llu out of bounds for length %llu. Fix this.", "QVAttributedString::insertAttributedString",
              index, length);
        return;
    }
    replaceCharactersInRange(QVMakeRange(index, 0), string);
}

void QVAttributedString::appendAttributedString(const QVAttributedString &string)
{
    replaceCharactersInRange(QVMakeRange(d.constData()->length(), 0), string);
}

void QVAttributedString::deleteCharactersInRange(QVRange range)
{
    const quint64 length = d.constData()->length();
    if (range.location > length || range.length > length - range.location) {
        logRangeOutOfBounds("QVAttributedString::deleteCharactersInRange", range, length);
        return;
    }
    if (range.length == 0)
        return;
    d->replace(range.location, range.length, QString(), 0,
               [](size_t) { return std::pair<quint64, const QVTextAttributes &>(0, emptyAttributes()); });
}

void QVAttributedString::setAttributedString(const QVAttributedString &string)
{
    d = string.d;
}

void QVAttributedString::setAttributes(const QVTextAttributes &attributes, QVRange range)
{
    const quint64 length = d.constData()->length();
    if (range.location > length || range.length > length - range.location) {
        logRangeOutOfBounds("QVAttributedString::setAttributes", range, length);
        return;
    }
    if (range.length == 0)
        return;
    QVAttributedStringData *data = d.data();
    // The range becomes one stretch, so clearing a long text collapses it at once.
    const size_t first = data->splitAt(range.location);
    const size_t last = data->splitAt(QVMaxRange(range));
    data->attributesOf(first) = withoutInvalidValues(attributes);
    data->eraseRange(first + 1, last);
    data->mergeBoundaries(first, first + 1);
}

void QVAttributedString::addAttribute(const QString &name, const QVariant &value, QVRange range)
{
    const quint64 length = d.constData()->length();
    if (range.location > length || range.length > length - range.location) {
        logRangeOutOfBounds("QVAttributedString::addAttribute", range, length);
        return;
    }
    if (range.length == 0)
        return;
    if (!value.isValid()) {
        d->changeAttributes(range.location, QVMaxRange(range),
                            [&name](QVTextAttributes &attributes) { attributes.remove(name); });
        return;
    }
    d->changeAttributes(range.location, QVMaxRange(range),
                        [&name, &value](QVTextAttributes &attributes) { attributes.insert(name, value); });
}

void QVAttributedString::addAttributes(const QVTextAttributes &attributes, QVRange range)
{
    const quint64 length = d.constData()->length();
    if (range.location > length || range.length > length - range.location) {
        logRangeOutOfBounds("QVAttributedString::addAttributes", range, length);
        return;
    }
    if (range.length == 0 || attributes.isEmpty())
        return;
    d->changeAttributes(range.location, QVMaxRange(range), [&attributes](QVTextAttributes &target) {
        for (auto it = attributes.cbegin(); it != attributes.cend(); ++it) {
            if (it.value().isValid())
                target.insert(it.key(), it.value());
            else
                target.remove(it.key());
        }
    });
}

void QVAttributedString::removeAttribute(const QString &name, QVRange range)
{
    const quint64 length = d.constData()->length();
    if (range.location > length || range.length > length - range.location) {
        logRangeOutOfBounds("QVAttributedString::removeAttribute", range, length);
        return;
    }
    if (range.length == 0)
        return;
    d->changeAttributes(range.location, QVMaxRange(range),
                        [&name](QVTextAttributes &attributes) { attributes.remove(name); });
}

bool QVAttributedString::operator==(const QVAttributedString &other) const
{
    if (d == other.d)
        return true;
    if (d->text != other.d->text)
        return false;
    // Walk both stretch lists together, comparing the dictionaries on each
    // piece where neither changes, so that how the stretches were cut does not matter.
    const QVAttributedStringData *a = d.constData();
    const QVAttributedStringData *b = other.d.constData();
    size_t i = 0;
    size_t j = 0;
    while (i < a->count() && j < b->count()) {
        if (a->attributesOf(i) != b->attributesOf(j))
            return false;
        const quint64 endA = a->endOf(i);
        const quint64 endB = b->endOf(j);
        if (endA <= endB)
            ++i;
        if (endB <= endA)
            ++j;
    }
    return true;
}

QString QVAttributedString::description() const
{
    QString text = d->text;
    for (size_t i = 0; i < d->count(); ++i) {
        const quint64 start = d->startOf(i);
        text += u' ' + QVRangeToString(QVMakeRange(start, d->endOf(i) - start)) + u' '
                + QVDescription(QVariant(d->attributesOf(i)));
    }
    return text;
}

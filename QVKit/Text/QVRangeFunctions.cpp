#include <QVKit/Text/QVRangeFunctions.h>

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QFuture>
#include <QtCore/QThreadPool>

#include <algorithm>
#include <bit>
#include <iterator>
#include <limits>
#include <numeric>
#include <vector>

namespace {

constexpr QVRangeSanitizeOptions AllSanitizeOptions = QVRangeSanitizeOptionSort | QVRangeSanitizeOptionRemoveEmpty
    | QVRangeSanitizeOptionRemoveNotFound | QVRangeSanitizeOptionMerge;

// Lists of this many ranges or more are filtered and sorted on several threads.
constexpr qsizetype ConcurrencyThreshold = 100;
// Each thread gets at least this many ranges, so a list at the threshold splits in two.
constexpr qsizetype MinimumChunkSize = ConcurrencyThreshold / 2;
// The bucket sort of long lists uses at most 2^16 buckets; buckets of up to
// this many ranges are insertion-sorted.
constexpr int MaximumBucketBits = 16;
constexpr qsizetype InsertionSortLimit = 32;

bool wraps(QVRange range)
{
    return QVMaxRange(range) < range.location;
}

bool lessRange(const QVRange &a, const QVRange &b)
{
    return a.location < b.location || (a.location == b.location && a.length < b.length);
}

// Overlapping (a non-empty intersection) or touching (current ends where next
// starts). A range that wraps past 2^64 - 1 never merges: its union with a
// neighbour, computed in wrapping arithmetic, would silently lose it.
bool mergeable(QVRange current, QVRange next)
{
    if (wraps(current) || wraps(next))
        return false;
    return QVIntersectionRange(current, next).length != 0 || QVMaxRange(current) == next.location;
}

bool intersects(QVRange a, QVRange b)
{
    return !wraps(a) && !wraps(b) && QVIntersectionRange(a, b).length != 0;
}

// A power of two (so the merge tree pairs every run), at least 2 and at most
// one chunk per pool thread.
int chunkCountFor(qsizetype count)
{
    const qsizetype threads = std::max(2, QThreadPool::globalInstance()->maxThreadCount());
    const qsizetype wanted = std::min(threads, count / MinimumChunkSize);
    int chunks = 2;
    while (chunks * 2 <= wanted)
        chunks *= 2;
    return chunks;
}

qsizetype chunkBegin(qsizetype count, int chunks, int index)
{
    return count * index / chunks;
}

// Runs work(0) … work(count - 1), all but the first on the global pool, and
// returns when all are done. Waiting on a future that has not started yet
// runs it on this thread, so a busy or nested pool cannot deadlock here.
template <typename Work>
void runConcurrently(int count, const Work &work)
{
    std::vector<QFuture<void>> futures;
    futures.reserve(size_t(count));
    for (int index = 1; index < count; ++index)
        futures.push_back(QtConcurrent::run([&work, index] { work(index); }));
    work(0);
    for (QFuture<void> &future : futures)
        future.waitForFinished();
}

struct FilterRule
{
    bool removeEmpty = false;
    bool removeNotFound = false;

    bool drops(const QVRange &range) const
    {
        return (removeEmpty && range.length == 0) || (removeNotFound && range.location == QVNotFound);
    }
};

// How many ranges the rule drops, counted on several threads for long lists.
qsizetype countDropped(const QVRange *source, qsizetype count, FilterRule rule)
{
    if (!rule.removeEmpty && !rule.removeNotFound)
        return 0;
    const auto drops = [rule](const QVRange &range) { return rule.drops(range); };
    if (count < ConcurrencyThreshold)
        return std::count_if(source, source + count, drops);
    const int chunks = chunkCountFor(count);
    std::vector<qsizetype> dropped(static_cast<size_t>(chunks), 0);
    runConcurrently(chunks, [&](int chunk) {
        dropped[size_t(chunk)] = std::count_if(source + chunkBegin(count, chunks, chunk),
                                               source + chunkBegin(count, chunks, chunk + 1), drops);
    });
    return std::accumulate(dropped.cbegin(), dropped.cend(), qsizetype(0));
}

// Whether the ranges the rule keeps are already in order.
bool keptAreSorted(const QVRange *source, qsizetype count, FilterRule rule)
{
    const QVRange *previous = nullptr;
    for (qsizetype index = 0; index < count; ++index) {
        if (rule.drops(source[index]))
            continue;
        if (previous && lessRange(source[index], *previous))
            return false;
        previous = source + index;
    }
    return true;
}

// The ranges the rule keeps, in their order. Long lists are counted chunk by
// chunk first, so that each thread knows where its survivors go.
QVRangeList filteredCopy(const QVRange *source, qsizetype count, FilterRule rule)
{
    const auto keeps = [rule](const QVRange &range) { return !rule.drops(range); };
    if (count < ConcurrencyThreshold) {
        QVRangeList result;
        result.reserve(count);
        std::copy_if(source, source + count, std::back_inserter(result), keeps);
        return result;
    }
    const int chunks = chunkCountFor(count);
    std::vector<qsizetype> kept(size_t(chunks) + 1, 0);
    runConcurrently(chunks, [&](int chunk) {
        kept[size_t(chunk) + 1] = std::count_if(source + chunkBegin(count, chunks, chunk),
                                                source + chunkBegin(count, chunks, chunk + 1), keeps);
    });
    for (int chunk = 0; chunk < chunks; ++chunk)
        kept[size_t(chunk) + 1] += kept[size_t(chunk)];
    QVRangeList result(kept[size_t(chunks)]);
    QVRange *target = result.data();
    runConcurrently(chunks, [&](int chunk) {
        std::copy_if(source + chunkBegin(count, chunks, chunk), source + chunkBegin(count, chunks, chunk + 1),
                     target + kept[size_t(chunk)], keeps);
    });
    return result;
}

// Insertion sort for the short buckets of the bucket sort: stable, and
// fastest on a handful of ranges.
void insertionSort(QVRange *begin, QVRange *end)
{
    for (QVRange *next = begin + 1; next < end; ++next) {
        const QVRange range = *next;
        QVRange *slot = next;
        for (; slot > begin && lessRange(range, slot[-1]); --slot)
            *slot = slot[-1];
        *slot = range;
    }
}

// Sorts the ranges of source that the rule keeps into a new list, leaving
// source untouched; copying while filtering saves a pass and a buffer.
//
// Long lists are bucket-sorted on all threads: the high bits of the location
// (relative to the smallest) pick one of up to 2^16 buckets, so that a bucket
// holds about 16 ranges. Each chunk of the source counts its ranges per
// bucket, then writes them, in order, to its own slots of each bucket; the
// buckets, which now follow each other in key order, are sorted in place by
// groups on all threads. Every step keeps the order of equal ranges, so the
// result equals a one-thread std::stable_sort (and ranges that compare equal
// are identical anyway, so no caller could tell).
QVRangeList sortedCopy(const QVRange *source, qsizetype count, FilterRule rule)
{
    const auto keeps = [rule](const QVRange &range) { return !rule.drops(range); };
    if (count < ConcurrencyThreshold) {
        QVRangeList result;
        result.reserve(count);
        std::copy_if(source, source + count, std::back_inserter(result), keeps);
        std::stable_sort(result.begin(), result.end(), lessRange);
        return result;
    }

    const int chunks = chunkCountFor(count);
    const auto chunkRange = [&](int chunk) {
        return std::pair(source + chunkBegin(count, chunks, chunk), source + chunkBegin(count, chunks, chunk + 1));
    };

    struct ChunkSummary
    {
        qsizetype kept = 0;
        quint64 lowest = std::numeric_limits<quint64>::max();
        quint64 highest = 0;
    };
    std::vector<ChunkSummary> summaries(static_cast<size_t>(chunks));
    runConcurrently(chunks, [&](int chunk) {
        ChunkSummary summary;
        const auto [begin, end] = chunkRange(chunk);
        for (const QVRange *range = begin; range < end; ++range) {
            if (rule.drops(*range))
                continue;
            ++summary.kept;
            summary.lowest = std::min(summary.lowest, range->location);
            summary.highest = std::max(summary.highest, range->location);
        }
        summaries[size_t(chunk)] = summary;
    });
    qsizetype total = 0;
    quint64 lowest = std::numeric_limits<quint64>::max();
    quint64 highest = 0;
    for (const ChunkSummary &summary : summaries) {
        total += summary.kept;
        lowest = std::min(lowest, summary.lowest);
        highest = std::max(highest, summary.highest);
    }
    if (total == 0)
        return QVRangeList();

    const int bucketBits = std::clamp(int(std::bit_width(quint64(total))) - 4, 1, MaximumBucketBits);
    const quint64 span = highest - lowest;
    const int shift = std::max(0, int(std::bit_width(span)) - bucketBits);
    const qsizetype bucketCount = qsizetype(span >> shift) + 1;
    const auto bucketOf = [lowest, shift](const QVRange &range) { return qsizetype((range.location - lowest) >> shift); };

    // slots[chunk * bucketCount + bucket]: first the chunk's count for the
    // bucket, then where the chunk's next range for that bucket goes.
    std::vector<qsizetype> slots(size_t(chunks) * size_t(bucketCount), 0);
    runConcurrently(chunks, [&](int chunk) {
        qsizetype *counts = slots.data() + qsizetype(chunk) * bucketCount;
        const auto [begin, end] = chunkRange(chunk);
        for (const QVRange *range = begin; range < end; ++range) {
            if (!rule.drops(*range))
                ++counts[bucketOf(*range)];
        }
    });
    std::vector<qsizetype> bucketStart(size_t(bucketCount) + 1);
    qsizetype running = 0;
    for (qsizetype bucket = 0; bucket < bucketCount; ++bucket) {
        bucketStart[size_t(bucket)] = running;
        for (int chunk = 0; chunk < chunks; ++chunk) {
            qsizetype &slot = slots[size_t(chunk) * size_t(bucketCount) + size_t(bucket)];
            const qsizetype inChunk = slot;
            slot = running;
            running += inChunk;
        }
    }
    bucketStart[size_t(bucketCount)] = running;

    QVRangeList result(total);
    QVRange *target = result.data();
    runConcurrently(chunks, [&](int chunk) {
        qsizetype *next = slots.data() + qsizetype(chunk) * bucketCount;
        const auto [begin, end] = chunkRange(chunk);
        for (const QVRange *range = begin; range < end; ++range) {
            if (!rule.drops(*range))
                target[next[bucketOf(*range)]++] = *range;
        }
    });

    // Each thread sorts the buckets that start in its share of the result.
    runConcurrently(chunks, [&](int chunk) {
        const auto firstBucket = [&](int share) {
            return qsizetype(std::lower_bound(bucketStart.cbegin(), bucketStart.cbegin() + bucketCount,
                                              total * share / chunks)
                             - bucketStart.cbegin());
        };
        const qsizetype last = firstBucket(chunk + 1);
        for (qsizetype bucket = firstBucket(chunk); bucket < last; ++bucket) {
            QVRange *begin = target + bucketStart[size_t(bucket)];
            QVRange *end = target + bucketStart[size_t(bucket) + 1];
            if (end - begin <= InsertionSortLimit)
                insertionSort(begin, end);
            else
                std::stable_sort(begin, end, lessRange);
        }
    });
    return result;
}

// The merge walk: a current range absorbs each following range that overlaps
// or touches it. When no neighbours merge, ranges is left alone (no
// allocation); a list this function owns is rewritten in place.
void mergeRanges(QVRangeList &ranges, bool owned)
{
    const qsizetype count = ranges.size();
    const QVRange *source = ranges.constData();
    qsizetype next = 1;
    while (next < count && !mergeable(source[next - 1], source[next]))
        ++next;
    if (next == count)
        return;

    QVRangeList fresh;
    QVRange *target = nullptr;
    if (owned) {
        // The list is ours alone, so data() does not detach: source and target
        // are the same buffer, and the write position never passes the read one.
        target = ranges.data();
    } else {
        fresh = QVRangeList(count);
        target = fresh.data();
        std::copy(source, source + next - 1, target);
    }
    qsizetype written = next - 1;
    QVRange current = source[next - 1];
    for (; next < count; ++next) {
        const QVRange range = source[next];
        if (mergeable(current, range)) {
            current = QVUnionRange(current, range);
        } else {
            target[written++] = current;
            current = range;
        }
    }
    target[written++] = current;

    if (owned) {
        ranges.resize(written);
    } else {
        fresh.resize(written);
        ranges = std::move(fresh);
    }
}

} // namespace

QVRangeList QVRangeSanitize(const QVRangeList &ranges)
{
    return QVRangeSanitizeWithOptions(ranges, 0);
}

QVRangeList QVRangeSanitizeWithOptions(const QVRangeList &ranges, QVRangeSanitizeOptions options)
{
    if (options == 0)
        options = AllSanitizeOptions;

    // A list that needs nothing comes back sharing the caller's data.
    QVRangeList result = ranges;
    bool owned = false;

    const QVRange *source = ranges.constData();
    const qsizetype count = ranges.size();
    const FilterRule rule{(options & QVRangeSanitizeOptionRemoveEmpty) != 0,
                          (options & QVRangeSanitizeOptionRemoveNotFound) != 0};
    const qsizetype dropped = countDropped(source, count, rule);
    const FilterRule effectiveRule = dropped > 0 ? rule : FilterRule{};

    if ((options & QVRangeSanitizeOptionSort) && count - dropped >= 2
        && !keptAreSorted(source, count, effectiveRule)) {
        // The sort copies anyway, so it filters on the way.
        result = sortedCopy(source, count, effectiveRule);
        owned = true;
    } else if (dropped > 0) {
        result = filteredCopy(source, count, rule);
        owned = true;
    }

    if ((options & QVRangeSanitizeOptionMerge) && result.size() >= 2)
        mergeRanges(result, owned);

    return result;
}

QVOptionalRangeList QVRangeSubtract(const QVOptionalRangeList &ranges, const QVOptionalRangeList &subtrahends)
{
    if (!ranges)
        return std::nullopt;
    // No subtrahends at all is treated like an empty list of them.
    if (!subtrahends || subtrahends->isEmpty())
        return ranges;

    const QVRangeList &list = *ranges;
    const QVRangeList &minus = *subtrahends;
    QVRangeList pieces;

    // Only the first range gets a leading piece, and it deliberately reaches
    // the first subtrahend even when that lies beyond the range.
    if (!list.isEmpty() && minus.first().location > list.first().location)
        pieces.append(QVMakeRange(list.first().location, minus.first().location - list.first().location));

    const qsizetype last = minus.size() - 1;
    for (const QVRange &range : list) {
        const quint64 rangeMax = QVMaxRange(range);
        bool emitted = false;
        for (qsizetype index = 0; index <= last; ++index) {
            const QVRange &subtrahend = minus.at(index);
            if (intersects(range, subtrahend)) {
                const quint64 pieceStart = QVMaxRange(QVIntersectionRange(range, subtrahend));
                if (pieceStart == rangeMax)
                    continue;
                quint64 pieceLength = rangeMax - pieceStart;
                if (index < last && minus.at(index + 1).location < rangeMax) {
                    // Overlapping subtrahends can put the next one before the
                    // piece's start; that leaves no piece rather than a wrapped length.
                    const quint64 nextLocation = minus.at(index + 1).location;
                    pieceLength = nextLocation > pieceStart ? nextLocation - pieceStart : 0;
                    if (pieceLength == 0)
                        continue;
                }
                pieces.append(QVMakeRange(pieceStart, pieceLength));
                emitted = true;
            } else if (index == last && !emitted && range.length != 0) {
                pieces.append(range);
            }
        }
    }

    QVRangeList result = QVRangeSanitize(pieces);
    if (result.isEmpty())
        return std::nullopt;
    return result;
}

QVRange QVRangeAdjustForSubsequentFind(QVRange searchRange, QVRange foundRange, QVStringCompareOptions options)
{
    if (searchRange.length == 0 || foundRange.location == QVNotFound)
        return QVMakeRange(0, 0);
    // A wrapping range lies in no text; answering an empty range ends the
    // caller's loop instead of sending it back to the start of the text.
    if (wraps(searchRange) || wraps(foundRange))
        return QVMakeRange(0, 0);
    if (foundRange.location < searchRange.location || QVMaxRange(foundRange) > QVMaxRange(searchRange))
        return QVMakeRange(0, 0);
    if (options & QVBackwardsSearch)
        return QVMakeRange(searchRange.location, foundRange.location - searchRange.location);
    return QVMakeRange(QVMaxRange(foundRange), QVMaxRange(searchRange) - QVMaxRange(foundRange));
}

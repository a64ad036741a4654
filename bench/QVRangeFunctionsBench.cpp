#include <QVKit/Text/QVRangeFunctions.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>

namespace {

// Ranges as a text engine collects them: locations anywhere in a text of up
// to 10^8 code units, lengths 0 to 100 (so about 1% are empty), one in a
// thousand a failed search. A fixed seed keeps runs comparable.
QVRangeList generateRanges(qsizetype count)
{
    std::mt19937_64 random(20261114);
    std::uniform_int_distribution<quint64> location(0, 100000000);
    std::uniform_int_distribution<quint64> length(0, 100);
    std::uniform_int_distribution<int> oneIn(0, 999);
    QVRangeList ranges;
    ranges.reserve(count);
    for (qsizetype index = 0; index < count; ++index) {
        if (oneIn(random) == 0)
            ranges.append(QVNotFoundRange());
        else
            ranges.append(QVMakeRange(location(random), length(random)));
    }
    return ranges;
}

const QVRangeList &rangesOfSize(qsizetype count)
{
    static qsizetype cachedCount = -1;
    static QVRangeList cached;
    if (cachedCount != count) {
        cached = generateRanges(count);
        cachedCount = count;
    }
    return cached;
}

// A list the caller owns and hands over: both loops pay for this copy.
QVRangeList ownedCopy(const QVRangeList &ranges)
{
    QVRangeList copy = ranges;
    copy.detach();
    return copy;
}

// The least work the job needs on one thread: sort by (location, length), then
// one pass that drops empty and not-found ranges and merges the rest in place.
QVRangeList baselineSanitize(QVRangeList ranges)
{
    std::sort(ranges.begin(), ranges.end(), [](const QVRange &a, const QVRange &b) {
        return a.location != b.location ? a.location < b.location : a.length < b.length;
    });
    QVRange *data = ranges.data();
    qsizetype written = 0;
    bool haveCurrent = false;
    QVRange current;
    for (qsizetype index = 0; index < ranges.size(); ++index) {
        const QVRange range = data[index];
        if (range.length == 0 || range.location == QVNotFound)
            continue;
        if (haveCurrent && range.location <= QVMaxRange(current)) {
            current.length = std::max(QVMaxRange(current), QVMaxRange(range)) - current.location;
            continue;
        }
        if (haveCurrent)
            data[written++] = current;
        current = range;
        haveCurrent = true;
    }
    if (haveCurrent)
        data[written++] = current;
    ranges.resize(written);
    return ranges;
}

void BM_RangeSanitize(benchmark::State &state)
{
    const QVRangeList &input = rangesOfSize(state.range(0));
    if (QVRangeSanitize(input) != baselineSanitize(ownedCopy(input)))
        state.SkipWithError("QVRangeSanitize and the baseline disagree");
    for (auto _ : state) {
        QVRangeList result = QVRangeSanitize(ownedCopy(input));
        benchmark::DoNotOptimize(result.constData());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * state.range(0));
}

void BM_RangeSanitize_Baseline(benchmark::State &state)
{
    const QVRangeList &input = rangesOfSize(state.range(0));
    for (auto _ : state) {
        QVRangeList result = baselineSanitize(ownedCopy(input));
        benchmark::DoNotOptimize(result.constData());
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * state.range(0));
}

} // namespace

// Wall-clock time: the sanitizer works on several threads, and CPU time of
// the calling thread alone would flatter it.
BENCHMARK(BM_RangeSanitize)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_RangeSanitize_Baseline)->Arg(1000000)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();

#include <QVKit/Collections/QVSortedArray.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

// Values with duplicates (about two per value), as an eviction order of
// timestamps or counts holds them. A fixed seed keeps runs comparable.
std::vector<int> randomValues(qsizetype count, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> value(0, int(count / 2));
    std::vector<int> values(size_t(count), 0);
    for (int &element : values)
        element = value(random);
    return values;
}

// What a speed-minded caller writes: a stateless comparator type, so the
// search loop calls it inline.
struct CompareInts
{
    int operator()(const int &a, const int &b) const { return a < b ? -1 : (a > b ? 1 : 0); }
};

void BM_SortedArrayAdd(benchmark::State &state)
{
    const std::vector<int> values = randomValues(state.range(0), 1);
    for (auto _ : state) {
        QVSortedArray<int, CompareInts> array(CompareInts{});
        for (int value : values)
            array.addObject(value);
        benchmark::DoNotOptimize(array.count());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The default std::function comparator, for comparison with the inline one.
void BM_SortedArrayAddFunction(benchmark::State &state)
{
    const std::vector<int> values = randomValues(state.range(0), 1);
    for (auto _ : state) {
        QVSortedArray<int> array(CompareInts{});
        for (int value : values)
            array.addObject(value);
        benchmark::DoNotOptimize(array.count());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_SortedArrayAdd_Baseline(benchmark::State &state)
{
    const std::vector<int> values = randomValues(state.range(0), 1);
    for (auto _ : state) {
        std::vector<int> array;
        for (int value : values)
            array.insert(std::upper_bound(array.begin(), array.end(), value), value);
        benchmark::DoNotOptimize(array.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Lookups: half of the probes lie outside the stored values' span or fall on
// gaps, so both answers (found, not found) are measured.
void BM_SortedArrayIndexOf(benchmark::State &state)
{
    const std::vector<int> values = randomValues(state.range(0), 2);
    const std::vector<int> probes = randomValues(state.range(0), 3);
    QVSortedArray<int, CompareInts> array(CompareInts{});
    array.setArray(QList<int>(values.begin(), values.end()));
    for (auto _ : state) {
        quint64 sum = 0;
        for (int probe : probes)
            sum += array.indexOfObject(probe);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_SortedArrayIndexOf_Baseline(benchmark::State &state)
{
    std::vector<int> values = randomValues(state.range(0), 2);
    const std::vector<int> probes = randomValues(state.range(0), 3);
    std::stable_sort(values.begin(), values.end());
    for (auto _ : state) {
        quint64 sum = 0;
        for (int probe : probes) {
            const auto found = std::lower_bound(values.begin(), values.end(), probe);
            sum += found != values.end() && *found == probe ? quint64(found - values.begin()) : QVNotFound;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(BM_SortedArrayAdd)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortedArrayAdd_Baseline)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortedArrayAddFunction)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortedArrayIndexOf)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortedArrayIndexOf_Baseline)->Arg(100000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();

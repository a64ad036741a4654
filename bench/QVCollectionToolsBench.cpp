#include <QVKit/Collections/QVCollectionTools.h>

#include <QtCore/QSet>
#include <QtCore/QStringList>

#include <benchmark/benchmark.h>

#include <random>

namespace {

// Words as a de-duplication sees them: many repeats of a limited vocabulary
// (10 000 distinct strings) in random order. A fixed seed keeps runs comparable.
const QStringList &wordsOfSize(qsizetype count)
{
    static qsizetype cachedCount = -1;
    static QStringList cached;
    if (cachedCount != count) {
        std::mt19937_64 random(20261115);
        std::uniform_int_distribution<int> word(0, 9999);
        QStringList vocabulary;
        for (int i = 0; i < 10000; ++i)
            vocabulary.append(QStringLiteral("word-%1").arg(i));
        cached.clear();
        cached.reserve(count);
        for (qsizetype i = 0; i < count; ++i)
            cached.append(vocabulary.at(word(random)));
        cachedCount = count;
    }
    return cached;
}

void BM_RemoveDuplicates(benchmark::State &state)
{
    const QStringList &words = wordsOfSize(state.range(0));
    for (auto _ : state) {
        QStringList list = words;
        QVCollectionTools::removeDuplicateObjects(list);
        benchmark::DoNotOptimize(list.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// The least work the job needs: one pass through a set, keeping first occurrences.
void BM_RemoveDuplicates_Baseline(benchmark::State &state)
{
    const QStringList &words = wordsOfSize(state.range(0));
    for (auto _ : state) {
        QStringList list = words;
        QSet<QString> seen;
        QString *data = list.data();
        qsizetype kept = 0;
        for (qsizetype read = 0, count = list.size(); read < count; ++read) {
            // contains() first: QSet::insert copies its argument even when present.
            if (seen.contains(data[read]))
                continue;
            seen.insert(data[read]);
            data[kept++] = std::move(data[read]);
        }
        list.resize(kept);
        benchmark::DoNotOptimize(list.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(BM_RemoveDuplicates)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RemoveDuplicates_Baseline)->Arg(1000000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();

#include <QVKit/Collections/QVCache.h>

#include <QtCore/QCache>

#include <benchmark/benchmark.h>

#include <list>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

constexpr int operationCount = 1 << 15;

// The lookups of one pass: nine in ten ask for a key the cache holds at that
// moment (chosen uniformly among them), one in ten for a new key, which the
// caller then inserts, evicting the least recently used entry. An exact LRU
// model decides which keys are held, so both caches see the same hits. The
// cache starts full with keys 0..capacity-1, inserted in that order.
std::vector<int> makeKeySequence(int capacity)
{
    std::mt19937 random(20261121);
    std::uniform_int_distribution<int> percent(0, 99);
    std::list<int> recency; // most recent first
    std::unordered_map<int, std::list<int>::iterator> where;
    std::vector<int> held;
    std::unordered_map<int, size_t> heldIndex;
    auto add = [&](int key) {
        recency.push_front(key);
        where[key] = recency.begin();
        heldIndex[key] = held.size();
        held.push_back(key);
    };
    for (int key = 0; key < capacity; ++key)
        add(key);

    int nextKey = capacity;
    std::vector<int> sequence;
    sequence.reserve(operationCount);
    for (int n = 0; n < operationCount; ++n) {
        if (percent(random) < 90) {
            const int key = held[std::uniform_int_distribution<size_t>(0, held.size() - 1)(random)];
            recency.splice(recency.begin(), recency, where[key]);
            sequence.push_back(key);
            continue;
        }
        const int evicted = recency.back();
        recency.pop_back();
        where.erase(evicted);
        const size_t slot = heldIndex[evicted];
        held[slot] = held.back();
        heldIndex[held[slot]] = slot;
        held.pop_back();
        heldIndex.erase(evicted);
        add(nextKey);
        sequence.push_back(nextKey++);
    }
    return sequence;
}

const std::vector<int> &keySequence(int capacity)
{
    static std::unordered_map<int, std::vector<int>> sequences;
    auto found = sequences.find(capacity);
    if (found == sequences.end())
        found = sequences.emplace(capacity, makeKeySequence(capacity)).first;
    return found->second;
}

void BM_CacheHitMix(benchmark::State &state)
{
    const int capacity = int(state.range(0));
    const std::vector<int> &sequence = keySequence(capacity);
    qint64 hits = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto cache = std::make_unique<QVCache<int, int>>(QVCacheBehaviorLeastRecentlyUsed, quint64(capacity));
        for (int key = 0; key < capacity; ++key)
            cache->setObject(key, key, 0);
        state.ResumeTiming();
        for (const int key : sequence) {
            if (const std::optional<int> value = cache->objectForKey(key)) {
                benchmark::DoNotOptimize(*value);
                ++hits;
            } else {
                cache->setObject(key, key, 0);
            }
        }
        state.PauseTiming();
        cache.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * operationCount);
    state.counters["hitRate"] = double(hits) / double(state.iterations() * operationCount);
}
BENCHMARK(BM_CacheHitMix)->Arg(64)->Arg(10000)->Unit(benchmark::kMicrosecond);

// Qt's own LRU cache on the same sequence: cost 1 per entry, so maxCost is the entry limit.
void BM_CacheHitMix_Baseline(benchmark::State &state)
{
    const int capacity = int(state.range(0));
    const std::vector<int> &sequence = keySequence(capacity);
    qint64 hits = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto cache = std::make_unique<QCache<int, int>>(capacity);
        for (int key = 0; key < capacity; ++key)
            cache->insert(key, new int(key));
        state.ResumeTiming();
        for (const int key : sequence) {
            if (const int *value = cache->object(key)) {
                benchmark::DoNotOptimize(*value);
                ++hits;
            } else {
                cache->insert(key, new int(key));
            }
        }
        state.PauseTiming();
        cache.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * operationCount);
    state.counters["hitRate"] = double(hits) / double(state.iterations() * operationCount);
}
BENCHMARK(BM_CacheHitMix_Baseline)->Arg(64)->Arg(10000)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();

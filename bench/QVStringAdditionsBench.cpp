#include <QVKit/Text/QVStringAdditions.h>

#include <QtCore/QRandomGenerator>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

const QString searchedWord = u"lantern"_s;

// Prose-like text of `size` code units: words drawn from a small vocabulary
// with a fixed seed (so every run searches the same text), spaces, some
// punctuation and line breaks, a few words beyond Latin-1. The searched word
// is one word in forty or so, the density of a common word in real text.
QString generateText(qsizetype size)
{
    static const QString vocabulary[] = {
        u"the"_s,    u"of"_s,        u"and"_s,     u"a"_s,         u"to"_s,         u"in"_s,     u"is"_s,
        u"window"_s, u"settings"_s,  u"value"_s,   u"caf\u00E9"_s, u"na\u00EFve"_s, u"string"_s, u"range"_s,
        u"search"_s, u"lanterns"_s,  u"latent"_s,  u"\u00FCber"_s, u"text"_s,       u"edge"_s,   u"prefix"_s,
        u"suffix"_s, u"document"_s,  u"line"_s,    u"paragraph"_s, u"bold"_s,       u"escape"_s, u"\U0001F600"_s,
        u"stop"_s,   u"enumerate"_s, u"between"_s, u"opening"_s,   u"closing"_s,    u"run"_s,    u"trim"_s,
        u"repeat"_s, u"lantern"_s,   u"count"_s,   u"match"_s,
    };
    constexpr qsizetype vocabularySize = qsizetype(std::size(vocabulary));
    QRandomGenerator random(20240607);
    QString text;
    text.reserve(size + 32);
    while (text.size() < size) {
        text += vocabulary[random.bounded(vocabularySize)];
        const quint32 separator = random.bounded(20u);
        text += separator == 0 ? u"\n"_s : separator == 1 ? u", "_s : separator == 2 ? u". "_s : u" "_s;
    }
    text.truncate(size);
    return text;
}

const QString &textOfSize(qsizetype size)
{
    static qsizetype cachedSize = -1;
    static QString cached;
    if (cachedSize != size) {
        cached = generateText(size);
        cachedSize = size;
    }
    return cached;
}

void BM_RangesOfString(benchmark::State &state)
{
    const QString &text = textOfSize(state.range(0));
    qsizetype matches = 0;
    for (auto _ : state) {
        const QVOptionalRangeList ranges = QVString::rangesOfString(text, searchedWord);
        matches = ranges ? ranges->size() : 0;
        benchmark::DoNotOptimize(ranges);
    }
    state.counters["matches"] = double(matches);
    state.SetBytesProcessed(int64_t(state.iterations()) * text.size() * qsizetype(sizeof(QChar)));
}

// The least work the same job needs: QString::indexOf in a loop, collecting
// the same ranges in the same kind of list.
void BM_RangesOfString_Baseline(benchmark::State &state)
{
    const QString &text = textOfSize(state.range(0));
    qsizetype matches = 0;
    for (auto _ : state) {
        QVRangeList ranges;
        ranges.reserve(16);
        const qsizetype wordLength = searchedWord.size();
        for (qsizetype from = text.indexOf(searchedWord); from >= 0;
             from = text.indexOf(searchedWord, from + wordLength)) {
            ranges.append(QVMakeRange(quint64(from), quint64(wordLength)));
        }
        matches = ranges.size();
        benchmark::DoNotOptimize(ranges);
    }
    state.counters["matches"] = double(matches);
    state.SetBytesProcessed(int64_t(state.iterations()) * text.size() * qsizetype(sizeof(QChar)));
}

} // namespace

BENCHMARK(BM_RangesOfString)->Arg(10000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RangesOfString_Baseline)->Arg(10000000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();

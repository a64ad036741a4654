#include <QVKit/Platform/QVAttributedString.h>
#include <QVKit/Text/QVTextAttributeRun.h>
#include <QVKit/Text/QVTextCore.h>

#include <QtCore/QLocale>
#include <QtCore/QRandomGenerator>
#include <QtCore/QStringList>
#include <QtGui/QColor>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int runCount = 10000;

// Mixed prose of `size` code units with a fixed seed: mostly Latin words,
// some with ß (which grows to SS in upper case) or accents, carrying
// runCount attribute runs over words spread evenly through the text,
// alternating a bold weight and a colour.
QVAttributedString generateText(qsizetype size)
{
    static const QStringList vocabulary
        = u"the of and a to in is window settings value caf\u00E9 na\u00EFve string range stra\u00DFe text "
          u"\u00FCber document line paragraph bold gro\u00DF r\u00E9sum\u00E9 between opening closing run count "
          u"enumerate f\u00FCr lantern edge match prefix suffix Stra\u00DFen repeat trim escape stop"_s.split(u' ');
    const qsizetype vocabularySize = vocabulary.size();
    QRandomGenerator random(20240611);
    QString text;
    text.reserve(size + 32);
    QList<QVRange> words;
    while (text.size() < size) {
        const QString &word = vocabulary.at(random.bounded(vocabularySize));
        words.append(QVMakeRange(quint64(text.size()), quint64(word.size())));
        text += word;
        const quint32 separator = random.bounded(20u);
        text += separator == 0 ? u"\n"_s : separator == 1 ? u", "_s : separator == 2 ? u". "_s : u" "_s;
    }
    text.truncate(size);

    QVAttributedString attributed(text);
    const qsizetype step = std::max<qsizetype>(1, words.size() / runCount);
    for (int i = 0; i < runCount && qsizetype(i) * step < words.size(); ++i) {
        const QVRange word = words.at(qsizetype(i) * step);
        if (QVMaxRange(word) > quint64(text.size()))
            break;
        if (i % 2 == 0)
            attributed.addAttribute(QVFontWeightAttributeName, 700, word);
        else
            attributed.addAttribute(QVForegroundColorAttributeName, QColor(Qt::red), word);
    }
    return attributed;
}

const QVAttributedString &textOfSize(qsizetype size)
{
    static qsizetype cachedSize = -1;
    static QVAttributedString cached;
    if (cachedSize != size) {
        cached = generateText(size);
        cachedSize = size;
    }
    return cached;
}

void BM_UppercaseAttributed(benchmark::State &state)
{
    const QVAttributedString &text = textOfSize(state.range(0));
    const QVRange all = QVMakeRange(0, text.length());
    // Once outside the timing: the result keeps every run.
    const std::optional<QList<QVTextAttributeRun>> runs
        = QVTextCore::sourceTextConvertToCase(text, QVCaseTypeUppercase, all).textAttributeRuns();
    state.counters["runs"] = double(runs ? runs->size() : 0);
    for (auto _ : state) {
        QVAttributedString upper = QVTextCore::sourceTextConvertToCase(text, QVCaseTypeUppercase, all);
        benchmark::DoNotOptimize(upper);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.length()) * int64_t(sizeof(QChar)));
}

// The least work the same job needs: the locale's upper case of the plain text.
void BM_UppercaseAttributed_Baseline(benchmark::State &state)
{
    const QString text = textOfSize(state.range(0)).string();
    const QLocale locale;
    for (auto _ : state) {
        QString upper = locale.toUpper(text);
        benchmark::DoNotOptimize(upper);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(text.size()) * int64_t(sizeof(QChar)));
}

} // namespace

BENCHMARK(BM_UppercaseAttributed)->Arg(10000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UppercaseAttributed_Baseline)->Arg(10000000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();

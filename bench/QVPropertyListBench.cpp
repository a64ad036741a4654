#include <QVKit/Platform/QVPropertyListSerialization.h>

#include <QtCore/QDateTime>
#include <QtCore/QXmlStreamReader>

#include <benchmark/benchmark.h>

using namespace Qt::StringLiterals;

namespace {

// A preferences-like file with `size` top-level entries, cycling through every
// value type, nested dicts and arrays included, so that the parse sees the
// mix a real application writes.
QByteArray generatePropertyList(qsizetype size)
{
    const QDateTime date(QDate(2026, 11, 14), QTime(15, 55, 40), Qt::UTC);
    const QByteArray bytes("\x00\x01\x02 binary payload \xff\xfe", 22);
    QVariantMap root;
    for (qsizetype i = 0; i < size; ++i) {
        const QString key = u"entry.%1"_s.arg(i, 6, 10, QLatin1Char('0'));
        switch (i % 7) {
        case 0:
            root.insert(key, QVariantMap{{u"name"_s, u"Window %1"_s.arg(i)},
                                         {u"visible"_s, i % 2 == 0},
                                         {u"width"_s, qlonglong(640 + i % 300)}});
            break;
        case 1:
            root.insert(key, QVariantList{qlonglong(i), 0.5 * double(i), u"item"_s, false});
            break;
        case 2:
            root.insert(key, u"A string value with <markup> & \u00e9l\u00e8ve \U0001F600 number %1"_s.arg(i));
            break;
        case 3:
            root.insert(key, qlonglong(i) * 7919 - 1000000);
            break;
        case 4:
            root.insert(key, double(i) / 3.0);
            break;
        case 5:
            root.insert(key, date.addSecs(i));
            break;
        default:
            root.insert(key, bytes);
            break;
        }
    }
    return QVPropertyListSerialization::dataWithPropertyList(root);
}

const QByteArray &propertyListOfSize(qsizetype size)
{
    static qsizetype cachedSize = -1;
    static QByteArray cached;
    if (cachedSize != size) {
        cached = generatePropertyList(size);
        cachedSize = size;
    }
    return cached;
}

void BM_PropertyListParse(benchmark::State &state)
{
    const QByteArray &data = propertyListOfSize(state.range(0));
    for (auto _ : state) {
        QVariant result = QVPropertyListSerialization::propertyListWithData(data);
        if (!result.isValid())
            state.SkipWithError("the generated property list did not parse");
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * data.size());
}

// The floor for any XML property-list reader on Qt: tokenise the same bytes
// and touch every token's name and text, building nothing.
void BM_PropertyListParse_Baseline(benchmark::State &state)
{
    const QByteArray &data = propertyListOfSize(state.range(0));
    for (auto _ : state) {
        QXmlStreamReader xml(data);
        qsizetype touched = 0;
        while (!xml.atEnd()) {
            switch (xml.readNext()) {
            case QXmlStreamReader::StartElement:
                touched += xml.name().size();
                break;
            case QXmlStreamReader::Characters:
                touched += xml.text().size();
                break;
            default:
                break;
            }
        }
        if (xml.hasError())
            state.SkipWithError("the generated property list is not well-formed XML");
        benchmark::DoNotOptimize(touched);
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * data.size());
}

} // namespace

BENCHMARK(BM_PropertyListParse)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PropertyListParse_Baseline)->Arg(100000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();

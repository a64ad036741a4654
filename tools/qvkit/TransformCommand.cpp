// qvkit transform MODE [PATH|-] [-file PATH]: runs one text transformation
// over UTF-8 text and prints the result.

#include "QVKitCommand.h"

#include <QVKit/Text/QVTextCore.h>

#include <QtCore/QStringDecoder>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

struct Mode
{
    QStringView name;
    std::function<void(QString &text)> apply;
};

QVRange whole(const QString &text)
{
    return QVMakeRange(0, quint64(text.size()));
}

const Mode modes[] = {
    {u"upper",
     [](QString &text) { QVTextCore::modifySourceTextConvertToCase(text, QVCaseTypeUppercase, whole(text)); }},
    {u"lower",
     [](QString &text) { QVTextCore::modifySourceTextConvertToCase(text, QVCaseTypeLowercase, whole(text)); }},
    {u"capitalize",
     [](QString &text) { QVTextCore::modifySourceTextConvertToCase(text, QVCaseTypeCapitalize, whole(text)); }},
    {u"quote",
     [](QString &text) {
         QVTextCore::modifySourceTextInsertLocalizedQuoteType(text, QVQuoteTypeStandard, whole(text));
     }},
    {u"alternative-quote",
     [](QString &text) {
         QVTextCore::modifySourceTextInsertLocalizedQuoteType(text, QVQuoteTypeAlternative, whole(text));
     }},
    {u"straighten",
     [](QString &text) {
         QVTextCore::modifySourceTextConvertToQuotation(text, QVQuotationTypeStraight, whole(text));
     }},
    {u"smarten",
     [](QString &text) { QVTextCore::modifySourceTextConvertToQuotation(text, QVQuotationTypeSmart, whole(text)); }},
};

QStringList modeNames()
{
    QStringList names;
    for (const Mode &mode : modes)
        names.append(mode.name.toString());
    return names;
}

/**
 * The offset of the first byte of the first sequence that is not well-formed
 * UTF-8 (no overlong forms, surrogates or code points past U+10FFFF, no
 * cut-off sequences), or -1.
 */
qsizetype firstInvalidUtf8Offset(QByteArrayView bytes)
{
    const auto byte = [&](qsizetype i) { return i < bytes.size() ? uchar(bytes[i]) : 0; };
    qsizetype i = 0;
    while (i < bytes.size()) {
        const uchar lead = byte(i);
        qsizetype length = 0;
        uchar low = 0x80;
        uchar high = 0xBF;
        if (lead < 0x80) {
            ++i;
            continue;
        } else if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            low = lead == 0xE0 ? 0xA0 : 0x80;
            high = lead == 0xED ? 0x9F : 0xBF;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            low = lead == 0xF0 ? 0x90 : 0x80;
            high = lead == 0xF4 ? 0x8F : 0xBF;
        } else {
            return i;
        }
        for (qsizetype k = 1; k < length; ++k) {
            const uchar next = byte(i + k);
            if (next < (k == 1 ? low : 0x80) || next > (k == 1 ? high : 0xBF))
                return i;
        }
        i += length;
    }
    return -1;
}

int run(QVKitInvocation &invocation)
{
    const QStringList &positional = invocation.positional();
    if (positional.isEmpty())
        return invocation.usageError(u"missing mode (%1)"_s.arg(modeNames().join(u", "_s)));
    const auto mode = std::find_if(std::begin(modes), std::end(modes),
                                   [&](const Mode &m) { return m.name == positional.first(); });
    if (mode == std::end(modes))
        return invocation.usageError(u"unknown mode \"%1\" (%2)"_s.arg(positional.first(), modeNames().join(u", "_s)));
    if (positional.size() > 2)
        return invocation.usageError(u"unexpected argument \"%1\""_s.arg(positional.at(2)));
    if (positional.size() == 2 && invocation.has(u"file"))
        return invocation.usageError(u"give the path once: as an argument or with -file, not both"_s);
    const QString path = invocation.has(u"file") ? invocation.value(u"file") : positional.value(1, u"-"_s);
    if (path.isEmpty())
        return invocation.usageError(u"-file needs a path"_s);

    QByteArray input;
    if (!invocation.readInput(path, &input))
        return QVKitInvocation::Failure;

    // Strict decoding: an invalid or cut-off sequence is an error, never a
    // replacement character, and a byte order mark stays part of the text.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(input);
    if (decoder.hasError()) {
        const qsizetype offset = firstInvalidUtf8Offset(input);
        return invocation.fail(offset >= 0 ? u"the input is not valid UTF-8 (at byte %1)"_s.arg(offset)
                                           : u"the input is not valid UTF-8"_s);
    }

    // A line of text ends in a newline that belongs to no word: it stays
    // outside the transformation, so quotes close before it.
    QString lineEnd;
    for (const QStringView end : {QStringView(u"\r\n"), QStringView(u"\n")}) {
        if (text.endsWith(end)) {
            lineEnd = end.toString();
            text.chop(end.size());
            break;
        }
    }
    mode->apply(text);
    invocation.outBytes((text + lineEnd).toUtf8());
    return QVKitInvocation::Success;
}

const QVKitCommandRegistrar registrar({
    u"transform"_s,
    u"Transform UTF-8 text from standard input (or PATH) and print the result."_s,
    u"transform upper|lower|capitalize|quote|alternative-quote|straighten|smarten [PATH|-] [-file PATH]"_s,
    modeNames(),
    {{u"file"_s, u"PATH"_s, u"The text to read (the same as giving PATH; standard input otherwise)."_s, false,
      true}},
    u"echo \"it's here\" | qvkit transform smarten"_s,
    run,
});

} // namespace

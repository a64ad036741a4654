#include "QVKitTool.h"

#include <QVKit/Platform/QVBundle.h>
#include <QVKit/Platform/QVHeadlessTextView.h>
#include <QVKit/Platform/QVPropertyListSerialization.h>
#include <QVKit/Platform/QVUserDefaults.h>
#include <QVKit/QVKitVersion.h>

#include <QtCore/QFile>
#include <QtCore/QLocale>
#include <QtCore/QStringDecoder>
#include <QtCore/QSysInfo>
#include <QtCore/QThread>

#include <algorithm>
#include <cstdio>
#include <memory>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr QStringView transformUsage =
    u"transform upper|lower|capitalize|quote|alternative-quote|straighten|smarten [-file PATH]";

// The transform modes and the text view command each one runs.
struct TransformMode
{
    QStringView name;
    void (QVTextView::*command)(QObject *sender);
};

constexpr TransformMode transformModes[] = {
    {u"upper", &QVTextView::uppercase},
    {u"lower", &QVTextView::lowercase},
    {u"capitalize", &QVTextView::capitalize},
    {u"quote", &QVTextView::insertLocalizedQuotes},
    {u"alternative-quote", &QVTextView::insertLocalizedAlternativeQuotes},
    {u"straighten", &QVTextView::straightenQuotes},
    {u"smarten", &QVTextView::smartenQuotes},
};

/**
 * The offset of the first byte that does not start or continue a well-formed
 * UTF-8 sequence (no overlong forms, surrogates or code points past
 * U+10FFFF), or -1. Only used to point at the fault once the decoder found
 * one.
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
                return i + k < bytes.size() ? i + k : i; // a cut-off sequence is at fault as a whole
        }
        i += length;
    }
    return -1;
}

} // namespace

QVKitTool::QVKitTool()
    : m_out(stdout)
    , m_err(stderr)
{
    m_commands = {
        {u"summary"_s, u"summary"_s, u"Describe the library, the platform and this run (the default)."_s, {},
         [this](const QVCommandLine &) { return printSummary(); }},
        {u"help"_s, u"help"_s, u"List the commands with a line on each."_s, {},
         [this](const QVCommandLine &) { return printHelp(); }},
        {u"version"_s, u"version"_s, u"Print the library version."_s, {},
         [this](const QVCommandLine &) { return printVersion(); }},
        {u"plist"_s, u"plist -file PATH"_s, u"Check a property list and print it in the library's XML form."_s,
         {u"file"_s}, [this](const QVCommandLine &commandLine) { return showPropertyList(commandLine); }},
        {u"defaults"_s, u"defaults read|write|delete [-key KEY] [-value TEXT] [-file PATH]"_s,
         u"Read, write or delete settings of the standard store (or of the store in PATH)."_s, {},
         [this](const QVCommandLine &commandLine) { return runDefaults(commandLine); }},
        {u"transform"_s, transformUsage.toString(),
         u"Transform UTF-8 text from standard input (or PATH) and print the result."_s, {},
         [this](const QVCommandLine &commandLine) { return runTransform(commandLine); }},
    };
}

int QVKitTool::run(const QStringList &arguments)
{
    const QVCommandLine commandLine(arguments);
    const QVCommandLineOptions options = commandLine.options().value_or(QVCommandLineOptions());

    if (commandLine.actions().isEmpty()) {
        if (options.contains(u"-help"_s) || options.contains(u"h"_s))
            return printHelp();
        if (options.contains(u"-version"_s))
            return printVersion();
        if (!options.isEmpty()) {
            m_err << "qvkit: unknown option -" << options.firstKey() << "\n\n";
            m_err.flush();
            printHelp();
            return 2;
        }
        return printSummary();
    }

    const QString name = commandLine.actions().first();
    for (const Command &command : std::as_const(m_commands)) {
        if (command.name != name)
            continue;
        const QStringList missing = commandLine.missingOptions(command.requiredOptions);
        if (!missing.isEmpty()) {
            m_err << "qvkit " << name << ": missing required option -" << missing.join(u", -"_s) << '\n'
                  << "usage: qvkit " << command.usage << '\n';
            m_err.flush();
            return 2;
        }
        return command.action(commandLine);
    }

    m_err << "qvkit: unknown command \"" << name << "\"\n\n";
    m_err.flush();
    printHelp();
    return 2;
}

int QVKitTool::printHelp()
{
    m_out << "Usage: qvkit [command] [-option value ...]\n\n"
          << "QVKit " << QVKIT_VERSION_STRING
          << ": application support for Qt desktop applications.\n\nCommands:\n";
    qsizetype width = 0;
    for (const Command &command : std::as_const(m_commands))
        width = qMax(width, command.name.size());
    for (const Command &command : std::as_const(m_commands))
        m_out << "  " << command.name.leftJustified(width + 2) << command.summary << '\n';
    m_out << "\nUsage of each command:\n";
    for (const Command &command : std::as_const(m_commands))
        m_out << "  qvkit " << command.usage << '\n';
    m_out << "\nOptions:\n"
          << "  --help      Same as the help command.\n"
          << "  --version   Same as the version command.\n"
          << "\nWith no command, qvkit prints the summary.\n";
    m_out.flush();
    return 0;
}

int QVKitTool::printVersion()
{
    m_out << "qvkit " << QVKIT_VERSION_STRING << '\n';
    m_out.flush();
    return 0;
}

int QVKitTool::printSummary()
{
    const QLocale locale = QLocale::system();
    const auto line = [this](const char *label, const QString &value) {
        m_out << QString::fromLatin1(label).leftJustified(14) << value << '\n';
    };
    m_out << "QVKit " << QVKIT_VERSION_STRING << '\n';
    line("Qt", QString::fromLatin1(qVersion()));
    line("System", QSysInfo::prettyProductName());
    line("Kernel", QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion());
    line("Architecture", QSysInfo::currentCpuArchitecture());
    line("Processors", QString::number(QThread::idealThreadCount()));
    line("Locale", locale.name());
    line("Application", QVBundle::applicationName());
    line("Identifier", QVBundle::bundleIdentifier());
    line("Settings", QVUserDefaults::standardUserDefaults()->filePath());
    m_out << "\nRun \"qvkit help\" for the list of commands.\n";
    m_out.flush();
    return 0;
}

int QVKitTool::showPropertyList(const QVCommandLine &commandLine)
{
    const QString path = optionValue(commandLine, u"file"_s);
    if (path.isEmpty())
        return fail(u"qvkit plist: -file needs a path"_s, 2);
    QVError error;
    const QVariant propertyList = QVPropertyListSerialization::propertyListWithContentsOfFile(path, &error);
    if (!propertyList.isValid())
        return fail(u"qvkit plist: %1: %2"_s.arg(path, error.localizedDescription()));
    m_out << QString::fromUtf8(QVPropertyListSerialization::dataWithPropertyList(propertyList));
    m_out.flush();
    return 0;
}

int QVKitTool::runDefaults(const QVCommandLine &commandLine)
{
    const QString verb = commandLine.actions().value(1, u"read"_s);
    const QString key = optionValue(commandLine, u"key"_s);
    const QString file = optionValue(commandLine, u"file"_s);

    std::unique_ptr<QVUserDefaults> ownStore;
    QVUserDefaults *store = QVUserDefaults::standardUserDefaults();
    if (!file.isEmpty()) {
        ownStore = std::make_unique<QVUserDefaults>(file);
        store = ownStore.get();
    }

    if (verb == u"read"_s) {
        const QVariant value = key.isEmpty() ? QVariant(store->dictionaryRepresentation()) : store->objectForKey(key);
        if (!value.isValid())
            return fail(u"qvkit defaults: no value for the key \"%1\""_s.arg(key));
        m_out << QString::fromUtf8(QVPropertyListSerialization::dataWithPropertyList(value));
        m_out.flush();
        return 0;
    }
    if (key.isEmpty())
        return fail(u"qvkit defaults %1: missing required option -key"_s.arg(verb), 2);
    if (verb == u"write"_s) {
        const QStringList values = commandLine.options().value_or(QVCommandLineOptions()).value(u"value"_s);
        if (values.isEmpty())
            return fail(u"qvkit defaults write: missing required option -value"_s, 2);
        store->setObject(values.join(u' '), key);
    } else if (verb == u"delete"_s) {
        store->removeObjectForKey(key);
    } else {
        return fail(u"qvkit defaults: unknown action \"%1\" (read, write or delete)"_s.arg(verb), 2);
    }
    if (!store->synchronize())
        return fail(u"qvkit defaults: could not write %1"_s.arg(store->filePath()));
    return 0;
}

int QVKitTool::runTransform(const QVCommandLine &commandLine)
{
    const QString modeName = commandLine.actions().value(1);
    const QString usage = u"usage: qvkit "_s + transformUsage.toString();
    if (modeName.isEmpty())
        return fail(u"qvkit transform: missing mode\n"_s + usage, 2);
    const auto mode = std::find_if(std::begin(transformModes), std::end(transformModes),
                                   [&](const TransformMode &m) { return m.name == modeName; });
    if (mode == std::end(transformModes))
        return fail(u"qvkit transform: unknown mode \"%1\"\n"_s.arg(modeName) + usage, 2);

    QByteArray input;
    const QVCommandLineOptions options = commandLine.options().value_or(QVCommandLineOptions());
    if (options.contains(u"file"_s)) {
        const QString path = optionValue(commandLine, u"file"_s);
        if (path.isEmpty())
            return fail(u"qvkit transform: -file needs a path"_s, 2);
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return fail(u"qvkit transform: cannot read %1: %2"_s.arg(path, file.errorString()));
        input = file.readAll();
        if (file.error() != QFileDevice::NoError)
            return fail(u"qvkit transform: cannot read %1: %2"_s.arg(path, file.errorString()));
    } else {
        QFile standardInput;
        if (!standardInput.open(STDIN_FILENO, QIODevice::ReadOnly))
            return fail(u"qvkit transform: cannot read standard input: %1"_s.arg(standardInput.errorString()));
        input = standardInput.readAll();
        if (standardInput.error() != QFileDevice::NoError)
            return fail(u"qvkit transform: cannot read standard input: %1"_s.arg(standardInput.errorString()));
    }

    // Strict decoding: an invalid or cut-off sequence is an error, never a
    // replacement character, and a byte order mark stays part of the text.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder.decode(input);
    if (decoder.hasError()) {
        const qsizetype offset = firstInvalidUtf8Offset(input);
        QString message = u"qvkit transform: the input is not valid UTF-8"_s;
        if (offset >= 0)
            message += u" (at byte %1)"_s.arg(offset);
        return fail(message);
    }

    QVHeadlessTextView view(QVAttributedString{text});
    view.setSelectedRanges({QVRange{0, view.textStorage()->length()}});
    (view.*(mode->command))(nullptr);

    // One write of the whole result, past any buffering of m_out.
    const QByteArray output = view.textStorage()->string().toUtf8();
    QFile standardOutput;
    if (!standardOutput.open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered)
        || standardOutput.write(output) != output.size())
        return fail(u"qvkit transform: cannot write standard output: %1"_s.arg(standardOutput.errorString()));
    return 0;
}

QString QVKitTool::optionValue(const QVCommandLine &commandLine, const QString &name)
{
    const QStringList values = commandLine.options().value_or(QVCommandLineOptions()).value(name);
    return values.isEmpty() ? QString() : values.first();
}

int QVKitTool::fail(const QString &message, int status)
{
    m_err << message << '\n';
    m_err.flush();
    return status;
}

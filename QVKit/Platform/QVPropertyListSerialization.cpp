#include "QVKit/Platform/QVPropertyListSerialization.h"

#include "QVKit/Platform/QVAssert.h"
#include "QVKit/Platform/QVLoggingCategories.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QIODevice>
#include <QtCore/QSaveFile>
#include <QtCore/QStringList>
#include <QtCore/QXmlStreamReader>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

// Containers nested deeper than this are refused both ways: the reader recurses
// once per level, and whatever we write we must be able to read back.
constexpr int kMaxDepth = 512;

QVError makeError(qint64 code, const QString &description, const QString &path = {})
{
    QVariantMap userInfo{{QVLocalizedDescriptionKey, description}};
    if (!path.isEmpty())
        userInfo.insert(QVFilePathErrorKey, path);
    return QVError(QVCocoaErrorDomain, code, userInfo);
}

void report(QVError *error, const QVError &value)
{
    qCDebug(lcQVPropertyList) << value.localizedDescription();
    if (error)
        *error = value;
}

bool isXmlSpace(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

QStringView trimmedXml(QStringView text)
{
    while (!text.isEmpty() && isXmlSpace(text.front().unicode()))
        text = text.sliced(1);
    while (!text.isEmpty() && isXmlSpace(text.back().unicode()))
        text.chop(1);
    return text;
}

// The offending text for a message, cut short so that a megabyte of junk
// does not end up in an error dialog.
QString quoted(QStringView text)
{
    constexpr qsizetype limit = 40;
    if (text.size() <= limit)
        return u"\"%1\""_s.arg(text);
    return u"\"%1\u2026\""_s.arg(text.first(limit));
}

QString codePoint(char16_t c)
{
    return u"U+"_s + QString::number(c, 16).toUpper().rightJustified(4, u'0');
}

// A cheap first test for the characters unwritableCharacter() looks at.
bool mayBeUnwritable(char16_t c)
{
    return c < 0x20 || (c >= 0xD800 && c <= 0xDFFF) || c >= 0xFFFE;
}

// Describes the first character XML 1.0 cannot carry, even as a character
// reference, or answers a null string when there is none. Reading refuses
// such text too, so that whatever was read can be written back.
QString unwritableCharacter(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r')
            return u"control character %1"_s.arg(codePoint(c));
        if (c == 0xFFFE || c == 0xFFFF)
            return u"non-character %1"_s.arg(codePoint(c));
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && QChar::isLowSurrogate(text[i + 1].unicode()))
            ++i;
        else if (QChar::isSurrogate(c))
            return u"a lone surrogate"_s;
    }
    return {};
}

bool xmlCanCarry(QStringView text)
{
    return std::none_of(text.begin(), text.end(), [](QChar c) { return mayBeUnwritable(c.unicode()); })
        || unwritableCharacter(text).isNull();
}

// The byte offset of the first NUL character, or -1. No XML text may hold
// one; in UTF-16 text a NUL is a zero code unit, while its zero bytes beside
// ASCII letters are part of the encoding.
qsizetype nulOffset(QByteArrayView data)
{
    const auto at = [&](qsizetype i) { return uchar(data[i]); };
    // UTF-16 shows as a byte order mark, or as a document's first character
    // ('<' or white space) beside a zero byte.
    const auto opensDocument = [](uchar c) { return c == '<' || isXmlSpace(c); };
    const bool utf16 = data.size() >= 2
                       && ((at(0) == 0xFF && at(1) == 0xFE) || (at(0) == 0xFE && at(1) == 0xFF)
                           || (at(0) == 0 && opensDocument(at(1))) || (opensDocument(at(0)) && at(1) == 0));
    if (!utf16)
        return data.indexOf('\0');
    for (qsizetype i = 0; i + 1 < data.size(); i += 2) {
        if (at(i) == 0 && at(i + 1) == 0)
            return i;
    }
    return -1;
}

// ---------------------------------------------------------------------------
// Reading

class Reader
{
public:
    explicit Reader(const QByteArray &data)
        : m_xml(data)
    {
    }

    QVariant read();
    QString errorMessage() const { return m_message; }

private:
    bool fail(const QString &what);
    bool failFromXml();
    // Fails on the tokens no loop accepts: an entity reference other than the
    // predefined ones (which the XML reader resolves itself), and XML errors.
    bool failOnToken();
    // Advances to the next token that matters: start or end of an element, or
    // text that is not just whitespace. Comments, processing instructions and
    // the document type are skipped; an unresolved entity is an error.
    bool nextSignificant();
    bool readValue(int depth, QVariant &result);
    enum class Child { Element, End, Failed };
    Child nextChild(QStringView container);
    bool readDict(int depth, QVariant &result);
    bool readArray(int depth, QVariant &result);
    // Collects the text of the current element, named for errors, up to its end tag.
    bool readText(QString &text, QStringView element);
    bool readEmpty(QStringView element);
    bool readInteger(QVariant &result);
    bool readReal(QVariant &result);
    bool readDate(QVariant &result);
    bool readData(QVariant &result);

    QXmlStreamReader m_xml;
    QString m_message;
    QString m_scratch;
};

bool Reader::fail(const QString &what)
{
    if (m_message.isEmpty()) {
        m_message = u"Property list is malformed at line %1, column %2: %3"_s.arg(m_xml.lineNumber())
                        .arg(m_xml.columnNumber() + 1)
                        .arg(what);
    }
    return false;
}

bool Reader::failFromXml()
{
    if (m_xml.error() == QXmlStreamReader::PrematureEndOfDocumentError)
        return fail(u"unexpected end of file"_s);
    QString what = m_xml.errorString();
    if (what.endsWith(u'.'))
        what.chop(1);
    if (!what.isEmpty())
        what[0] = what[0].toLower();
    return fail(what);
}

bool Reader::failOnToken()
{
    if (m_xml.tokenType() == QXmlStreamReader::EntityReference)
        return fail(u"undefined entity &%1;"_s.arg(m_xml.name()));
    return failFromXml();
}

bool Reader::nextSignificant()
{
    for (;;) {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::StartElement:
        case QXmlStreamReader::EndElement:
        case QXmlStreamReader::EndDocument:
            return true;
        case QXmlStreamReader::Characters:
            if (!m_xml.isWhitespace())
                return true;
            break;
        case QXmlStreamReader::DTD:
            // Declared entities would be expanded, internal ones into whatever
            // they hold (nested, a billion laughs) and external ones into files
            // or nothing. A property list needs only the predefined entities
            // and character references, so a declaration is refused outright.
            if (!m_xml.entityDeclarations().isEmpty() || m_xml.text().contains(u"<!ENTITY"))
                return fail(u"entity declarations are not allowed (only &lt; &gt; &amp; &apos; &quot; and "
                            u"character references)"_s);
            break;
        case QXmlStreamReader::EntityReference:
        case QXmlStreamReader::Invalid:
            return failOnToken();
        default:
            break;
        }
    }
}

QVariant Reader::read()
{
    if (!nextSignificant())
        return {};
    if (m_xml.tokenType() != QXmlStreamReader::StartElement) {
        if (m_xml.tokenType() == QXmlStreamReader::Characters)
            fail(u"text outside any element"_s);
        else
            fail(u"no property list element"_s);
        return {};
    }

    QVariant result;
    if (m_xml.qualifiedName() == u"plist") {
        if (!nextSignificant())
            return {};
        if (m_xml.tokenType() != QXmlStreamReader::StartElement) {
            fail(m_xml.tokenType() == QXmlStreamReader::Characters ? u"text inside <plist>"_s
                                                                    : u"<plist> without a value"_s);
            return {};
        }
        if (!readValue(0, result) || !nextSignificant())
            return {};
        if (m_xml.tokenType() == QXmlStreamReader::StartElement) {
            fail(u"more than one value inside <plist>"_s);
            return {};
        }
        if (m_xml.tokenType() != QXmlStreamReader::EndElement) {
            fail(u"text inside <plist>"_s);
            return {};
        }
    } else if (!readValue(0, result)) {
        return {};
    }

    // The rest may hold only comments and processing instructions; the XML
    // reader itself refuses a second root element.
    if (!nextSignificant())
        return {};
    if (m_xml.tokenType() != QXmlStreamReader::EndDocument) {
        fail(u"content after the property list"_s);
        return {};
    }
    return result;
}

bool Reader::readValue(int depth, QVariant &result)
{
    const QStringView name = m_xml.qualifiedName();
    if (name == u"string") {
        QString text;
        if (!readText(text, u"string"))
            return false;
        if (!xmlCanCarry(text))
            return fail(u"<string> holds %1"_s.arg(unwritableCharacter(text)));
        // <string/> is an empty string, not a missing one.
        if (text.isNull())
            text = QString(QLatin1StringView(""));
        result = std::move(text);
        return true;
    }
    if (name == u"dict")
        return readDict(depth + 1, result);
    if (name == u"array")
        return readArray(depth + 1, result);
    if (name == u"integer")
        return readInteger(result);
    if (name == u"real")
        return readReal(result);
    if (name == u"true" || name == u"false") {
        const bool value = name == u"true";
        if (!readEmpty(value ? u"true" : u"false"))
            return false;
        result = value;
        return true;
    }
    if (name == u"date")
        return readDate(result);
    if (name == u"data")
        return readData(result);
    if (name == u"key")
        return fail(u"<key> outside a <dict>"_s);
    return fail(u"unknown element <%1>"_s.arg(name));
}

// Moves to the next element inside a container, or to the container's end.
Reader::Child Reader::nextChild(QStringView container)
{
    if (!nextSignificant())
        return Child::Failed;
    switch (m_xml.tokenType()) {
    case QXmlStreamReader::EndElement:
        return Child::End;
    case QXmlStreamReader::Characters:
        fail(u"text inside <%1>"_s.arg(container));
        return Child::Failed;
    case QXmlStreamReader::StartElement:
        return Child::Element;
    default:
        fail(u"unexpected end of file"_s);
        return Child::Failed;
    }
}

bool Reader::readDict(int depth, QVariant &result)
{
    if (depth > kMaxDepth)
        return fail(u"containers nested deeper than %1 levels"_s.arg(kMaxDepth));
    QVariantMap map;
    for (;;) {
        const Child child = nextChild(u"dict");
        if (child == Child::Failed)
            return false;
        if (child == Child::End) {
            result = std::move(map);
            return true;
        }
        if (m_xml.qualifiedName() != u"key")
            return fail(u"<%1> without a <key> in <dict>"_s.arg(m_xml.qualifiedName()));
        QString key;
        if (!readText(key, u"key"))
            return false;
        if (!xmlCanCarry(key))
            return fail(u"<key> holds %1"_s.arg(unwritableCharacter(key)));
        if (!nextSignificant())
            return false;
        if (m_xml.tokenType() != QXmlStreamReader::StartElement || m_xml.qualifiedName() == u"key")
            return fail(u"<key> without a value"_s);
        QVariant value;
        if (!readValue(depth, value))
            return false;
        // A repeated key keeps its last value.
        map.insert(key.isNull() ? QString(QLatin1StringView("")) : std::move(key), std::move(value));
    }
}

bool Reader::readArray(int depth, QVariant &result)
{
    if (depth > kMaxDepth)
        return fail(u"containers nested deeper than %1 levels"_s.arg(kMaxDepth));
    QVariantList list;
    for (;;) {
        const Child child = nextChild(u"array");
        if (child == Child::Failed)
            return false;
        if (child == Child::End) {
            result = std::move(list);
            return true;
        }
        QVariant value;
        if (!readValue(depth, value))
            return false;
        list.append(std::move(value));
    }
}

bool Reader::readText(QString &text, QStringView element)
{
    for (;;) {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::Characters:
            if (text.isNull())
                text = m_xml.text().toString();
            else
                text.append(m_xml.text());
            break;
        case QXmlStreamReader::EndElement:
            return true;
        case QXmlStreamReader::StartElement:
            return fail(u"element <%1> inside <%2>"_s.arg(m_xml.qualifiedName(), element));
        case QXmlStreamReader::EntityReference:
        case QXmlStreamReader::Invalid:
            return failOnToken();
        default:
            break;
        }
    }
}

bool Reader::readEmpty(QStringView element)
{
    if (!nextSignificant())
        return false;
    if (m_xml.tokenType() != QXmlStreamReader::EndElement)
        return fail(u"<%1> is not empty"_s.arg(element));
    return true;
}

bool Reader::readInteger(QVariant &result)
{
    m_scratch.resize(0);
    if (!readText(m_scratch, u"integer"))
        return false;
    QStringView text = trimmedXml(m_scratch);

    bool negative = false;
    if (!text.isEmpty() && (text.front() == u'-' || text.front() == u'+')) {
        negative = text.front() == u'-';
        text = text.sliced(1);
    }
    int base = 10;
    if (text.size() > 2 && text[0] == u'0' && (text[1] == u'x' || text[1] == u'X')) {
        base = 16;
        text = text.sliced(2);
    }
    if (text.isEmpty())
        return fail(u"<integer> without a number"_s);

    // Accumulate the magnitude unsigned so that both ends of the signed range
    // and the unsigned values above it are told apart without overflow.
    quint64 magnitude = 0;
    bool outOfRange = false;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        int digit;
        if (u >= u'0' && u <= u'9')
            digit = u - u'0';
        else if (base == 16 && u >= u'a' && u <= u'f')
            digit = u - u'a' + 10;
        else if (base == 16 && u >= u'A' && u <= u'F')
            digit = u - u'A' + 10;
        else
            return fail(u"<integer> holds %1, not a number"_s.arg(quoted(trimmedXml(m_scratch))));
        if (magnitude > (std::numeric_limits<quint64>::max() - quint64(digit)) / quint64(base))
            outOfRange = true;
        else
            magnitude = magnitude * quint64(base) + quint64(digit);
    }
    constexpr quint64 signedMax = quint64(std::numeric_limits<qint64>::max());
    if (outOfRange || (negative && magnitude > signedMax + 1))
        return fail(u"integer out of range"_s);

    if (negative)
        result = magnitude == signedMax + 1 ? std::numeric_limits<qint64>::min()
                                             : -qint64(magnitude);
    else if (magnitude > signedMax)
        result = qulonglong(magnitude);
    else
        result = qlonglong(magnitude);
    return true;
}

bool Reader::readReal(QVariant &result)
{
    m_scratch.resize(0);
    if (!readText(m_scratch, u"real"))
        return false;
    const QStringView text = trimmedXml(m_scratch);
    const auto bad = [&] { return fail(u"<real> holds %1, not a number"_s.arg(quoted(text))); };

    char buffer[64];
    if (text.isEmpty() || text.size() >= qsizetype(sizeof buffer))
        return text.isEmpty() ? fail(u"<real> without a number"_s) : bad();
    qsizetype length = 0;
    for (const QChar c : text) {
        if (c.unicode() > 0x7F)
            return bad();
        buffer[length++] = char(c.unicode());
    }
    const char *begin = buffer;
    const char *end = buffer + length;
    // from_chars takes no leading plus sign; a sign after it stays an error.
    if (*begin == '+' && length > 1 && begin[1] != '-' && begin[1] != '+')
        ++begin;

    double value = 0;
    const auto [stop, status] = std::from_chars(begin, end, value, std::chars_format::general);
    if (status == std::errc::result_out_of_range)
        return fail(u"real out of range"_s);
    if (status != std::errc() || stop != end)
        return bad();
    result = value;
    return true;
}

bool Reader::readDate(QVariant &result)
{
    m_scratch.resize(0);
    if (!readText(m_scratch, u"date"))
        return false;
    const QStringView text = trimmedXml(m_scratch);

    // Exactly yyyy-MM-ddTHH:mm:ssZ, always in UTC.
    static constexpr char16_t pattern[] = u"dddd-dd-ddTdd:dd:ddZ";
    constexpr qsizetype patternLength = std::size(pattern) - 1;
    bool shapeOk = text.size() == patternLength;
    for (qsizetype i = 0; shapeOk && i < patternLength; ++i) {
        const char16_t c = text[i].unicode();
        shapeOk = pattern[i] == u'd' ? (c >= u'0' && c <= u'9') : c == pattern[i];
    }
    const auto number = [&](qsizetype from, qsizetype count) {
        int value = 0;
        for (qsizetype i = from; i < from + count; ++i)
            value = value * 10 + (text[i].unicode() - u'0');
        return value;
    };
    if (shapeOk) {
        const QDate date(number(0, 4), number(5, 2), number(8, 2));
        const QTime time(number(11, 2), number(14, 2), number(17, 2));
        if (date.isValid() && time.isValid()) {
            result = QDateTime(date, time, Qt::UTC);
            return true;
        }
    }
    return fail(u"<date> holds %1, not a date like 2026-11-14T15:55:40Z"_s.arg(quoted(text)));
}

bool Reader::readData(QVariant &result)
{
    m_scratch.resize(0);
    if (!readText(m_scratch, u"data"))
        return false;
    QByteArray encoded;
    encoded.reserve(m_scratch.size());
    for (const QChar c : std::as_const(m_scratch)) {
        const char16_t u = c.unicode();
        if (isXmlSpace(u))
            continue;
        if (u > 0x7F)
            return fail(u"<data> holds characters that are not base64"_s);
        encoded.append(char(u));
    }
    // One character left over after whole groups of four can never be base64.
    const auto decoded = QByteArray::fromBase64Encoding(encoded, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded || encoded.size() % 4 == 1)
        return fail(u"<data> holds invalid base64"_s);
    QByteArray bytes = decoded.decoded;
    if (bytes.isNull())
        bytes = QByteArray("");
    result = std::move(bytes);
    return true;
}

// ---------------------------------------------------------------------------
// Writing

class Writer
{
public:
    // Without an output the writer only checks, so that validation and
    // writing can never disagree.
    explicit Writer(QByteArray *out)
        : m_out(out)
    {
    }

    bool write(const QVariant &value, int depth, const QString &path);
    QString errorMessage() const { return m_message; }

private:
    bool fail(const QString &path, const QString &what);
    void indent(int depth);
    void append(QByteArrayView text)
    {
        if (m_out)
            m_out->append(text);
    }
    bool appendEscaped(const QString &text, const QString &path);
    bool writeMap(const QStringList &keys, const auto &lookup, int depth, const QString &path);
    bool writeList(const auto &list, int depth, const QString &path);
    void writeReal(double value);

    QByteArray *m_out;
    QString m_message;
};

QString describePath(const QString &path)
{
    return path.isEmpty() ? u"the top level"_s : u"\"%1\""_s.arg(path);
}

QString childPath(const QString &path, const QString &key)
{
    return path.isEmpty() ? key : path + u'.' + key;
}

QString indexPath(const QString &path, qsizetype index)
{
    return u"%1[%2]"_s.arg(path).arg(index);
}

bool Writer::fail(const QString &path, const QString &what)
{
    m_message = u"Property list cannot be written: %1 at %2"_s.arg(what, describePath(path));
    return false;
}

void Writer::indent(int depth)
{
    if (m_out)
        m_out->append(depth, '\t');
}

bool Writer::appendEscaped(const QString &text, const QString &path)
{
    // Most strings need nothing escaped: check first, then copy in one go.
    bool plain = true;
    bool suspect = false;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (u == u'&' || u == u'<' || u == u'>' || u == u'\r')
            plain = false;
        else if (mayBeUnwritable(u))
            suspect = true;
    }
    if (suspect) {
        if (const QString what = unwritableCharacter(text); !what.isEmpty())
            return fail(path, u"the string holds %1, which XML cannot carry"_s.arg(what));
    }
    if (!m_out)
        return true;
    if (plain) {
        m_out->append(text.toUtf8());
        return true;
    }
    QString escaped;
    escaped.reserve(text.size() + 16);
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'&': escaped += u"&amp;"; break;
        case u'<': escaped += u"&lt;"; break;
        case u'>': escaped += u"&gt;"; break;
        // A raw carriage return would come back as a line feed.
        case u'\r': escaped += u"&#13;"; break;
        default: escaped += c; break;
        }
    }
    m_out->append(escaped.toUtf8());
    return true;
}

void Writer::writeReal(double value)
{
    if (std::isnan(value)) {
        append("nan");
    } else if (std::isinf(value)) {
        append(value < 0 ? "-inf" : "inf");
    } else {
        // The shortest text that reads back as the same double, keeping -0.
        char buffer[32];
        const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
        append(QByteArrayView(buffer, result.ptr - buffer));
    }
}

bool Writer::writeMap(const QStringList &keys, const auto &lookup, int depth, const QString &path)
{
    if (depth >= kMaxDepth)
        return fail(path, u"containers are nested deeper than %1 levels"_s.arg(kMaxDepth));
    if (keys.isEmpty()) {
        append("<dict/>\n");
        return true;
    }
    append("<dict>\n");
    for (const QString &key : keys) {
        const QString keyPath = childPath(path, key);
        indent(depth + 1);
        append("<key>");
        if (!appendEscaped(key, keyPath))
            return false;
        append("</key>\n");
        indent(depth + 1);
        if (!write(lookup(key), depth + 1, keyPath))
            return false;
    }
    indent(depth);
    append("</dict>\n");
    return true;
}

bool Writer::writeList(const auto &list, int depth, const QString &path)
{
    if (depth >= kMaxDepth)
        return fail(path, u"containers are nested deeper than %1 levels"_s.arg(kMaxDepth));
    if (list.isEmpty()) {
        append("<array/>\n");
        return true;
    }
    append("<array>\n");
    for (qsizetype i = 0; i < list.size(); ++i) {
        indent(depth + 1);
        if (!write(QVariant(list.at(i)), depth + 1, indexPath(path, i)))
            return false;
    }
    indent(depth);
    append("</array>\n");
    return true;
}

bool Writer::write(const QVariant &value, int depth, const QString &path)
{
    switch (value.typeId()) {
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        // Walked in the map's own, sorted, order.
        return writeMap(map.keys(), [&map](const QString &key) { return map.value(key); }, depth, path);
    }
    case QMetaType::QVariantHash: {
        const QVariantHash hash = value.toHash();
        QStringList keys = hash.keys();
        std::sort(keys.begin(), keys.end());
        return writeMap(keys, [&hash](const QString &key) { return hash.value(key); }, depth, path);
    }
    case QMetaType::QVariantList:
        return writeList(value.toList(), depth, path);
    case QMetaType::QStringList:
        return writeList(value.toStringList(), depth, path);
    case QMetaType::QString:
        append("<string>");
        if (!appendEscaped(value.toString(), path))
            return false;
        append("</string>\n");
        return true;
    case QMetaType::Bool:
        append(value.toBool() ? "<true/>\n" : "<false/>\n");
        return true;
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        append("<integer>");
        append(QByteArray::number(value.toLongLong()));
        append("</integer>\n");
        return true;
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        append("<integer>");
        append(QByteArray::number(value.toULongLong()));
        append("</integer>\n");
        return true;
    case QMetaType::Double:
    case QMetaType::Float:
        append("<real>");
        writeReal(value.toDouble());
        append("</real>\n");
        return true;
    case QMetaType::QDateTime: {
        const QDateTime utc = value.toDateTime().toUTC();
        if (!utc.isValid())
            return fail(path, u"the date is invalid"_s);
        if (utc.date().year() < 1 || utc.date().year() > 9999)
            return fail(path, u"the date's year %1 is outside 1...9999"_s.arg(utc.date().year()));
        append("<date>");
        append(utc.toString(u"yyyy-MM-ddTHH:mm:ssZ"_s).toLatin1());
        append("</date>\n");
        return true;
    }
    case QMetaType::QByteArray: {
        if (!m_out)
            return true;
        const QByteArray encoded = value.toByteArray().toBase64();
        // Long data goes on lines of 76 characters, indented one level deeper.
        constexpr qsizetype lineLength = 76;
        if (encoded.size() <= lineLength) {
            append("<data>");
            append(encoded);
            append("</data>\n");
            return true;
        }
        append("<data>\n");
        for (qsizetype at = 0; at < encoded.size(); at += lineLength) {
            indent(depth + 1);
            append(QByteArrayView(encoded).sliced(at, std::min(lineLength, encoded.size() - at)));
            append("\n");
        }
        indent(depth);
        append("</data>\n");
        return true;
    }
    case QMetaType::UnknownType:
        return fail(path, u"an invalid QVariant is not a property list value"_s);
    default:
        return fail(path, u"a value of type %1 is not a property list value"_s
                              .arg(QString::fromLatin1(value.metaType().name())));
    }
}

} // namespace

QVariant QVPropertyListSerialization::propertyListWithData(const QByteArray &data, QVError *error)
{
    if (std::all_of(data.begin(), data.end(), [](char c) { return isXmlSpace(char16_t(c)); })) {
        report(error, makeError(QVPropertyListReadCorruptError, u"Property list is empty"_s));
        return {};
    }
    if (data.startsWith("bplist")) {
        report(error, makeError(QVPropertyListReadCorruptError,
                                u"Property list is in the binary format, which cannot be read"_s));
        return {};
    }
    if (const qsizetype offset = nulOffset(data); offset >= 0) {
        report(error, makeError(QVPropertyListReadCorruptError,
                                u"Property list is malformed: NUL byte at offset %1"_s.arg(offset)));
        return {};
    }
    Reader reader(data);
    QVariant result = reader.read();
    if (!result.isValid())
        report(error, makeError(QVPropertyListReadCorruptError, reader.errorMessage()));
    return result;
}

QVariant QVPropertyListSerialization::propertyListWithDevice(QIODevice *device, QVError *error)
{
    QV_ASSERT(device != nullptr);
    if (!device->isReadable()) {
        report(error, makeError(QVFileReadUnknownError,
                                u"The property list could not be read: %1"_s.arg(
                                    device->isOpen() ? u"the device is not open for reading"_s
                                                     : u"the device is not open"_s)));
        return {};
    }
    return propertyListWithData(device->readAll(), error);
}

QVariant QVPropertyListSerialization::propertyListWithContentsOfFile(const QString &path, QVError *error)
{
    const QString name = QFileInfo(path).fileName();
    QFile file(path);
    if (!file.exists()) {
        report(error, makeError(QVFileReadNoSuchFileError,
                                u"The file \u201c%1\u201d couldn\u2019t be opened because there is no such file."_s
                                    .arg(name),
                                path));
        return {};
    }
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        report(error, makeError(QVFileReadUnknownError,
                                u"The file \u201c%1\u201d couldn\u2019t be opened: %2"_s.arg(
                                    name, QFileInfo(path).isDir() ? u"it is a folder"_s : file.errorString()),
                                path));
        return {};
    }
    QVError parseError;
    QVariant result = propertyListWithData(file.readAll(), &parseError);
    if (!result.isValid() && error) {
        QVariantMap userInfo = parseError.userInfo();
        userInfo.insert(QVFilePathErrorKey, path);
        *error = QVError(parseError.domain(), parseError.code(), userInfo);
    }
    return result;
}

QByteArray QVPropertyListSerialization::dataWithPropertyList(const QVariant &propertyList, QVError *error)
{
    QByteArray out;
    out.reserve(4096);
    out.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\">\n");
    Writer writer(&out);
    if (!writer.write(propertyList, 0, QString())) {
        report(error, makeError(QVPropertyListWriteInvalidError, writer.errorMessage()));
        return {};
    }
    out.append("</plist>\n");
    return out;
}

bool QVPropertyListSerialization::writePropertyList(const QVariant &propertyList, QIODevice *device,
                                                    QVError *error)
{
    QV_ASSERT(device != nullptr);
    const QByteArray data = dataWithPropertyList(propertyList, error);
    if (data.isNull())
        return false;
    if (!device->isWritable() || device->write(data) != data.size()) {
        report(error, makeError(QVFileWriteUnknownError,
                                u"The property list could not be written: %1"_s.arg(
                                    device->isWritable() ? device->errorString()
                                                         : u"the device is not open for writing"_s)));
        return false;
    }
    return true;
}

bool QVPropertyListSerialization::writePropertyListToFile(const QVariant &propertyList, const QString &path,
                                                          QVError *error)
{
    // Serialise before touching the file, so that an invalid value leaves it as it was.
    const QByteArray data = dataWithPropertyList(propertyList, error);
    if (data.isNull())
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit()) {
        report(error, makeError(QVFileWriteUnknownError,
                                u"The file \u201c%1\u201d couldn\u2019t be saved: %2"_s.arg(
                                    QFileInfo(path).fileName(), file.errorString()),
                                path));
        return false;
    }
    return true;
}

bool QVPropertyListSerialization::propertyListIsValid(const QVariant &propertyList)
{
    return Writer(nullptr).write(propertyList, 0, QString());
}

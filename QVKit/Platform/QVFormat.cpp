#include "QVKit/Platform/QVFormat.h"

#include "QVKit/Platform/QVError.h"

#include <QtCore/QDateTime>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <algorithm>
#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

bool isNullMarker(const QVariant &value)
{
    return value.metaType() == QMetaType::fromType<std::nullptr_t>();
}

QString describeMap(const QVariantMap &map)
{
    QString text = u"{"_s;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        text += it.key() + u" = "_s + QVDescription(it.value()) + u"; "_s;
    return text + u'}';
}

} // namespace

QString QVDescription(const QVariant &value)
{
    if (!value.isValid())
        return u"(null)"_s;
    if (isNullMarker(value))
        return u"<null>"_s;

    switch (value.metaType().id()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Bool:
        return value.toBool() ? u"1"_s : u"0"_s;
    case QMetaType::QByteArray:
        return u'<' + QString::fromLatin1(value.toByteArray().toHex()) + u'>';
    case QMetaType::QDateTime:
        return value.toDateTime().toUTC().toString(u"yyyy-MM-dd HH:mm:ss +0000"_s);
    case QMetaType::QUrl:
        return value.toUrl().toString();
    case QMetaType::QStringList:
        return u'(' + value.toStringList().join(u", "_s) + u')';
    case QMetaType::QVariantList: {
        QStringList parts;
        for (const QVariant &element : value.toList())
            parts.append(QVDescription(element));
        return u'(' + parts.join(u", "_s) + u')';
    }
    case QMetaType::QVariantMap:
        return describeMap(value.toMap());
    case QMetaType::QVariantHash: {
        // Sorted through a map so that the description does not depend on hashing.
        QVariantMap sorted;
        const QVariantHash hash = value.toHash();
        for (auto it = hash.cbegin(); it != hash.cend(); ++it)
            sorted.insert(it.key(), it.value());
        return describeMap(sorted);
    }
    default:
        break;
    }
    if (value.metaType() == QMetaType::fromType<QVError>())
        return value.value<QVError>().description();
    if (value.canConvert<QString>())
        return value.toString();
    return u"<%1>"_s.arg(QString::fromLatin1(value.typeName()));
}

QVFormatArgument::QVFormatArgument(const char *value)
    : m_kind(Kind::Text)
    , m_pointer(value)
    , m_text(value ? QString::fromUtf8(value) : u"(null)"_s)
{
}

qlonglong QVFormatArgument::toSigned() const
{
    switch (m_kind) {
    case Kind::Signed:
        return m_signed;
    case Kind::Unsigned:
        return qlonglong(m_unsigned);
    case Kind::Double:
        return qlonglong(m_double);
    case Kind::Pointer:
        return qlonglong(reinterpret_cast<quintptr>(m_pointer));
    case Kind::Text:
        return m_text.toLongLong();
    }
    return 0;
}

qulonglong QVFormatArgument::toUnsigned() const
{
    return m_kind == Kind::Unsigned ? m_unsigned : qulonglong(toSigned());
}

double QVFormatArgument::toDouble() const
{
    switch (m_kind) {
    case Kind::Double:
        return m_double;
    case Kind::Unsigned:
        return double(m_unsigned);
    case Kind::Text:
        return m_text.toDouble();
    default:
        return double(toSigned());
    }
}

QString QVFormatArgument::toText() const
{
    switch (m_kind) {
    case Kind::Text:
        return m_text;
    case Kind::Signed:
        return QString::number(m_signed);
    case Kind::Unsigned:
        return QString::number(m_unsigned);
    case Kind::Double:
        return QString::number(m_double, 'g', 17);
    case Kind::Pointer:
        return m_pointer ? u"0x"_s + QString::number(reinterpret_cast<quintptr>(m_pointer), 16)
                         : u"(null)"_s;
    }
    return {};
}

namespace {

// The pieces of one conversion directive, as read from the format.
struct Directive
{
    QByteArray flags;
    int width = -1;
    int precision = -1;
    char conversion = 0;
};

QString padded(const QString &text, const Directive &directive)
{
    if (directive.width <= text.size())
        return text;
    const QString padding(directive.width - text.size(), u' ');
    return directive.flags.contains('-') ? text + padding : padding + text;
}

// Numbers go through the C library so that every flag behaves as printf's.
template <typename Value>
QString printNumber(const Directive &directive, const char *length, Value value)
{
    QByteArray format = "%" + directive.flags;
    if (directive.width >= 0)
        format += QByteArray::number(directive.width);
    if (directive.precision >= 0)
        format += '.' + QByteArray::number(directive.precision);
    format += length;
    format += directive.conversion;

    char buffer[128];
    int written = std::snprintf(buffer, sizeof buffer, format.constData(), value);
    if (written < 0)
        return {};
    if (size_t(written) < sizeof buffer)
        return QString::fromLatin1(buffer, written);
    QByteArray large(written + 1, '\0');
    std::snprintf(large.data(), large.size(), format.constData(), value);
    return QString::fromLatin1(large.constData(), written);
}

} // namespace

QString QVFormatList(const char *format, std::span<const QVFormatArgument> arguments)
{
    if (!format)
        return {};

    QString result;
    size_t next = 0;
    const auto takeArgument = [&]() -> const QVFormatArgument * {
        return next < arguments.size() ? &arguments[next++] : nullptr;
    };

    const char *cursor = format;
    const char *literalStart = cursor;
    while (*cursor) {
        if (*cursor != '%') {
            ++cursor;
            continue;
        }
        result += QString::fromUtf8(literalStart, cursor - literalStart);
        const char *directiveStart = cursor;
        ++cursor;
        if (*cursor == '%') {
            result += u'%';
            literalStart = ++cursor;
            continue;
        }

        Directive directive;
        while (*cursor && std::strchr("-+ #0'", *cursor))
            directive.flags += *cursor++;
        if (*cursor == '*') {
            ++cursor;
            if (const QVFormatArgument *argument = takeArgument()) {
                // Clamped first, so that negating the most negative number cannot overflow.
                const qlonglong width = std::clamp(argument->toSigned(), -4096LL, 4096LL);
                if (width < 0)
                    directive.flags += '-';
                directive.width = int(width < 0 ? -width : width);
            }
        } else {
            while (*cursor >= '0' && *cursor <= '9')
                directive.width = qMin(qMax(directive.width, 0) * 10 + (*cursor++ - '0'), 4096);
        }
        if (*cursor == '.') {
            ++cursor;
            directive.precision = 0;
            if (*cursor == '*') {
                ++cursor;
                if (const QVFormatArgument *argument = takeArgument())
                    directive.precision = int(std::clamp(argument->toSigned(), -1LL, 4096LL));
            } else {
                while (*cursor >= '0' && *cursor <= '9')
                    directive.precision = qMin(directive.precision * 10 + (*cursor++ - '0'), 4096);
            }
        }
        while (*cursor && std::strchr("hlLqjzt", *cursor))
            ++cursor;
        directive.conversion = *cursor;
        if (!directive.conversion) {
            literalStart = cursor; // an unfinished directive at the end prints nothing
            break;
        }
        ++cursor;
        literalStart = cursor;

        const QVFormatArgument *argument = nullptr;
        if (std::strchr("diuoxXcCsSfFeEgGaAp@", directive.conversion))
            argument = takeArgument();
        else {
            // Not a conversion: keep the text as written.
            result += QString::fromUtf8(directiveStart, cursor - directiveStart);
            continue;
        }
        if (!argument)
            continue;

        switch (directive.conversion) {
        case 'd':
        case 'i':
            result += printNumber(directive, "ll", argument->toSigned());
            break;
        case 'u':
        case 'o':
        case 'x':
        case 'X':
            result += printNumber(directive, "ll", argument->toUnsigned());
            break;
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            result += printNumber(directive, "", argument->toDouble());
            break;
        case 'c':
        case 'C': {
            const qulonglong value = argument->toUnsigned();
            const char32_t code = value <= 0x10FFFF ? char32_t(value) : char32_t(0xFFFD);
            result += padded(QString::fromUcs4(&code, 1), directive);
            break;
        }
        case 'p':
            result += padded(argument->kind() == QVFormatArgument::Kind::Pointer
                                     && !argument->toPointer()
                                 ? u"0x0"_s
                                 : u"0x"_s + QString::number(argument->toUnsigned(), 16),
                             directive);
            break;
        default: { // s, S, @
            QString text = argument->toText();
            if (directive.precision >= 0 && directive.conversion != '@')
                text.truncate(directive.precision);
            result += padded(text, directive);
            break;
        }
        }
    }
    result += QString::fromUtf8(literalStart, cursor - literalStart);
    return result;
}

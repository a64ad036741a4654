#pragma once

#include <QVKit/QVKitExport.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <concepts>
#include <span>
#include <type_traits>

/**
 * The text a value shows for "%@": a string as it is, a number in decimal,
 * lists as "(a, b)", dictionaries as "{key = value; }", data as hex in angle
 * brackets, no object as "(null)" and the null marker as "<null>".
 */
QVKIT_EXPORT QString QVDescription(const QVariant &value);

/** One argument of QVFormat, already reduced to what a conversion can print. */
class QVKIT_EXPORT QVFormatArgument
{
public:
    enum class Kind { Signed, Unsigned, Double, Text, Pointer };

    QVFormatArgument(bool value) : m_kind(Kind::Signed), m_signed(value) {}
    QVFormatArgument(char value) : m_kind(Kind::Signed), m_signed(value) {}
    QVFormatArgument(QChar value) : m_kind(Kind::Unsigned), m_unsigned(value.unicode()) {}
    QVFormatArgument(double value) : m_kind(Kind::Double), m_double(value) {}
    QVFormatArgument(const char *value);
    QVFormatArgument(const QString &value) : m_kind(Kind::Text), m_text(value) {}
    QVFormatArgument(QStringView value) : m_kind(Kind::Text), m_text(value.toString()) {}
    QVFormatArgument(QLatin1StringView value) : m_kind(Kind::Text), m_text(value) {}
    QVFormatArgument(const QByteArray &value) : QVFormatArgument(value.constData()) {}
    QVFormatArgument(const QVariant &value) : m_kind(Kind::Text), m_text(QVDescription(value)) {}
    QVFormatArgument(std::nullptr_t) : m_kind(Kind::Pointer), m_pointer(nullptr) {}

    template <std::signed_integral Integer>
    QVFormatArgument(Integer value) : m_kind(Kind::Signed), m_signed(value)
    {
    }
    template <std::unsigned_integral Integer>
        requires(!std::same_as<Integer, bool>)
    QVFormatArgument(Integer value) : m_kind(Kind::Unsigned), m_unsigned(value)
    {
    }
    QVFormatArgument(float value) : QVFormatArgument(double(value)) {}
    /** An enumeration prints as its number, as its underlying integer would. */
    template <typename Enum>
        requires std::is_enum_v<Enum>
    QVFormatArgument(Enum value) : QVFormatArgument(std::underlying_type_t<Enum>(value))
    {
    }

    /** Pointers other than C strings print as addresses, and "%@" names their address. */
    template <typename T>
        requires(!std::is_same_v<std::remove_cv_t<T>, char>)
    QVFormatArgument(T *pointer) : m_kind(Kind::Pointer), m_pointer(pointer)
    {
    }

    /** Any value with a description() member prints that for "%@". */
    template <typename T>
        requires requires(const T &value) {
            { value.description() } -> std::convertible_to<QString>;
        }
    QVFormatArgument(const T &value) : m_kind(Kind::Text), m_text(value.description())
    {
    }

    Kind kind() const { return m_kind; }
    qlonglong toSigned() const;
    qulonglong toUnsigned() const;
    double toDouble() const;
    const void *toPointer() const { return m_pointer; }
    /** The text for "%@" and "%s", whatever the kind. */
    QString toText() const;

private:
    Kind m_kind;
    qlonglong m_signed = 0;
    qulonglong m_unsigned = 0;
    double m_double = 0.0;
    const void *m_pointer = nullptr;
    QString m_text;
};

/**
 * printf-style formatting with "%@" for a value's description.
 *
 * Conversions d i u o x X c C s S f F e E g G a A p @ and %% are understood,
 * with flags, width, precision and "*" for either; length modifiers are read
 * and ignored, since each argument carries its own type. A missing argument
 * prints nothing, and surplus arguments are ignored: a bad format never reads
 * memory it was not given.
 */
QVKIT_EXPORT QString QVFormatList(const char *format, std::span<const QVFormatArgument> arguments);

template <typename... Arguments>
QString QVFormat(const char *format, const Arguments &...arguments)
{
    if constexpr (sizeof...(Arguments) == 0) {
        return QVFormatList(format, {});
    } else {
        const QVFormatArgument list[] = {QVFormatArgument(arguments)...};
        return QVFormatList(format, list);
    }
}

#pragma once

#include <QVKit/Platform/QVError.h>

#include <QtCore/QByteArray>
#include <QtCore/QVariant>

class QIODevice;

/**
 * Reads and writes XML property lists.
 *
 * The value types map onto QVariant as follows: dict ⇄ QVariantMap (QVariantHash
 * is written too), array ⇄ QVariantList (QStringList is written too), string ⇄
 * QString, integer ⇄ qlonglong (qulonglong above the signed range), real ⇄
 * double, true/false ⇄ bool, date ⇄ QDateTime in UTC, data ⇄ QByteArray. Qt's
 * containers are values, so every result is already mutable: there is no
 * separate "mutable containers" mode to ask for.
 *
 * Failures never throw: reading answers an invalid QVariant, writing a null
 * QByteArray or false, and the error (domain QVCocoaErrorDomain, codes
 * QVPropertyListReadCorruptError or QVPropertyListWriteInvalidError) says
 * where and why in its localized description: the line and column of bad
 * input, the key path ("window.frames[2]") of a value that cannot be written.
 *
 * Both directions accept the same values, so whatever is read can be written
 * back unchanged: containers nest at most 512 levels, strings hold only
 * characters XML 1.0 can carry (no control characters other than tab, line
 * feed and carriage return, no lone surrogates, no U+FFFE/U+FFFF), dates are
 * whole seconds in the years 1 to 9999.
 */
class QVKIT_EXPORT QVPropertyListSerialization
{
public:
    QVPropertyListSerialization() = delete;

    /**
     * The property list in data: a <plist> document, or a single value element
     * without the wrapper. An invalid QVariant and the error on failure.
     */
    static QVariant propertyListWithData(const QByteArray &data, QVError *error = nullptr);
    /** Reads the whole device, then parses it as propertyListWithData() does. */
    static QVariant propertyListWithDevice(QIODevice *device, QVError *error = nullptr);
    /**
     * Reads a file; a missing file gives QVFileReadNoSuchFileError, one that
     * cannot be opened QVFileReadUnknownError. Errors carry QVFilePathErrorKey.
     */
    static QVariant propertyListWithContentsOfFile(const QString &path, QVError *error = nullptr);

    /** The XML form of a value; a null QByteArray and the error when it is not a property list. */
    static QByteArray dataWithPropertyList(const QVariant &propertyList, QVError *error = nullptr);
    /** Writes the XML form to a device; a failed write gives QVFileWriteUnknownError. */
    static bool writePropertyList(const QVariant &propertyList, QIODevice *device,
                                  QVError *error = nullptr);
    /**
     * Writes the XML form to a file, replacing it atomically: on any failure
     * the previous file is left as it was.
     */
    static bool writePropertyListToFile(const QVariant &propertyList, const QString &path,
                                        QVError *error = nullptr);

    /** True when the value, and everything inside it, can be written. */
    static bool propertyListIsValid(const QVariant &propertyList);
};

#pragma once

#include <QVKit/Platform/QVStringConstant.h>
#include <QVKit/QVKitExport.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QUrl>
#include <QtCore/QVariantMap>

#include <chrono>
#include <memory>

/** Posted on the default notification centre, object: the store, whenever its contents change. */
inline constexpr QVStringConstant QVUserDefaultsDidChangeNotification = u"QVUserDefaultsDidChangeNotification";

/**
 * The per-user settings store: property-list values under string keys.
 *
 * Two layers answer a read. Values the user (or the application) set live in
 * an XML property-list file; fallback values registered at start-up live in
 * memory only and answer for keys the file does not hold. Removing a key
 * therefore brings back its registered value. Keys are any non-empty strings.
 *
 * Several processes (and several store objects) may share one file. Changes
 * wait in memory until they are written; a write takes the lock file
 * "<file>.lock" (waiting at most lockTimeout), re-reads the file, applies the
 * changes on top of what it holds and replaces it atomically, so every write
 * that reports success is in the file and nobody's change is lost.
 *
 * A file that does not read is never written over. A damaged file (not a
 * property-list dictionary) reads as an empty store with status()
 * FormatError; the next write moves it aside as "NAME.corrupt-YYYYMMDD-HHMMSS"
 * (recoveredFilePath()) and writes a new file. A file that cannot be read at
 * all (AccessError) refuses writes: the changes stay in memory. Failures are
 * reported through status() and errorString() and the "qvkit.settings"
 * logging category, never as lines of their own on standard error.
 *
 * The standard store's file is "<bundle identifier>.plist" in the user's
 * configuration folder; setStandardUserDefaultsFilePath() points it elsewhere,
 * which tests always do. The store is used from the main thread.
 */
class QVKIT_EXPORT QVUserDefaults : public QObject
{
    Q_OBJECT

public:
    /** The outcome of the last read or write of the file, as QSettings::Status is. */
    enum class Status {
        NoError,
        /** The file or its folder cannot be read or written. */
        AccessError,
        /** The file is not a property-list dictionary. */
        FormatError,
        /** Another process held the lock file for longer than the lock timeout. */
        LockError,
    };

    /**
     * The application's store, made on first use, over the file set with
     * setStandardUserDefaultsFilePath(), else the one named by the environment
     * variable QVKIT_USER_DEFAULTS_PATH, else defaultFilePath().
     */
    static QVUserDefaults *standardUserDefaults();

    /**
     * Points the standard store at another file. Before first use this only
     * sets where it will be made; afterwards the store writes what it has,
     * then reads the new file, keeping its registered values.
     */
    static void setStandardUserDefaultsFilePath(const QString &filePath);

    /** Where the standard store keeps its file unless told otherwise. */
    static QString defaultFilePath();

    /** A store over its own file: for tools and tests that need a second one. */
    explicit QVUserDefaults(const QString &filePath, QObject *parent = nullptr);
    ~QVUserDefaults() override;

    QString filePath() const;

    /** How the last read or write of the file went; reading happens on construction too. */
    Status status() const;
    /**
     * What went wrong, naming the file and the problem
     * ("/path/s.plist: Property list is malformed at line 3, column 7: …"); empty on NoError.
     */
    QString errorString() const;
    /** Where the last write kept a damaged file it moved aside; empty when it moved none. */
    QString recoveredFilePath() const;
    /** How long a write waits for the lock file (10 seconds unless set). */
    void setLockTimeout(std::chrono::milliseconds timeout);

    /**
     * Adds fallback values; later registrations of a key replace earlier ones.
     * Any non-empty registration emits didChange().
     */
    void registerDefaults(const QVariantMap &defaults);
    /** The fallback values registered so far. */
    QVariantMap registeredDefaults() const;

    /** The value set for the key, else its registered value, else an invalid QVariant. */
    QVariant objectForKey(const QString &key) const;
    /** The value if it is a string (numbers are written as text), else a null string. */
    QString stringForKey(const QString &key) const;
    /** The value if it is an array, else an empty list. */
    QVariantList arrayForKey(const QString &key) const;
    /** The value if it is an array holding only strings, else an empty list. */
    QStringList stringArrayForKey(const QString &key) const;
    /** The value if it is a dictionary, else an empty map. */
    QVariantMap dictionaryForKey(const QString &key) const;
    /** The value if it is data, else a null byte array. */
    QByteArray dataForKey(const QString &key) const;
    /** Booleans, numbers (non-zero is true) and the strings "YES"/"true" (any case) and "1"; false otherwise. */
    bool boolForKey(const QString &key) const;
    /** Numbers (reals truncated, saturating at the 64-bit limits), booleans and numeric strings; 0 otherwise. */
    qint64 integerForKey(const QString &key) const;
    /** Numbers, booleans and numeric strings; 0.0 otherwise. */
    double doubleForKey(const QString &key) const;
    /**
     * A URL stored as a string or as data (UTF-8 text); an absolute or "~" path
     * gives a file URL, text without a scheme an empty URL, as do other types.
     */
    QUrl urlForKey(const QString &key) const;

    /**
     * Stores a value. An invalid QVariant removes the key; a value that is not
     * a property list, or an empty key, is refused with one log line and
     * changes nothing. The value is kept as the file gives it back (qlonglong
     * integers, UTC dates, QVariantList/QVariantMap), so every process reads
     * the same thing. The file is written soon after, on the event loop.
     */
    void setObject(const QVariant &value, const QString &key);
    void setBool(bool value, const QString &key);
    void setInteger(qint64 value, const QString &key);
    void setDouble(double value, const QString &key);
    /** Stores the URL as its text; an empty URL removes the key. */
    void setUrl(const QUrl &value, const QString &key);

    void removeObjectForKey(const QString &key);
    void removeObjectsForKeys(const QStringList &keys);

    /** Everything a read can answer: registered values overlaid with set ones. */
    QVariantMap dictionaryRepresentation() const;
    /** Only the values set in the file, without registered fallbacks. */
    QVariantMap persistentDictionary() const;

    /**
     * Writes pending changes and reads changes other processes made. False
     * when the file could not be read or written (see status()); the values
     * in memory stay, and a later call tries again.
     */
    bool synchronize();

Q_SIGNALS:
    /** The contents changed: a set, a removal, a registration, or a synchronize that read news. */
    void didChange();

private:
    void notifyChange();
    void scheduleWrite();

    struct Private;
    std::unique_ptr<Private> d;
};

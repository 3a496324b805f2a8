#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>

// The user defaults store: typed property-list values under string keys, kept in an SQLite
// file, one row per key with the value encoded as a binary property list.
//
// Every write is its own committed transaction, so a value is on disk when setObject returns;
// synchronize() exists for callers that say when they expect that, and has nothing left to do.
// A file that is not a database, or fails its integrity check, is moved aside under a dated
// name and a fresh store is started.
class UserDefaults
{
public:
    // The file the store lives in: $TESSARY_DEFAULTS when set, else "defaults.sqlite" in
    // Tessary's folder of the user's XDG data directory.
    static QString defaultFilePath();

    // The largest value the store keeps. Values are written by Tessary itself, so the cap is far
    // above the one for property lists from outside: the image cache alone can take ~100 MB.
    static constexpr qint64 kMaxValueBytes = 900LL * 1024 * 1024;

    explicit UserDefaults(const QString &filePath = defaultFilePath());
    ~UserDefaults();
    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;

    bool isOpen() const { return m_open; }
    // The last error, naming the file; empty when the last operation succeeded.
    QString errorString() const { return m_error; }
    QString filePath() const { return m_path; }
    // Where a damaged store was moved to when this one was opened; empty otherwise.
    QString movedAsidePath() const { return m_movedAside; }

    // The stored value, or an invalid QVariant when the key has no object.
    QVariant objectForKey(const QString &key) const;
    bool hasObject(const QString &key) const { return objectForKey(key).isValid(); }
    // Stores the value; an invalid QVariant removes the key. Returns false (and sets
    // errorString) when the value cannot be encoded or the write failed.
    bool setObject(const QVariant &value, const QString &key);
    bool removeObject(const QString &key);
    bool synchronize() { return m_open; }

    QStringList allKeys() const;
    QVariantMap dictionaryRepresentation() const;
    // Sets every key of the dictionary in one transaction: all of them or none.
    bool setValuesForKeys(const QVariantMap &values);

    // Typed readers with the conventional fallbacks (0, 0.0, false, empty) for absent keys or
    // values of another type.
    QString stringForKey(const QString &key) const;
    QVariantList arrayForKey(const QString &key) const;
    QVariantMap dictionaryForKey(const QString &key) const;
    QByteArray dataForKey(const QString &key) const;
    qint64 integerForKey(const QString &key) const;
    float floatForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;
    bool boolForKey(const QString &key) const;

    // Convenience setters keeping the property-list type explicit.
    bool setInteger(qint64 value, const QString &key) { return setObject(QVariant::fromValue(value), key); }
    bool setDouble(double value, const QString &key) { return setObject(QVariant(value), key); }
    bool setBool(bool value, const QString &key) { return setObject(QVariant(value), key); }

private:
    bool openDatabase();
    bool checkIntegrity();
    void moveAside();
    void fail(const QString &what) const;

    QString m_path;
    QString m_connection;
    QString m_movedAside;
    mutable QString m_error;
    bool m_open = false;
};

#pragma once

#include <QString>
#include <QHash>
#include <QStringList>
#include <QVariant>

#include <functional>

// The user defaults store: typed property-list values under string keys, kept in an SQLite
// file, one row per key with the value encoded as a binary property list.
//
// Every write is its own committed transaction, so a value is on disk when setObject returns;
// synchronize() exists for callers that say when they expect that, and has nothing left to do.
// A change that reads values and writes them back goes through update(), one immediate
// transaction, so that two processes never lose each other's changes.
//
// Only a file that SQLite reports as corrupt or not a database, or that fails its integrity
// check, is moved aside under a dated name and a fresh store started. A store that cannot be
// written (a read-only file or folder, a full disk) is opened read-only: reads work and every
// write fails with the reason in words.
//
// Dictionaries that grow large (the image cache: one entry per photo) can be kept one row per
// entry instead, so that they are read and written entry by entry: entriesForKey reads only the
// entries asked for, setEntriesForKey writes only those that changed. To every other reader
// (objectForKey, allKeys, dictionaryRepresentation, so the command line's read and export) such
// a key still holds one dictionary. A dictionary stored whole under the key (as setObject stores
// it, and as earlier versions stored the image cache) is split into rows by splitIntoEntries.
//
// Every value the store accepts exports to an XML property list and imports back unchanged:
// keys and strings, at any depth, holding a character that XML 1.0 cannot carry (control
// characters other than tab, newline and carriage return; U+FFFE, U+FFFF; unpaired surrogates)
// are refused.
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
    // Opened read-only because the store cannot be written; readOnlyReason() says why.
    bool isReadOnly() const { return m_readOnly; }
    QString readOnlyReason() const { return m_readOnlyReason; }
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

    // Reads the keys and changes them in one immediate transaction, so that no other process
    // writes between the read and the write. change receives the stored values of the keys
    // (absent keys are missing from the map) and edits the map: keys it leaves changed are
    // written, keys it removes are removed; keys outside `keys` may not be added. Returning
    // false abandons the change (nothing is written, errorString is empty). Returns whether the
    // change committed; waits up to the busy timeout for another writer.
    bool update(const QStringList &keys, const std::function<bool(QVariantMap &values)> &change);

    // --- Dictionaries kept one row per entry
    // The names of the key's entries kept as rows, each with the bytes its row takes.
    QHash<QString, qint64> entrySizesForKey(const QString &key) const;
    // The values of the named entries of the key that are kept as rows (names without a row,
    // or whose row no longer reads, are missing from the map).
    QVariantMap entriesForKey(const QString &key, const QStringList &names) const;
    // The same, read through a connection of its own to the store at filePath, so it may run on
    // any thread (a store opened elsewhere is not touched). Empty when the store cannot be read.
    static QVariantMap entriesInFile(const QString &filePath, const QString &key, const QStringList &names);
    // Writes the changed entries and removes the removed ones, all in one transaction: after a
    // crash the store holds either every change or none. Returns false (with errorString) when
    // an entry cannot be encoded or the write failed; nothing is then written.
    bool setEntriesForKey(const QString &key, const QVariantMap &changed, const QStringList &removed);
    // When the key holds a whole dictionary: moves its entries into rows (an entry that already
    // has a row keeps it) and removes the whole value, in one transaction. True when there was
    // nothing to split or the split committed.
    bool splitIntoEntries(const QString &key);

    // Why the value cannot be stored under the key so that it exports to XML and back
    // unchanged; empty when it can.
    static QString unwritableReason(const QVariant &value, const QString &key);
    // The key with every character XML cannot carry written as \u{XXXX}: how such a key (kept by
    // an older version) is shown and named on the command line.
    static QString printableKey(const QString &key);

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
    enum class OpenResult { Usable, Damaged, Unusable };
    enum class Mode { ReadWrite, ReadOnly, Immutable };
    OpenResult openDatabase(Mode mode);
    OpenResult checkIntegrity();
    void closeDatabase();
    void moveAside();
    void fail(const QString &what) const;
    // The reason of a failed statement in words, with the system's word for a disk fault.
    QString describe(const class QSqlError &error) const;
    // Why the file cannot be written, when its permissions or its folder's say; else otherwise.
    QString whyUnwritable(const QString &otherwise) const;
    // Whether a write may be tried; sets errorString when not.
    bool canWrite(const QString &what);
    // Write or delete the key's whole value, and every entry row of the key with it.
    bool writeRow(const QString &key, const QByteArray &bytes);
    bool deleteRow(const QString &key);
    // Runs the statements of `work` as one transaction (nested in one already open).
    bool inTransaction(const QString &what, const std::function<bool()> &work);
    bool writeEntryRow(const QString &key, const QString &name, const QByteArray &bytes);
    // The key's entry rows as a dictionary, merged over `whole` (entry rows are the newer).
    QVariantMap withEntryRows(const QString &key, QVariantMap whole, bool *hasRows) const;
    // Encodes the value for the store, or sets errorString and returns an empty array.
    QByteArray encode(const QVariant &value, const QString &key);

    QString m_path;
    QString m_connection;
    QString m_movedAside;
    mutable QString m_error;
    QString m_readOnlyReason;
    bool m_open = false;
    bool m_readOnly = false;
};

#include "foundation/UserDefaults.h"

#include "foundation/Log.h"
#include "foundation/PlistValue.h"
#include "foundation/PropertyList.h"

#include <QAtomicInteger>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlDriver>
#include <QStandardPaths>
#include <QUrl>

#include <sqlite3.h>

#include <cerrno>
#include <unistd.h>

namespace {

QAtomicInteger<quint64> connectionCounter;

QSqlDatabase database(const QString &connection)
{
    return QSqlDatabase::database(connection, false);
}

sqlite3 *handleOf(const QSqlDatabase &db)
{
    if (!db.isValid() || !db.driver())
        return nullptr;
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(handle.constData());
}

// SQLite's result code of a failed statement, without its extended part.
int primaryCode(const QSqlError &error)
{
    return error.nativeErrorCode().toInt() & 0xff;
}

// Whether SQLite says the file itself is damaged, as opposed to a fault of the disk, the
// folder or the permissions, which leave a healthy store behind.
bool meansDamage(const QSqlError &error)
{
    const int code = primaryCode(error);
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
}

// Whether XML 1.0 can carry the character (tab, newline and carriage return are the only
// controls it allows; U+FFFE and U+FFFF are never characters). Pairs of surrogates are read
// together by the caller.
bool xmlCarries(char16_t c)
{
    if (c < 0x20)
        return c == u'\t' || c == u'\n' || c == u'\r';
    return c != 0xFFFE && c != 0xFFFF && !QChar::isSurrogate(c);
}

// The first character of the text that XML cannot carry, as "U+XXXX"; empty when there is none.
QString firstUncarried(const QString &text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text.at(i).unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && QChar::isLowSurrogate(text.at(i + 1).unicode())) {
            ++i;
            continue;
        }
        if (!xmlCarries(c))
            return QStringLiteral("U+%1").arg(QString::number(uint(c), 16).toUpper(), 4, QLatin1Char('0'));
    }
    return {};
}

QString uncarriedIn(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::QString: {
        const QString found = firstUncarried(value.toString());
        return found.isEmpty() ? QString() : QStringLiteral("a string holds %1").arg(found);
    }
    case QMetaType::QVariantList:
        for (const QVariant &element : value.toList()) {
            const QString found = uncarriedIn(element);
            if (!found.isEmpty())
                return found;
        }
        return {};
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            const QString inKey = firstUncarried(it.key());
            if (!inKey.isEmpty())
                return QStringLiteral("a dictionary key holds %1").arg(inKey);
            const QString found = uncarriedIn(it.value());
            if (!found.isEmpty())
                return found;
        }
        return {};
    }
    default:
        return {};
    }
}

} // namespace

QString UserDefaults::defaultFilePath()
{
    const QByteArray env = qgetenv("TESSARY_DEFAULTS");
    if (!env.isEmpty())
        return QString::fromLocal8Bit(env);
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return base + QStringLiteral("/tessary/defaults.sqlite");
}

QString UserDefaults::unwritableReason(const QVariant &value, const QString &key)
{
    const QString inKey = firstUncarried(key);
    QString found = inKey.isEmpty() ? uncarriedIn(value) : QStringLiteral("the key holds %1").arg(inKey);
    if (found.isEmpty())
        return {};
    return QStringLiteral("cannot store \"%1\": %2, a character that an XML property list cannot carry, so the value "
                          "could not be exported and imported back")
        .arg(printableKey(key), found);
}

QString UserDefaults::printableKey(const QString &key)
{
    QString out;
    out.reserve(key.size());
    for (qsizetype i = 0; i < key.size(); ++i) {
        const char16_t c = key.at(i).unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < key.size() && QChar::isLowSurrogate(key.at(i + 1).unicode())) {
            out += key.at(i);
            out += key.at(++i);
        } else if (xmlCarries(c)) {
            out += key.at(i);
        } else {
            out += QStringLiteral("\\u{%1}").arg(QString::number(uint(c), 16).toUpper(), 4, QLatin1Char('0'));
        }
    }
    return out;
}

UserDefaults::UserDefaults(const QString &filePath)
    : m_path(QFileInfo(filePath).absoluteFilePath())
    , m_connection(QStringLiteral("tessary-defaults-%1").arg(connectionCounter.fetchAndAddRelaxed(1)))
{
    const QFileInfo info(m_path);
    if (!QDir().mkpath(info.absolutePath())) {
        fail(QStringLiteral("cannot create the folder %1").arg(info.absolutePath()));
        return;
    }
    OpenResult result = openDatabase(Mode::ReadWrite);
    if (result == OpenResult::Damaged) {
        moveAside();
        result = openDatabase(Mode::ReadWrite);
    }
    if (result == OpenResult::Usable && !m_readOnly) {
        QSqlQuery q(database(m_connection));
        if (!q.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS defaults (key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL)"))
            || !q.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS entries (key TEXT NOT NULL, name TEXT NOT NULL, value BLOB NOT NULL, "
                                      "PRIMARY KEY (key, name))"))) {
            m_readOnlyReason = describe(q.lastError());
            result = OpenResult::Unusable;
        }
    }
    // A store that cannot be written is still read: the person's data stays in view.
    if (result == OpenResult::Unusable && QFileInfo::exists(m_path)) {
        const QString why = m_readOnlyReason;
        result = openDatabase(Mode::ReadOnly);
        if (result == OpenResult::Unusable)
            result = openDatabase(Mode::Immutable);
        if (result == OpenResult::Usable) {
            m_readOnly = true;
            m_readOnlyReason = whyUnwritable(why);
            qCWarning(lcTessary, "The user defaults store %s cannot be written (%s); it was opened read-only.", qPrintable(m_path),
                      qPrintable(m_readOnlyReason));
        }
    }
    if (result == OpenResult::Damaged) {
        fail(QStringLiteral("the store is damaged and could not be moved aside"));
        return;
    }
    if (result == OpenResult::Unusable) {
        fail(QStringLiteral("cannot open the store (%1)").arg(m_readOnlyReason));
        return;
    }
    m_open = true;
    m_error.clear();
    if (!m_readOnly)
        m_readOnlyReason.clear();
}

UserDefaults::~UserDefaults()
{
    closeDatabase();
    QSqlDatabase::removeDatabase(m_connection);
}

void UserDefaults::fail(const QString &what) const
{
    m_error = QStringLiteral("%1: %2").arg(m_path, what);
}

QString UserDefaults::describe(const QSqlError &error) const
{
    const int code = primaryCode(error);
    QString words;
    if (code == SQLITE_FULL) {
        words = qt_error_string(ENOSPC);
    } else if (code == SQLITE_IOERR || code == SQLITE_CANTOPEN) {
        if (sqlite3 *handle = handleOf(database(m_connection))) {
            if (const int systemError = sqlite3_system_errno(handle))
                words = qt_error_string(systemError);
        }
    } else if (code == SQLITE_READONLY) {
        words = m_readOnly ? m_readOnlyReason : whyUnwritable(QString());
    }
    const QString detail = error.databaseText().isEmpty() ? error.text() : error.databaseText();
    return words.isEmpty() ? detail : QStringLiteral("%1; %2").arg(words, detail);
}

QString UserDefaults::whyUnwritable(const QString &otherwise) const
{
    if (::access(QFile::encodeName(m_path).constData(), W_OK) != 0 && errno != ENOENT)
        return QStringLiteral("the file cannot be written: %1").arg(qt_error_string(errno));
    const QString folder = QFileInfo(m_path).absolutePath();
    if (::access(QFile::encodeName(folder).constData(), W_OK) != 0)
        return QStringLiteral("the folder %1 cannot be written: %2").arg(folder, qt_error_string(errno));
    return otherwise;
}

void UserDefaults::closeDatabase()
{
    QSqlDatabase db = database(m_connection);
    if (db.isValid())
        db.close();
}

UserDefaults::OpenResult UserDefaults::openDatabase(Mode mode)
{
    closeDatabase();
    m_readOnly = false;
    QSqlDatabase db = QSqlDatabase::contains(m_connection) ? database(m_connection)
                                                           : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    if (!db.isValid()) {
        m_readOnlyReason = QStringLiteral("the SQLite driver of Qt is missing");
        return OpenResult::Unusable;
    }
    QString options = QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000");
    if (mode == Mode::ReadWrite) {
        db.setDatabaseName(m_path);
    } else if (mode == Mode::ReadOnly) {
        db.setDatabaseName(m_path);
        options += QStringLiteral(";QSQLITE_OPEN_READONLY");
    } else {
        // No SQLite writer can change the store while its folder cannot be written (a writer
        // needs its journal beside the file), so it may be read without the shared-memory file
        // that SQLite would otherwise have to create there.
        db.setDatabaseName(QUrl::fromLocalFile(m_path).toString(QUrl::FullyEncoded) + QStringLiteral("?immutable=1"));
        options += QStringLiteral(";QSQLITE_OPEN_READONLY;QSQLITE_OPEN_URI");
    }
    db.setConnectOptions(options);
    if (!db.open()) {
        m_readOnlyReason = describe(db.lastError());
        return meansDamage(db.lastError()) ? OpenResult::Damaged : OpenResult::Unusable;
    }
    if (mode == Mode::ReadWrite) {
        QSqlQuery q(db);
        // WAL keeps readers and the writer apart; FULL syncs each commit before it returns.
        if (!q.exec(QStringLiteral("PRAGMA journal_mode=WAL"))) {
            m_readOnlyReason = describe(q.lastError());
            return meansDamage(q.lastError()) ? OpenResult::Damaged : OpenResult::Unusable;
        }
        q.exec(QStringLiteral("PRAGMA synchronous=FULL"));
    }
    const OpenResult result = checkIntegrity();
    if (result == OpenResult::Usable && mode == Mode::ReadWrite) {
        // SQLite opens a file it may not write read-only on its own; say so at once.
        sqlite3 *handle = handleOf(db);
        if (handle && sqlite3_db_readonly(handle, "main") == 1) {
            m_readOnly = true;
            m_readOnlyReason = whyUnwritable(QStringLiteral("SQLite opened the file read-only"));
        }
    }
    return result;
}

UserDefaults::OpenResult UserDefaults::checkIntegrity()
{
    QSqlDatabase db = database(m_connection);
    {
        QSqlQuery q(db);
        if (!q.exec(QStringLiteral("PRAGMA integrity_check")) || !q.next()) {
            m_readOnlyReason = describe(q.lastError());
            return meansDamage(q.lastError()) ? OpenResult::Damaged : OpenResult::Unusable;
        }
        if (q.value(0).toString() != QLatin1String("ok"))
            return OpenResult::Damaged;
    }
    // A database that holds a "defaults" table of another shape is not ours to use either.
    bool hasTable = false;
    {
        QSqlQuery probe(db);
        if (!probe.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' AND name='defaults'"))) {
            m_readOnlyReason = describe(probe.lastError());
            return meansDamage(probe.lastError()) ? OpenResult::Damaged : OpenResult::Unusable;
        }
        hasTable = probe.next();
    }
    if (!hasTable)
        return OpenResult::Usable;
    QSqlQuery columns(db);
    if (columns.exec(QStringLiteral("SELECT key, value FROM defaults LIMIT 0")))
        return OpenResult::Usable;
    m_readOnlyReason = describe(columns.lastError());
    return primaryCode(columns.lastError()) == SQLITE_ERROR || meansDamage(columns.lastError()) ? OpenResult::Damaged
                                                                                               : OpenResult::Unusable;
}

void UserDefaults::moveAside()
{
    closeDatabase();
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = QStringLiteral("%1.damaged-%2").arg(m_path, stamp);
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = QStringLiteral("%1.damaged-%2-%3").arg(m_path, stamp).arg(n);
    if (QFile::rename(m_path, target)) {
        for (const char *suffix : {"-wal", "-shm"}) {
            const QString side = m_path + QLatin1String(suffix);
            if (QFileInfo::exists(side))
                QFile::rename(side, target + QLatin1String(suffix));
        }
        m_movedAside = target;
        qCWarning(lcTessary, "The user defaults store %s was damaged; it was moved to %s and a new store was started.",
                  qPrintable(m_path), qPrintable(target));
    } else {
        qCWarning(lcTessary, "The user defaults store %s is damaged and could not be moved aside.", qPrintable(m_path));
    }
}

QVariant UserDefaults::objectForKey(const QString &key) const
{
    if (!m_open)
        return {};
    QSqlQuery q(database(m_connection));
    q.prepare(QStringLiteral("SELECT value FROM defaults WHERE key = ?"));
    q.addBindValue(key);
    if (!q.exec()) {
        fail(QStringLiteral("cannot read \"%1\" (%2)").arg(key, q.lastError().text()));
        return {};
    }
    QVariant whole;
    if (q.next()) {
        const PropertyList::ReadResult r = PropertyList::fromBytes(q.value(0).toByteArray(),
                                                                   QStringLiteral("value of \"%1\"").arg(key), kMaxValueBytes);
        if (!r.ok()) {
            qCWarning(lcTessary, "%s: %s", qPrintable(m_path), qPrintable(r.error));
            return {};
        }
        whole = r.value;
    }
    // Entry rows only ever go with a dictionary (writing a whole value removes them).
    if (whole.isValid() && whole.typeId() != QMetaType::QVariantMap)
        return whole;
    bool hasRows = false;
    const QVariantMap merged = withEntryRows(key, whole.toMap(), &hasRows);
    return hasRows ? QVariant(merged) : whole;
}

namespace {

// The rows of the key's entries named (all of them when `names` is null), decoded, through the
// connection.
QVariantMap readEntryRows(const QSqlDatabase &db, const QString &path, const QString &key, const QStringList *names, bool *hasRows)
{
    QVariantMap entries;
    const auto take = [&](const QString &name, const QByteArray &bytes) {
        if (hasRows)
            *hasRows = true;
        const PropertyList::ReadResult r = PropertyList::fromBytes(bytes, QStringLiteral("entry \"%1\" of \"%2\"").arg(name, key),
                                                                   UserDefaults::kMaxValueBytes);
        if (r.ok())
            entries.insert(name, r.value);
        else
            qCWarning(lcTessary, "%s: %s", qPrintable(path), qPrintable(r.error));
    };
    QSqlQuery q(db);
    if (!names) {
        q.prepare(QStringLiteral("SELECT name, value FROM entries WHERE key = ?"));
        q.addBindValue(key);
        if (q.exec()) {
            while (q.next())
                take(q.value(0).toString(), q.value(1).toByteArray());
        }
        return entries;
    }
    q.prepare(QStringLiteral("SELECT value FROM entries WHERE key = ? AND name = ?"));
    for (const QString &name : *names) {
        q.bindValue(0, key);
        q.bindValue(1, name);
        if (q.exec() && q.next())
            take(name, q.value(0).toByteArray());
    }
    return entries;
}

} // namespace

QVariantMap UserDefaults::withEntryRows(const QString &key, QVariantMap whole, bool *hasRows) const
{
    const QVariantMap rows = readEntryRows(database(m_connection), m_path, key, nullptr, hasRows);
    for (auto it = rows.cbegin(); it != rows.cend(); ++it)
        whole.insert(it.key(), it.value());
    return whole;
}

QHash<QString, qint64> UserDefaults::entrySizesForKey(const QString &key) const
{
    QHash<QString, qint64> sizes;
    if (!m_open)
        return sizes;
    QSqlQuery q(database(m_connection));
    q.prepare(QStringLiteral("SELECT name, length(value) FROM entries WHERE key = ?"));
    q.addBindValue(key);
    if (q.exec()) {
        while (q.next())
            sizes.insert(q.value(0).toString(), q.value(1).toLongLong());
    }
    return sizes;
}

QVariantMap UserDefaults::entriesForKey(const QString &key, const QStringList &names) const
{
    if (!m_open)
        return {};
    return readEntryRows(database(m_connection), m_path, key, &names, nullptr);
}

QVariantMap UserDefaults::entriesInFile(const QString &filePath, const QString &key, const QStringList &names)
{
    const QString connection = QStringLiteral("tessary-entries-%1").arg(connectionCounter.fetchAndAddRelaxed(1));
    QVariantMap entries;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection);
        db.setDatabaseName(filePath);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000;QSQLITE_OPEN_READONLY"));
        if (db.open())
            entries = readEntryRows(db, filePath, key, &names, nullptr);
        db.close();
    }
    QSqlDatabase::removeDatabase(connection);
    return entries;
}

bool UserDefaults::writeEntryRow(const QString &key, const QString &name, const QByteArray &bytes)
{
    QSqlQuery q(database(m_connection));
    q.prepare(QStringLiteral("INSERT OR REPLACE INTO entries (key, name, value) VALUES (?, ?, ?)"));
    q.addBindValue(key);
    q.addBindValue(name);
    q.addBindValue(bytes);
    if (!q.exec()) {
        fail(QStringLiteral("cannot write \"%1\" of \"%2\": %3").arg(name, printableKey(key), describe(q.lastError())));
        return false;
    }
    return true;
}

bool UserDefaults::inTransaction(const QString &what, const std::function<bool()> &work)
{
    QSqlDatabase db = database(m_connection);
    // A savepoint is a transaction of its own when none is open, and nests inside update()'s.
    QSqlQuery begin(db);
    if (!begin.exec(QStringLiteral("SAVEPOINT tessary_write"))) {
        fail(QStringLiteral("cannot start to %1: %2").arg(what, describe(begin.lastError())));
        return false;
    }
    if (!work()) {
        QSqlQuery(db).exec(QStringLiteral("ROLLBACK TO tessary_write"));
        QSqlQuery(db).exec(QStringLiteral("RELEASE tessary_write"));
        return false;
    }
    QSqlQuery release(db);
    if (!release.exec(QStringLiteral("RELEASE tessary_write"))) {
        fail(QStringLiteral("cannot %1: %2").arg(what, describe(release.lastError())));
        QSqlQuery(db).exec(QStringLiteral("ROLLBACK TO tessary_write"));
        QSqlQuery(db).exec(QStringLiteral("RELEASE tessary_write"));
        return false;
    }
    return true;
}

bool UserDefaults::setEntriesForKey(const QString &key, const QVariantMap &changed, const QStringList &removed)
{
    if (!canWrite(QStringLiteral("write \"%1\"").arg(printableKey(key))))
        return false;
    // Everything is encoded before the transaction starts, so it is held as short as can be.
    QList<std::pair<QString, QByteArray>> rows;
    rows.reserve(changed.size());
    for (auto it = changed.cbegin(); it != changed.cend(); ++it) {
        const QByteArray bytes = encode(it.value(), key);
        if (bytes.isEmpty())
            return false;
        rows.append({it.key(), bytes});
    }
    const bool ok = inTransaction(QStringLiteral("write \"%1\"").arg(printableKey(key)), [&] {
        for (const auto &[name, bytes] : rows) {
            if (!writeEntryRow(key, name, bytes))
                return false;
        }
        QSqlQuery q(database(m_connection));
        q.prepare(QStringLiteral("DELETE FROM entries WHERE key = ? AND name = ?"));
        for (const QString &name : removed) {
            q.bindValue(0, key);
            q.bindValue(1, name);
            if (!q.exec()) {
                fail(QStringLiteral("cannot remove \"%1\" of \"%2\": %3").arg(name, printableKey(key), describe(q.lastError())));
                return false;
            }
        }
        return true;
    });
    if (ok)
        m_error.clear();
    return ok;
}

bool UserDefaults::splitIntoEntries(const QString &key)
{
    if (!m_open || m_readOnly)
        return true;
    QSqlQuery q(database(m_connection));
    q.prepare(QStringLiteral("SELECT value FROM defaults WHERE key = ?"));
    q.addBindValue(key);
    if (!q.exec() || !q.next())
        return true;
    const PropertyList::ReadResult r = PropertyList::fromBytes(q.value(0).toByteArray(), QStringLiteral("value of \"%1\"").arg(key),
                                                               kMaxValueBytes);
    q.finish();
    if (!r.ok() || r.value.typeId() != QMetaType::QVariantMap)
        return true; // not a dictionary: nothing to split
    const QVariantMap whole = r.value.toMap();
    const QHash<QString, qint64> kept = entrySizesForKey(key);
    QList<std::pair<QString, QByteArray>> rows;
    for (auto it = whole.cbegin(); it != whole.cend(); ++it) {
        if (kept.contains(it.key()))
            continue;
        const QByteArray bytes = encode(it.value(), key);
        if (!bytes.isEmpty())
            rows.append({it.key(), bytes});
    }
    const bool ok = inTransaction(QStringLiteral("split \"%1\"").arg(printableKey(key)), [&] {
        for (const auto &[name, bytes] : rows) {
            if (!writeEntryRow(key, name, bytes))
                return false;
        }
        QSqlQuery remove(database(m_connection));
        remove.prepare(QStringLiteral("DELETE FROM defaults WHERE key = ?"));
        remove.addBindValue(key);
        if (!remove.exec()) {
            fail(QStringLiteral("cannot remove \"%1\": %2").arg(printableKey(key), describe(remove.lastError())));
            return false;
        }
        return true;
    });
    if (ok)
        m_error.clear();
    return ok;
}

QByteArray UserDefaults::encode(const QVariant &value, const QString &key)
{
    const QString unwritable = unwritableReason(value, key);
    if (!unwritable.isEmpty()) {
        fail(unwritable);
        return {};
    }
    QString encodeError;
    const QByteArray bytes = PropertyList::toBinary(value, &encodeError);
    if (bytes.isEmpty()) {
        fail(QStringLiteral("cannot store \"%1\": %2").arg(printableKey(key), encodeError));
        return {};
    }
    if (bytes.size() > kMaxValueBytes) {
        fail(QStringLiteral("cannot store \"%1\": the value takes %2 bytes, more than the %3 a value may take")
                 .arg(printableKey(key)).arg(bytes.size()).arg(kMaxValueBytes));
        return {};
    }
    return bytes;
}

namespace {

bool deleteEntryRows(const QSqlDatabase &db, const QString &key, QSqlError *error)
{
    QSqlQuery q(db);
    q.prepare(QStringLiteral("DELETE FROM entries WHERE key = ?"));
    q.addBindValue(key);
    if (q.exec())
        return true;
    *error = q.lastError();
    return false;
}

} // namespace

bool UserDefaults::writeRow(const QString &key, const QByteArray &bytes)
{
    return inTransaction(QStringLiteral("write \"%1\"").arg(printableKey(key)), [&] {
        QSqlError error;
        if (!deleteEntryRows(database(m_connection), key, &error)) {
            fail(QStringLiteral("cannot write \"%1\": %2").arg(printableKey(key), describe(error)));
            return false;
        }
        QSqlQuery q(database(m_connection));
        q.prepare(QStringLiteral("INSERT OR REPLACE INTO defaults (key, value) VALUES (?, ?)"));
        q.addBindValue(key);
        q.addBindValue(bytes);
        if (!q.exec()) {
            fail(QStringLiteral("cannot write \"%1\": %2").arg(printableKey(key), describe(q.lastError())));
            return false;
        }
        return true;
    });
}

bool UserDefaults::deleteRow(const QString &key)
{
    return inTransaction(QStringLiteral("remove \"%1\"").arg(printableKey(key)), [&] {
        QSqlError error;
        if (!deleteEntryRows(database(m_connection), key, &error)) {
            fail(QStringLiteral("cannot remove \"%1\": %2").arg(printableKey(key), describe(error)));
            return false;
        }
        QSqlQuery q(database(m_connection));
        q.prepare(QStringLiteral("DELETE FROM defaults WHERE key = ?"));
        q.addBindValue(key);
        if (!q.exec()) {
            fail(QStringLiteral("cannot remove \"%1\": %2").arg(printableKey(key), describe(q.lastError())));
            return false;
        }
        return true;
    });
}

bool UserDefaults::canWrite(const QString &what)
{
    if (!m_open) {
        if (m_error.isEmpty())
            fail(QStringLiteral("the store is not open"));
        return false;
    }
    if (m_readOnly) {
        fail(QStringLiteral("cannot %1: the store can only be read (%2)").arg(what, m_readOnlyReason));
        return false;
    }
    return true;
}

bool UserDefaults::setObject(const QVariant &value, const QString &key)
{
    if (!value.isValid())
        return removeObject(key);
    if (!canWrite(QStringLiteral("write \"%1\"").arg(printableKey(key))))
        return false;
    const QByteArray bytes = encode(value, key);
    if (bytes.isEmpty() || !writeRow(key, bytes))
        return false;
    m_error.clear();
    return true;
}

bool UserDefaults::removeObject(const QString &key)
{
    if (!canWrite(QStringLiteral("remove \"%1\"").arg(printableKey(key))))
        return false;
    if (!deleteRow(key))
        return false;
    m_error.clear();
    return true;
}

bool UserDefaults::setValuesForKeys(const QVariantMap &values)
{
    QStringList keys = values.keys();
    return update(keys, [&values](QVariantMap &stored) {
        for (auto it = values.cbegin(); it != values.cend(); ++it)
            stored.insert(it.key(), it.value());
        return true;
    });
}

bool UserDefaults::update(const QStringList &keys, const std::function<bool(QVariantMap &values)> &change)
{
    if (!canWrite(QStringLiteral("write \"%1\"").arg(printableKey(keys.join(QStringLiteral("\", \""))))))
        return false;
    QSqlDatabase db = database(m_connection);
    {
        QSqlQuery begin(db);
        // IMMEDIATE takes the write lock before the read, so nobody writes in between; the
        // busy timeout lets it wait for another process's change to end.
        if (!begin.exec(QStringLiteral("BEGIN IMMEDIATE"))) {
            fail(QStringLiteral("cannot start a change: %1").arg(describe(begin.lastError())));
            return false;
        }
    }
    const auto abandon = [&db] { QSqlQuery(db).exec(QStringLiteral("ROLLBACK")); };
    QVariantMap before;
    for (const QString &key : keys) {
        QSqlQuery q(db);
        q.prepare(QStringLiteral("SELECT value FROM defaults WHERE key = ?"));
        q.addBindValue(key);
        if (!q.exec()) {
            fail(QStringLiteral("cannot read \"%1\": %2").arg(printableKey(key), describe(q.lastError())));
            abandon();
            return false;
        }
        if (!q.next())
            continue;
        const PropertyList::ReadResult r = PropertyList::fromBytes(q.value(0).toByteArray(),
                                                                   QStringLiteral("value of \"%1\"").arg(printableKey(key)), kMaxValueBytes);
        if (r.ok())
            before.insert(key, r.value);
        else
            qCWarning(lcTessary, "%s: %s", qPrintable(m_path), qPrintable(r.error));
    }
    QVariantMap after = before;
    if (!change(after)) {
        abandon();
        m_error.clear();
        return false;
    }
    for (auto it = after.cbegin(); it != after.cend(); ++it) {
        if (!keys.contains(it.key())) {
            fail(QStringLiteral("cannot write \"%1\": the change did not read it").arg(printableKey(it.key())));
            abandon();
            return false;
        }
    }
    for (const QString &key : keys) {
        bool ok = true;
        if (!after.contains(key)) {
            if (before.contains(key))
                ok = deleteRow(key);
        } else if (!before.contains(key) || before.value(key) != after.value(key)
                   || before.value(key).typeId() != after.value(key).typeId()) {
            const QVariant value = after.value(key);
            const QByteArray bytes = value.isValid() ? encode(value, key) : QByteArray();
            ok = value.isValid() ? !bytes.isEmpty() && writeRow(key, bytes) : deleteRow(key);
        }
        if (!ok) {
            abandon();
            return false;
        }
    }
    QSqlQuery commit(db);
    if (!commit.exec(QStringLiteral("COMMIT"))) {
        fail(QStringLiteral("cannot save the change: %1").arg(describe(commit.lastError())));
        abandon();
        return false;
    }
    m_error.clear();
    return true;
}

QStringList UserDefaults::allKeys() const
{
    QStringList keys;
    if (!m_open)
        return keys;
    QSqlQuery q(database(m_connection));
    if (!q.exec(QStringLiteral("SELECT key FROM defaults UNION SELECT DISTINCT key FROM entries ORDER BY key"))
        && !q.exec(QStringLiteral("SELECT key FROM defaults ORDER BY key"))) // a read-only store of an earlier version
        return keys;
    while (q.next())
        keys.append(q.value(0).toString());
    return keys;
}

QVariantMap UserDefaults::dictionaryRepresentation() const
{
    QVariantMap all;
    for (const QString &key : allKeys()) {
        const QVariant v = objectForKey(key);
        if (v.isValid())
            all.insert(key, v);
    }
    return all;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const QVariant v = objectForKey(key);
    if (v.typeId() == QMetaType::QString)
        return v.toString();
    if (PlistValue::isNumber(v) && v.typeId() != QMetaType::Bool)
        return v.toString();
    return {};
}

QVariantList UserDefaults::arrayForKey(const QString &key) const
{
    const QVariant v = objectForKey(key);
    return v.typeId() == QMetaType::QVariantList ? v.toList() : QVariantList{};
}

QVariantMap UserDefaults::dictionaryForKey(const QString &key) const
{
    const QVariant v = objectForKey(key);
    return v.typeId() == QMetaType::QVariantMap ? v.toMap() : QVariantMap{};
}

QByteArray UserDefaults::dataForKey(const QString &key) const
{
    const QVariant v = objectForKey(key);
    return v.typeId() == QMetaType::QByteArray ? v.toByteArray() : QByteArray{};
}

qint64 UserDefaults::integerForKey(const QString &key) const
{
    return PlistValue::integerValue(objectForKey(key));
}

float UserDefaults::floatForKey(const QString &key) const
{
    return float(PlistValue::doubleValue(objectForKey(key)));
}

double UserDefaults::doubleForKey(const QString &key) const
{
    return PlistValue::doubleValue(objectForKey(key));
}

bool UserDefaults::boolForKey(const QString &key) const
{
    return PlistValue::boolValue(objectForKey(key));
}

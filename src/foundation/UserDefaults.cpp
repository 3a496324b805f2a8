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
#include <QStandardPaths>

namespace {

QAtomicInteger<quint64> connectionCounter;

QSqlDatabase database(const QString &connection)
{
    return QSqlDatabase::database(connection, false);
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

UserDefaults::UserDefaults(const QString &filePath)
    : m_path(QFileInfo(filePath).absoluteFilePath())
    , m_connection(QStringLiteral("tessary-defaults-%1").arg(connectionCounter.fetchAndAddRelaxed(1)))
{
    const QFileInfo info(m_path);
    if (!QDir().mkpath(info.absolutePath())) {
        fail(QStringLiteral("cannot create the folder %1").arg(info.absolutePath()));
        return;
    }
    if (!openDatabase())
        return;
    if (!checkIntegrity()) {
        moveAside();
        if (!openDatabase())
            return;
    }
    QSqlQuery q(database(m_connection));
    if (!q.exec(QStringLiteral("CREATE TABLE IF NOT EXISTS defaults (key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL)"))) {
        fail(QStringLiteral("cannot create the store (%1)").arg(q.lastError().text()));
        return;
    }
    m_open = true;
    m_error.clear();
}

UserDefaults::~UserDefaults()
{
    {
        QSqlDatabase db = database(m_connection);
        if (db.isValid())
            db.close();
    }
    QSqlDatabase::removeDatabase(m_connection);
}

void UserDefaults::fail(const QString &what) const
{
    m_error = QStringLiteral("%1: %2").arg(m_path, what);
}

bool UserDefaults::openDatabase()
{
    QSqlDatabase db = QSqlDatabase::contains(m_connection) ? database(m_connection)
                                                           : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connection);
    if (!db.isValid()) {
        fail(QStringLiteral("the SQLite driver of Qt is missing"));
        return false;
    }
    db.setDatabaseName(m_path);
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db.open()) {
        fail(QStringLiteral("cannot open the store (%1)").arg(db.lastError().text()));
        return false;
    }
    QSqlQuery q(db);
    // WAL keeps readers and the writer apart; FULL syncs each commit before it returns.
    q.exec(QStringLiteral("PRAGMA journal_mode=WAL"));
    q.exec(QStringLiteral("PRAGMA synchronous=FULL"));
    return true;
}

bool UserDefaults::checkIntegrity()
{
    QSqlQuery q(database(m_connection));
    if (!q.exec(QStringLiteral("PRAGMA integrity_check")) || !q.next())
        return false;
    if (q.value(0).toString() != QLatin1String("ok"))
        return false;
    q.finish();
    // A database that holds a "defaults" table of another shape is not ours to use either.
    QSqlQuery probe(database(m_connection));
    if (!probe.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type='table' AND name='defaults'")))
        return false;
    if (!probe.next())
        return true;
    probe.finish();
    QSqlQuery columns(database(m_connection));
    return columns.exec(QStringLiteral("SELECT key, value FROM defaults LIMIT 0"));
}

void UserDefaults::moveAside()
{
    {
        QSqlDatabase db = database(m_connection);
        db.close();
    }
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
    if (!q.next())
        return {};
    const PropertyList::ReadResult r = PropertyList::fromBytes(q.value(0).toByteArray(), QStringLiteral("value of \"%1\"").arg(key),
                                                               kMaxValueBytes);
    if (!r.ok()) {
        qCWarning(lcTessary, "%s: %s", qPrintable(m_path), qPrintable(r.error));
        return {};
    }
    return r.value;
}

bool UserDefaults::setObject(const QVariant &value, const QString &key)
{
    if (!value.isValid())
        return removeObject(key);
    if (!m_open) {
        if (m_error.isEmpty())
            fail(QStringLiteral("the store is not open"));
        return false;
    }
    QString encodeError;
    const QByteArray bytes = PropertyList::toBinary(value, &encodeError);
    if (bytes.isEmpty()) {
        fail(QStringLiteral("cannot store \"%1\": %2").arg(key, encodeError));
        return false;
    }
    if (bytes.size() > kMaxValueBytes) {
        fail(QStringLiteral("cannot store \"%1\": the value takes %2 bytes, more than the %3 a value may take")
                 .arg(key).arg(bytes.size()).arg(kMaxValueBytes));
        return false;
    }
    QSqlQuery q(database(m_connection));
    q.prepare(QStringLiteral("INSERT OR REPLACE INTO defaults (key, value) VALUES (?, ?)"));
    q.addBindValue(key);
    q.addBindValue(bytes);
    if (!q.exec()) {
        fail(QStringLiteral("cannot write \"%1\" (%2)").arg(key, q.lastError().text()));
        return false;
    }
    m_error.clear();
    return true;
}

bool UserDefaults::removeObject(const QString &key)
{
    if (!m_open) {
        if (m_error.isEmpty())
            fail(QStringLiteral("the store is not open"));
        return false;
    }
    QSqlQuery q(database(m_connection));
    q.prepare(QStringLiteral("DELETE FROM defaults WHERE key = ?"));
    q.addBindValue(key);
    if (!q.exec()) {
        fail(QStringLiteral("cannot remove \"%1\" (%2)").arg(key, q.lastError().text()));
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
    if (!q.exec(QStringLiteral("SELECT key FROM defaults ORDER BY key")))
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

bool UserDefaults::setValuesForKeys(const QVariantMap &values)
{
    if (!m_open)
        return false;
    QSqlDatabase db = database(m_connection);
    QList<QPair<QString, QByteArray>> rows;
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        QString encodeError;
        const QByteArray bytes = PropertyList::toBinary(it.value(), &encodeError);
        if (bytes.isEmpty()) {
            fail(QStringLiteral("cannot store \"%1\": %2").arg(it.key(), encodeError));
            return false;
        }
        rows.append({it.key(), bytes});
    }
    if (!db.transaction()) {
        fail(QStringLiteral("cannot start a transaction (%1)").arg(db.lastError().text()));
        return false;
    }
    for (const auto &row : rows) {
        QSqlQuery q(db);
        q.prepare(QStringLiteral("INSERT OR REPLACE INTO defaults (key, value) VALUES (?, ?)"));
        q.addBindValue(row.first);
        q.addBindValue(row.second);
        if (!q.exec()) {
            fail(QStringLiteral("cannot write \"%1\" (%2)").arg(row.first, q.lastError().text()));
            db.rollback();
            return false;
        }
    }
    if (!db.commit()) {
        fail(QStringLiteral("cannot commit (%1)").arg(db.lastError().text()));
        db.rollback();
        return false;
    }
    m_error.clear();
    return true;
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

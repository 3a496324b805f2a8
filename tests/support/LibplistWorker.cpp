#include "LibplistWorker.h"

#include "LibplistTree.h"

#include "foundation/PlistUid.h"

#include <QDataStream>
#include <QDateTime>
#include <QIODevice>
#include <QTimeZone>

#include <csignal>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Values cross the pipe as QDataStream records: a tag, then the payload.
void put(QDataStream &s, const QVariant &v)
{
    if (v.userType() == qMetaTypeId<PlistUid>()) {
        s << quint8('U') << quint64(v.value<PlistUid>().value);
        return;
    }
    switch (v.typeId()) {
    case QMetaType::QVariantMap: {
        const QVariantMap map = v.toMap();
        s << quint8('m') << quint64(map.size());
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            s << it.key();
            put(s, it.value());
        }
        break;
    }
    case QMetaType::QVariantList: {
        const QVariantList list = v.toList();
        s << quint8('l') << quint64(list.size());
        for (const QVariant &item : list)
            put(s, item);
        break;
    }
    case QMetaType::QString: s << quint8('s') << v.toString(); break;
    case QMetaType::LongLong: s << quint8('i') << v.toLongLong(); break;
    case QMetaType::ULongLong: s << quint8('u') << v.toULongLong(); break;
    case QMetaType::Double: s << quint8('r') << v.toDouble(); break;
    case QMetaType::Bool: s << quint8('b') << v.toBool(); break;
    case QMetaType::QByteArray: s << quint8('d') << v.toByteArray(); break;
    case QMetaType::QDateTime: s << quint8('t') << v.toDateTime().toMSecsSinceEpoch(); break;
    default: s << quint8('?'); break;
    }
}

QVariant take(QDataStream &s)
{
    quint8 tag = 0;
    s >> tag;
    switch (tag) {
    case 'm': {
        quint64 n = 0;
        s >> n;
        QVariantMap map;
        for (quint64 i = 0; i < n && s.status() == QDataStream::Ok; ++i) {
            QString key;
            s >> key;
            map.insert(key, take(s));
        }
        return map;
    }
    case 'l': {
        quint64 n = 0;
        s >> n;
        QVariantList list;
        for (quint64 i = 0; i < n && s.status() == QDataStream::Ok; ++i)
            list.append(take(s));
        return list;
    }
    case 's': { QString x; s >> x; return x; }
    case 'i': { qint64 x = 0; s >> x; return x; }
    case 'u': { quint64 x = 0; s >> x; return x; }
    case 'r': { double x = 0; s >> x; return x; }
    case 'b': { bool x = false; s >> x; return x; }
    case 'd': { QByteArray x; s >> x; return x; }
    case 't': { qint64 x = 0; s >> x; return QDateTime::fromMSecsSinceEpoch(x, QTimeZone::utc()); }
    case 'U': { quint64 x = 0; s >> x; return QVariant::fromValue(PlistUid{x}); }
    default: return {};
    }
}

bool writeAll(int fd, const char *data, size_t size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n <= 0)
            return false;
        data += n;
        size -= size_t(n);
    }
    return true;
}

// Reads exactly size bytes; with a time limit (ms) when timeLimitMs >= 0.
bool readAll(int fd, char *data, size_t size, int timeLimitMs)
{
    while (size > 0) {
        if (timeLimitMs >= 0) {
            pollfd p{fd, POLLIN, 0};
            if (::poll(&p, 1, timeLimitMs) <= 0)
                return false;
        }
        const ssize_t n = ::read(fd, data, size);
        if (n <= 0)
            return false;
        data += n;
        size -= size_t(n);
    }
    return true;
}

bool sendFrame(int fd, const QByteArray &frame)
{
    const quint32 size = quint32(frame.size());
    return writeAll(fd, reinterpret_cast<const char *>(&size), sizeof size) && writeAll(fd, frame.constData(), frame.size());
}

bool receiveFrame(int fd, QByteArray *frame, int timeLimitMs)
{
    quint32 size = 0;
    if (!readAll(fd, reinterpret_cast<char *>(&size), sizeof size, timeLimitMs))
        return false;
    frame->resize(qsizetype(size));
    return readAll(fd, frame->data(), size, timeLimitMs);
}

[[noreturn]] void serve(int in, int out)
{
    // libplist's own failures end this process quietly, not through any crash handler the
    // parent installed (a fuzzer's, a sanitizer's).
    for (int sig : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        std::signal(sig, SIG_DFL);
    QByteArray input;
    while (receiveFrame(in, &input, -1)) {
        const QVariant value = LibplistTree::read(input);
        QByteArray reply;
        QDataStream s(&reply, QIODevice::WriteOnly);
        s << quint8(value.isValid() ? 1 : 0);
        if (value.isValid())
            put(s, value);
        if (!sendFrame(out, reply))
            break;
    }
    _exit(0);
}

} // namespace

bool LibplistWorker::start()
{
    int toWorker[2];
    int fromWorker[2];
    if (::pipe(toWorker) != 0)
        return false;
    if (::pipe(fromWorker) != 0) {
        ::close(toWorker[0]);
        ::close(toWorker[1]);
        return false;
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::close(toWorker[1]);
        ::close(fromWorker[0]);
        serve(toWorker[0], fromWorker[1]);
    }
    ::close(toWorker[0]);
    ::close(fromWorker[1]);
    if (pid < 0) {
        ::close(toWorker[1]);
        ::close(fromWorker[0]);
        return false;
    }
    m_pid = pid;
    m_toWorker = toWorker[1];
    m_fromWorker = fromWorker[0];
    return true;
}

void LibplistWorker::stop()
{
    if (m_pid < 0)
        return;
    ::close(m_toWorker);
    ::close(m_fromWorker);
    ::kill(m_pid, SIGKILL);
    ::waitpid(m_pid, nullptr, 0);
    m_pid = -1;
}

LibplistWorker::Outcome LibplistWorker::read(const QByteArray &bytes, QVariant *value)
{
    // A worker that died writes to a closed pipe: take the error, not the signal.
    std::signal(SIGPIPE, SIG_IGN);
    if (m_pid < 0 && !start())
        return Outcome::Died;
    QByteArray reply;
    if (!sendFrame(m_toWorker, bytes) || !receiveFrame(m_fromWorker, &reply, m_timeLimitMs)) {
        stop();
        return Outcome::Died;
    }
    QDataStream s(reply);
    quint8 accepted = 0;
    s >> accepted;
    if (!accepted)
        return Outcome::Refused;
    *value = take(s);
    return Outcome::Read;
}

#pragma once

#include <QByteArray>
#include <QVariant>

#include <sys/types.h>

// Reads property lists with libplist (through LibplistTree) in a long-lived child process, for
// fuzzing: libplist 2.2 aborts or runs away on some malformed inputs, which then ends only the
// child. A child that dies or takes longer than the time limit is replaced on the next read.
class LibplistWorker
{
public:
    enum class Outcome { Read, Refused, Died };

    explicit LibplistWorker(int timeLimitMs = 5000) : m_timeLimitMs(timeLimitMs) {}
    ~LibplistWorker() { stop(); }
    LibplistWorker(const LibplistWorker &) = delete;
    LibplistWorker &operator=(const LibplistWorker &) = delete;

    // On Read, *value holds what libplist read.
    Outcome read(const QByteArray &bytes, QVariant *value);

private:
    bool start();
    void stop();

    int m_timeLimitMs;
    pid_t m_pid = -1;
    int m_toWorker = -1;
    int m_fromWorker = -1;
};

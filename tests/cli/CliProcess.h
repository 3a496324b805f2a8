#pragma once

#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <sys/stat.h>
#include <unistd.h>

// Runs the tessary-cli program itself in a child process (through tool_fault_runner when a fault
// is asked for), for tests of what only separate processes show: faults of the disk and
// permissions, and several commands at once.
struct CliProcess {
    int code = -1;
    bool crashed = false;
    QString out;
    QString err;

    static QString program() { return QStringLiteral(TESSARY_BINARY_DIR "/bin/tessary-cli"); }
    static QString runner() { return QStringLiteral(TESSARY_BINARY_DIR "/bin/tool_fault_runner"); }

    // The environment of a child: the store, the resources and the documents of the test.
    static QProcessEnvironment environment(const QString &store, const QString &documents)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("TESSARY_DEFAULTS"), store);
        env.insert(QStringLiteral("TESSARY_DOCUMENTS"), documents);
        env.insert(QStringLiteral("HOME"), documents);
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        return env;
    }

    // Starts the command; runnerOptions (may be empty) go to tool_fault_runner.
    static QProcess *start(const QStringList &args, const QProcessEnvironment &env, const QStringList &runnerOptions = {})
    {
        auto *process = new QProcess;
        process->setProcessEnvironment(env);
        if (runnerOptions.isEmpty())
            process->start(program(), args);
        else
            process->start(runner(), runnerOptions + QStringList{program()} + args);
        return process;
    }

    static CliProcess finish(QProcess *process)
    {
        CliProcess r;
        if (!process->waitForFinished(120000))
            process->kill();
        process->waitForFinished(5000);
        r.crashed = process->exitStatus() != QProcess::NormalExit;
        r.code = process->exitCode();
        r.out = QString::fromUtf8(process->readAllStandardOutput());
        r.err = QString::fromUtf8(process->readAllStandardError());
        delete process;
        return r;
    }

    static CliProcess run(const QStringList &args, const QProcessEnvironment &env, const QStringList &runnerOptions = {})
    {
        return finish(start(args, env, runnerOptions));
    }

    // When the tests run as root, permissions bind only for another user: the children then run
    // as "nobody" (tool_fault_runner --unprivileged), who must own the test's files.
    static void handToUnprivilegedUser(const QString &folder)
    {
        if (getuid() != 0)
            return;
        ::chmod(QFile::encodeName(folder).constData(), 0755);
        ::chown(QFile::encodeName(folder).constData(), 65534, 65534);
        QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext())
            ::chown(QFile::encodeName(it.next()).constData(), 65534, 65534);
    }
};

#pragma once

#include <QString>
#include <QStringList>
#include <QTextStream>

#include <cstdio>

// Where a command writes its output and its messages. The program binds them to stdout and
// stderr; tests bind them to strings.
class CliContext
{
public:
    CliContext() : out(stdout), err(stderr) {}
    CliContext(QString *outText, QString *errText) : out(outText), err(errText) {}

    QTextStream out;
    QTextStream err;

    // Prints "tessary-cli: message" on the error stream and returns the exit code.
    int fail(const QString &message, int code = 1)
    {
        err << "tessary-cli: " << message << Qt::endl;
        return code;
    }
    static bool wantsHelp(const QStringList &args)
    {
        return args.contains(QStringLiteral("--help")) || args.contains(QStringLiteral("-h"));
    }
};

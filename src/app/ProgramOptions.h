#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

// The tessary program's command line, read with QCommandLineParser: the files to open, and
// --verbose (the progress and debugging lines), --write-result FILE, --blend DIRECTION, --help
// and --version.
// It can be read before any application object exists, so that --help and --version answer
// without a display and without opening a window.
class ProgramOptions
{
public:
    // arguments: the whole command line, program name first.
    explicit ProgramOptions(const QStringList &arguments);

    // --help or --version was given: the program answers (answer()) and exits.
    bool answersAndExits() const;
    // The help text or the version line, for standard output.
    QString answer() const;
    // An option the program does not know, said in one line; empty when all were understood.
    QString errorText() const { return m_error; }

    bool verbose() const;
    // --write-result FILE, as an absolute path; empty when not given.
    QString writeResult() const;
    // --blend left-to-right|bottom-to-top|square: blend the photo list once the window is up;
    // empty when not given.
    QString blend() const;
    // The files to open, as absolute paths in the order given; missing ones included, so the
    // window can say which could not be found.
    QStringList files() const;

private:
    QCommandLineParser m_parser;
    QCommandLineOption m_help;
    QCommandLineOption m_version;
    QCommandLineOption m_verbose;
    QCommandLineOption m_writeResult;
    QCommandLineOption m_blend;
    QString m_error;
};

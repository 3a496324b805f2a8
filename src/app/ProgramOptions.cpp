#include "app/ProgramOptions.h"

#include <QCoreApplication>
#include <QFileInfo>

ProgramOptions::ProgramOptions(const QStringList &arguments)
    : m_help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help and exit."))
    , m_version({QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Show the version and exit."))
    , m_verbose(QStringLiteral("verbose"), QStringLiteral("Print the progress and debugging lines on standard error."))
    , m_writeResult(QStringLiteral("write-result"),
                    QStringLiteral("Also write the next collage shown to FILE, as an LZW-compressed TIFF."),
                    QStringLiteral("FILE"))
    , m_blend(QStringLiteral("blend"),
              QStringLiteral("Once the window is up, blend the photo list: left-to-right, bottom-to-top or square."),
              QStringLiteral("DIRECTION"))
{
    m_parser.setApplicationDescription(
        QStringLiteral("Make photo collages from templates. Photos given are added to the photo list, templates\n"
                       "files (.plist) imported into My Templates, and a collage document (.tessary) opened.\n"
                       "When Tessary is already running, the files are handed to its window."));
    // "-stylesheet" is one (Qt) option, not "-s -t -y ... -h".
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    m_parser.addOptions({m_help, m_version, m_verbose, m_writeResult, m_blend});
    m_parser.addPositionalArgument(QStringLiteral("files"), QStringLiteral("Photos, templates files or a collage document."),
                                   QStringLiteral("[FILE...]"));
    if (!m_parser.parse(arguments))
        m_error = m_parser.errorText();
}

bool ProgramOptions::answersAndExits() const
{
    return m_parser.isSet(m_help) || m_parser.isSet(m_version);
}

QString ProgramOptions::answer() const
{
    if (m_parser.isSet(m_help))
        return m_parser.helpText();
    return QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(), QCoreApplication::applicationVersion());
}

bool ProgramOptions::verbose() const
{
    return m_parser.isSet(m_verbose);
}

QString ProgramOptions::writeResult() const
{
    const QString path = m_parser.value(m_writeResult);
    return path.isEmpty() ? QString() : QFileInfo(path).absoluteFilePath();
}

QString ProgramOptions::blend() const
{
    return m_parser.value(m_blend);
}

QStringList ProgramOptions::files() const
{
    QStringList files;
    for (const QString &file : m_parser.positionalArguments())
        files.append(QFileInfo(file).absoluteFilePath());
    return files;
}

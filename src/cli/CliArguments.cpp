#include "CliArguments.h"

#include "CommandTable.h"

#include "foundation/Log.h"

#include <QFile>

namespace {

QString printable(const QByteArray &bytes)
{
    QString out;
    for (const char c : bytes) {
        const uchar u = uchar(c);
        if (u >= 0x20 && u < 0x7f)
            out += QLatin1Char(c);
        else
            out += QLatin1String("\\x") + QString::number(u, 16).toUpper().rightJustified(2, QLatin1Char('0'));
    }
    return out;
}

} // namespace

CliArguments::CliArguments(int argc, const char *const *argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray bytes(argv[i]);
        const QString decoded = QFile::decodeName(bytes);
        if (QFile::encodeName(decoded) != bytes)
            m_undecodable.append(printable(bytes));
        m_arguments.append(decoded);
    }
}

QString CliArguments::loggingRules() const
{
    if (m_arguments.contains(QStringLiteral("--verbose")))
        return QString::fromLatin1(kVerboseLoggingRules);
    return QString();
}

int CliArguments::dispatch(CliContext &context) const
{
    if (!m_undecodable.isEmpty()) {
        for (const QString &arg : m_undecodable)
            context.err << "tessary-cli: '" << arg << "' is not valid UTF-8; Tessary names files in UTF-8 only and "
                        << "cannot open a file of that name: rename it\n";
        return 2;
    }
    return CommandTable::dispatch(m_arguments, context);
}

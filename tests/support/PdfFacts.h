#pragma once

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QSize>
#include <QSizeF>
#include <QStandardPaths>
#include <QString>

#include <vector>

// What poppler's pdfinfo and pdfimages say about a PDF file: its pages, page size in points,
// title, creator, and the pixel size of each embedded picture. Tests that read PDFs back skip
// when the tools are not installed (scripts/install-deps.sh installs poppler-utils).
struct PdfFacts {
    bool read = false;
    int pages = 0;
    QSizeF pageSize; // points
    QString title;
    QString creator;
    std::vector<QSize> images;

    static bool toolsPresent()
    {
        return !QStandardPaths::findExecutable(QStringLiteral("pdfinfo")).isEmpty() &&
               !QStandardPaths::findExecutable(QStringLiteral("pdfimages")).isEmpty();
    }
    static constexpr const char *kMissing =
        "pdfinfo and pdfimages (poppler-utils) are not installed: the PDF cannot be read back";

    static QString run(const QString &program, const QStringList &args)
    {
        QProcess p;
        p.start(program, args);
        if (!p.waitForFinished(30000) || p.exitCode() != 0)
            return QString();
        return QString::fromUtf8(p.readAllStandardOutput());
    }

    // The first picture embedded in the PDF, extracted beside it as PNG.
    static QImage firstImage(const QString &path)
    {
        const QString prefix = path + QStringLiteral("-image");
        run(QStringLiteral("pdfimages"), {QStringLiteral("-png"), QStringLiteral("-l"), QStringLiteral("1"), path, prefix});
        return QImage(prefix + QStringLiteral("-000.png"));
    }

    static PdfFacts of(const QString &path)
    {
        PdfFacts f;
        const QString info = run(QStringLiteral("pdfinfo"), {path});
        if (info.isEmpty())
            return f;
        f.read = true;
        const auto field = [&info](const char *name) {
            const QRegularExpression re(QStringLiteral("^%1:\\s*(.*)$").arg(QLatin1String(name)),
                                        QRegularExpression::MultilineOption);
            return re.match(info).captured(1).trimmed();
        };
        f.pages = field("Pages").toInt();
        f.title = field("Title");
        f.creator = field("Creator");
        const QRegularExpressionMatch size =
            QRegularExpression(QStringLiteral("([\\d.]+) x ([\\d.]+) pts")).match(field("Page size"));
        f.pageSize = QSizeF(size.captured(1).toDouble(), size.captured(2).toDouble());
        // "page num type width height ...", after two heading lines.
        const QStringList lines = run(QStringLiteral("pdfimages"), {QStringLiteral("-list"), path}).split(u'\n');
        for (qsizetype i = 2; i < lines.size(); ++i) {
            const QStringList cols = lines[i].simplified().split(u' ');
            if (cols.size() > 4 && cols[2] == QLatin1String("image"))
                f.images.emplace_back(cols[3].toInt(), cols[4].toInt());
        }
        return f;
    }
};

#include "app/result/ResultSaveDialog.h"

#include "output/ResultFormat.h"
#include "app/result/SaveOptionsPanel.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QStandardPaths>

ResultSaveDialog::ResultSaveDialog(QWidget *parent, UserDefaults &defaults, const QByteArray &startFormat,
                                   const QSize &pixels, double sharpest)
    : SaveFileDialog(parent, tr("Save Collage"), &defaults)
    , m_formats(ResultFormat::writableFormats())
{
    setObjectName(QStringLiteral("resultSaveDialog"));
    setAttribute(Qt::WA_DeleteOnClose);
    // The folder of the last save; at first the Pictures folder where there is one, else the
    // home folder (never the program's own).
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    startInLastSaveFolder(!pictures.isEmpty() && QDir(pictures).exists() ? pictures : QDir::homePath());
    QStringList filters;
    for (const QByteArray &format : m_formats)
        filters << ResultFormat::nameFilter(format);
    setNameFilters(filters);

    m_options = new SaveOptionsPanel;
    m_options->setPicture(pixels, sharpest);
    if (auto *grid = qobject_cast<QGridLayout *>(layout()))
        grid->addWidget(m_options, grid->rowCount(), 0, 1, grid->columnCount());
    connect(m_options, &SaveOptionsPanel::formatChanged, this, &ResultSaveDialog::formatChosen);
    connect(this, &QFileDialog::filterSelected, this, [this](const QString &filter) {
        const qsizetype index = nameFilters().indexOf(filter);
        if (index >= 0 && index < m_formats.size())
            m_options->setFormat(m_formats.at(index));
    });
    if (auto *name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
        connect(name, &QLineEdit::textEdited, this, &ResultSaveDialog::nameEdited);

    const QByteArray format = m_formats.contains(startFormat) ? startFormat : QByteArray("png");
    selectFile(ResultFormat::defaultFileName(format));
    m_options->setFormat(format);
    formatChosen(format);
    resize(860, 620);
}

void ResultSaveDialog::formatChosen(const QByteArray &format)
{
    auto *name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    // Qt's dialog puts the filter's first extension on any name; the name keeps its own
    // extension of that format, and any other name gets the format's added.
    const QString typed = name ? name->text() : QString();
    const qsizetype index = m_formats.indexOf(format);
    if (index >= 0)
        selectNameFilter(nameFilters().at(index));
    if (name && !typed.isEmpty()) {
        const QString wanted = ResultFormat::withSuffix(typed, format);
        if (name->text() != wanted)
            name->setText(wanted);
    }
}

void ResultSaveDialog::nameEdited(const QString &name)
{
    // Typing the extension of a format moves the pop-up to it; the name stays as typed.
    const QByteArray format = ResultFormat::formatForSuffix(QFileInfo(name).suffix());
    if (!format.isEmpty() && format != m_options->format())
        m_options->setFormat(format);
}

QString ResultSaveDialog::targetFor(const QString &typed)
{
    const ResultFormat::Target target = ResultFormat::saveTarget(typed, m_options->format());
    m_options->setFormat(target.format);
    return target.path;
}

ResultEncoder::Settings ResultSaveDialog::settings() const
{
    return m_options->settings();
}

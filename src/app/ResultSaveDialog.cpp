#include "app/ResultSaveDialog.h"

#include "images/ResultFormat.h"
#include "widgets/SaveOptionsPanel.h"

#include <QGridLayout>
#include <QLineEdit>
#include <QStandardPaths>

ResultSaveDialog::ResultSaveDialog(QWidget *parent, const QByteArray &startFormat, const QSize &pixels, double sharpest)
    : QFileDialog(parent, tr("Save Collage"))
    , m_formats(ResultFormat::writableFormats())
{
    setObjectName(QStringLiteral("resultSaveDialog"));
    setOption(QFileDialog::DontUseNativeDialog);
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);
    // The Pictures folder where there is one, else the home folder (never the program's own).
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    setDirectory(!pictures.isEmpty() && QDir(pictures).exists() ? pictures : QDir::homePath());
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

    const QByteArray format = m_formats.contains(startFormat) ? startFormat : QByteArray("png");
    selectFile(ResultFormat::defaultFileName(format));
    m_options->setFormat(format);
    formatChosen(format);
    resize(860, 620);
}

void ResultSaveDialog::formatChosen(const QByteArray &format)
{
    const qsizetype index = m_formats.indexOf(format);
    if (index >= 0)
        selectNameFilter(nameFilters().at(index));
    if (auto *name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))) {
        if (!name->text().isEmpty())
            name->setText(ResultFormat::withSuffix(name->text(), format));
    }
}

QString ResultSaveDialog::chosenPath() const
{
    const QStringList files = selectedFiles();
    return files.isEmpty() ? QString() : ResultFormat::withSuffix(files.first(), m_options->format());
}

ResultEncoder::Settings ResultSaveDialog::settings() const
{
    return m_options->settings();
}

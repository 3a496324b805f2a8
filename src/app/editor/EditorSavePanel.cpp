#include "app/editor/EditorSavePanel.h"

#include "editor/EditedImageWriter.h"
#include "output/JpegQuality.h"
#include "output/ResultFormat.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>

QString EditorSavePanel::nameFilter(const QByteArray &format)
{
    return ResultFormat::nameFilter(format);
}

EditorSavePanel::EditorSavePanel(const QString &representedPath, const QByteArray &sourceFormat, int sourceQuality,
                                 QWidget *parent)
    : SaveFileDialog(parent, tr("Save Edited Photo"))
    , m_formats(EditedImageWriter::saveFormats())
{
    setObjectName(QStringLiteral("savePanel"));

    for (const QByteArray &f : std::as_const(m_formats))
        m_filters.append(nameFilter(f));
    setNameFilters(m_filters);
    const bool known = m_formats.contains(sourceFormat);
    selectNameFilter(nameFilter(known ? sourceFormat : QByteArray("png")));
    const QFileInfo represented(representedPath);
    setDirectory(represented.absolutePath());
    selectFile(known ? represented.fileName() : represented.completeBaseName() + QStringLiteral(".png"));

    // The options: the quality of the formats that have one, under the file type.
    m_qualityLabel = new QLabel(tr("Quality:"));
    m_quality = new QSlider(Qt::Horizontal);
    m_quality->setObjectName(QStringLiteral("qualitySlider"));
    m_quality->setRange(1, 100);
    m_quality->setValue(sourceQuality > 0 ? sourceQuality : JpegQuality::kDefaultQuality);
    m_quality->setToolTip(tr("Higher keeps more detail in a larger file"));
    auto *value = new QLabel(QString::number(m_quality->value()));
    value->setMinimumWidth(28);
    connect(m_quality, &QSlider::valueChanged, value, qOverload<int>(&QLabel::setNum));
    m_qualityRow = new QWidget;
    auto *row = new QHBoxLayout(m_qualityRow);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_quality, 1);
    row->addWidget(value);
    if (auto *grid = qobject_cast<QGridLayout *>(layout())) {
        const int r = grid->rowCount();
        grid->addWidget(m_qualityLabel, r, 0);
        grid->addWidget(m_qualityRow, r, 1, 1, grid->columnCount() - 1);
    }
    filterChanged(selectedNameFilter());
    connect(this, &QFileDialog::filterSelected, this, &EditorSavePanel::filterChanged);
    connect(this, &SaveFileDialog::targetChosen, this, &EditorSavePanel::answered);
}

QByteArray EditorSavePanel::formatOfFilter(const QString &filter) const
{
    const qsizetype i = m_filters.indexOf(filter);
    return i >= 0 ? m_formats.at(i) : QByteArray("png");
}

void EditorSavePanel::filterChanged(const QString &filter)
{
    const QByteArray format = formatOfFilter(filter);
    const bool hasQuality = ResultFormat::hasQuality(format);
    m_qualityLabel->setVisible(hasQuality);
    m_qualityRow->setVisible(hasQuality);
    // The name follows the format chosen.
    if (auto *name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))) {
        if (!QFileInfo(name->text()).completeBaseName().isEmpty())
            name->setText(ResultFormat::withSuffix(name->text(), format));
    }
}

QString EditorSavePanel::targetFor(const QString &typed)
{
    return ResultFormat::saveTarget(typed, formatOfFilter(selectedNameFilter())).path;
}

void EditorSavePanel::answered(const QString &path)
{
    const QByteArray format = ResultFormat::formatForSuffix(QFileInfo(path).suffix());
    emit saveRequested(path, format, ResultFormat::hasQuality(format) ? m_quality->value() : -1);
}

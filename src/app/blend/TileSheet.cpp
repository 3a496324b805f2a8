#include "app/blend/TileSheet.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

TileSheet::TileSheet(QWidget *parent)
    : QDialog(parent)
    , m_rows(new QComboBox)
    , m_columns(new QComboBox)
    , m_tile(new QPushButton(tr("Tile")))
    , m_cancel(new QPushButton(tr("Cancel")))
{
    setObjectName(QStringLiteral("tilePhotosWindow"));
    setWindowTitle(tr("Tile Photo"));
    setWindowModality(Qt::WindowModal);

    for (QComboBox *popUp : {m_rows, m_columns}) {
        for (int n = 1; n <= 10; ++n)
            popUp->addItem(QString::number(n));
        popUp->setCurrentIndex(1);
        popUp->setMinimumWidth(70);
    }
    m_rows->setObjectName(QStringLiteral("rowsPopUpButton"));
    m_rows->setToolTip(tr("Number of rows of tiles"));
    m_columns->setObjectName(QStringLiteral("columnsPopUpButton"));
    m_columns->setToolTip(tr("Number of columns of tiles"));
    m_tile->setObjectName(QStringLiteral("tilingButton"));
    m_tile->setDefault(true);
    m_tile->setToolTip(tr("Cut the selected photo into tiles and add them to the photo list"));
    m_cancel->setAutoDefault(false);

    auto *intro = new QLabel(tr("Cut the selected photo into a grid of tiles. Each tile becomes a "
                                "new photo in the list."));
    intro->setWordWrap(true);
    auto *form = new QFormLayout;
    form->setLabelAlignment(Qt::AlignRight);
    form->addRow(tr("Rows:"), m_rows);
    form->addRow(tr("Columns:"), m_columns);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_cancel);
    buttons->addWidget(m_tile);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 14);
    layout->setSpacing(12);
    layout->addWidget(intro);
    layout->addLayout(form);
    layout->addLayout(buttons);
    setFixedWidth(340);

    connect(m_tile, &QPushButton::clicked, this, [this] {
        accept();
        emit tilePhotoFiles();
    });
    // Cancel and Escape alike.
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(this, &QDialog::rejected, this, &TileSheet::endTilePhotosWindow);
}

int TileSheet::cellRows() const
{
    return m_rows->currentText().toInt();
}

int TileSheet::cellColumns() const
{
    return m_columns->currentText().toInt();
}

#pragma once

#include <QDialog>

class QComboBox;
class QPushButton;

// The tile sheet: how many rows and columns (1 to 10 each) to cut the selected photo into, a
// Tile button and Cancel. Window-modal; open it with open(). Tile reports tilePhotoFiles(),
// Cancel endTilePhotosWindow(); the sheet has ended by then.
class TileSheet : public QDialog
{
    Q_OBJECT
public:
    explicit TileSheet(QWidget *parent = nullptr);

    // The whole numbers shown by the pop-ups.
    int cellRows() const;
    int cellColumns() const;

    QComboBox *rowsPopUpButton() const { return m_rows; }
    QComboBox *columnsPopUpButton() const { return m_columns; }
    QPushButton *tilingButton() const { return m_tile; }
    QPushButton *cancelButton() const { return m_cancel; }

signals:
    void tilePhotoFiles();
    void endTilePhotosWindow();

private:
    QComboBox *m_rows;
    QComboBox *m_columns;
    QPushButton *m_tile;
    QPushButton *m_cancel;
};

#pragma once

#include "model/ResultEncoder.h"

#include <QFileDialog>

class SaveOptionsPanel;

// The save dialog of the result window: Qt's own file dialog with the format, its options and
// the print size beneath the file list. The format pop-up and the type filter follow each
// other, and the file name's extension follows the format.
class ResultSaveDialog : public QFileDialog
{
    Q_OBJECT
public:
    // `startFormat`: the format the choice starts at; `pixels` and `sharpest`: the picture.
    ResultSaveDialog(QWidget *parent, const QByteArray &startFormat, const QSize &pixels, double sharpest);

    SaveOptionsPanel &options() const { return *m_options; }
    // The chosen file, with the format's extension.
    QString chosenPath() const;
    ResultEncoder::Settings settings() const;

private:
    void formatChosen(const QByteArray &format);

    SaveOptionsPanel *m_options;
    QList<QByteArray> m_formats;
};

#pragma once

#include "output/ResultEncoder.h"
#include "widgets/SaveFileDialog.h"

class SaveOptionsPanel;

// The save dialog of the result window: Qt's own file dialog with the format, its options and
// the print size beneath the file list. The format pop-up and the type filter follow each
// other; choosing a format sets the name's extension, and typing the extension of a format
// chooses that format. The file written is the name as typed when its extension names a
// format, else the name with the chosen format's extension; it is the file asked about when it
// exists.
class ResultSaveDialog : public SaveFileDialog
{
    Q_OBJECT
public:
    // `startFormat`: the format the choice starts at; `pixels` and `sharpest`: the picture.
    ResultSaveDialog(QWidget *parent, UserDefaults &defaults, const QByteArray &startFormat, const QSize &pixels,
                     double sharpest);

    SaveOptionsPanel &options() const { return *m_options; }
    // The file written, once accepted.
    QString chosenPath() const { return targetPath(); }
    ResultEncoder::Settings settings() const;

protected:
    QString targetFor(const QString &typed) override;

private:
    void formatChosen(const QByteArray &format);
    void nameEdited(const QString &name);

    SaveOptionsPanel *m_options;
    QList<QByteArray> m_formats;
};

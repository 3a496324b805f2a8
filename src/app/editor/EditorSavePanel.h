#pragma once

#include "widgets/SaveFileDialog.h"

#include <QByteArray>

class QSlider;

// The image editor's save dialog: Qt's own file dialog, window-modal, proposing the edited
// file's name in its folder, with the formats the editor writes and, for JPEG and WebP, a
// quality slider. Format and quality start as the source file's. When accepted it tells the
// path, the format (from the name's extension, else the chosen filter, whose extension is then
// added) and the quality; an existing file at that path is replaced only after asking.
class EditorSavePanel : public SaveFileDialog
{
    Q_OBJECT
public:
    // sourceQuality -1: the JPEG default.
    EditorSavePanel(const QString &representedPath, const QByteArray &sourceFormat, int sourceQuality,
                    QWidget *parent = nullptr);

    QSlider &qualitySlider() const { return *m_quality; }
    // The format of a name filter of this dialog ("png" when unknown).
    QByteArray formatOfFilter(const QString &filter) const;
    static QString nameFilter(const QByteArray &format);

signals:
    // The user chose where to save; quality is -1 for formats without one.
    void saveRequested(const QString &path, const QByteArray &format, int quality);

protected:
    QString targetFor(const QString &typed) override;

private:
    void filterChanged(const QString &filter);
    void answered(const QString &path);

    QList<QByteArray> m_formats;
    QStringList m_filters;
    QWidget *m_qualityLabel;
    QWidget *m_qualityRow;
    QSlider *m_quality;
};

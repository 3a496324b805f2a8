#pragma once

#include "output/PrintSize.h"
#include "output/ResultEncoder.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QGroupBox;
class QLabel;
class QSlider;
class QSpinBox;

// The format and its options beneath the save dialog: the format pop-up, the JPEG/WebP quality,
// the TIFF compression, and the print size (width and height in centimetres or inches at a
// resolution) with the pixel size it makes and a warning when that enlarges the collage beyond
// its sharpest photo. The panel only shows the choices; the sizes and the warning are computed
// by PrintSize.
class SaveOptionsPanel : public QWidget
{
    Q_OBJECT
public:
    explicit SaveOptionsPanel(QWidget *parent = nullptr);

    // The picture being saved: its pixel size, and photo pixels per picture pixel of its
    // sharpest photo (0: unknown, read as the picture's own pixels).
    void setPicture(const QSize &pixels, double sharpest);
    void setFormat(const QByteArray &format);
    QByteArray format() const;
    // The print size as chosen; not valid when printing is off.
    PrintSize printSize() const;
    bool printSizeEnabled() const;
    // Everything the encoder needs.
    ResultEncoder::Settings settings() const;
    // The print size enlarges beyond the sharpest photo (the warning shows).
    bool enlargesBeyondSharpest() const;

    QComboBox *formatPopUp() const { return m_format; }
    QSpinBox *qualityBox() const { return m_quality; }
    QComboBox *compressionPopUp() const { return m_compression; }
    QGroupBox *printGroup() const { return m_print; }
    QDoubleSpinBox *widthBox() const { return m_width; }
    QDoubleSpinBox *heightBox() const { return m_height; }
    QComboBox *unitPopUp() const { return m_unit; }
    QSpinBox *resolutionBox() const { return m_dpi; }
    QCheckBox *keepProportionsBox() const { return m_keep; }
    QLabel *pixelSizeLabel() const { return m_pixels; }
    QLabel *warningLabel() const { return m_warning; }

signals:
    void formatChanged(const QByteArray &format);

private:
    void showFormatOptions();
    void unitChanged();
    void widthEdited();
    void heightEdited();
    void showPixels();
    void resetPrintSize();

    QSize m_picture;
    double m_sharpest = 0.0;
    PrintSize::Unit m_shownUnit = PrintSize::Unit::Centimetres;
    bool m_updating = false;
    QComboBox *m_format;
    QLabel *m_qualityLabel;
    QWidget *m_qualityRow;
    QSlider *m_qualitySlider;
    QSpinBox *m_quality;
    QLabel *m_compressionLabel;
    QComboBox *m_compression;
    QGroupBox *m_print;
    QDoubleSpinBox *m_width;
    QDoubleSpinBox *m_height;
    QComboBox *m_unit;
    QSpinBox *m_dpi;
    QCheckBox *m_keep;
    QLabel *m_pixels;
    QLabel *m_warning;
};

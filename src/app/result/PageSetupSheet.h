#pragma once

#include "output/PagePreset.h"

#include <QDialog>

class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QSpinBox;

// The sheet that chooses the page a PDF is made for: the paper, upright or turned, the margin,
// whether the collage fits inside or fills the page, and the resolution. It shows the pixels
// the collage will be rendered at and warns when that is beyond its photos' detail; the page
// itself works all of that out. Window-modal; open it with open().
class PageSetupSheet : public QDialog
{
    Q_OBJECT
public:
    // `start`: the page the choice starts at; `picture` and `sharpest`: the result shown in the
    // window (its pixels, and photo pixels per picture pixel of its sharpest photo, 0 unknown).
    PageSetupSheet(QWidget *parent, const PagePreset &start, const QSize &picture, double sharpest);

    PagePreset preset() const;
    QLabel &summary() const { return *m_summary; }
    QLabel &warning() const { return *m_warning; }

private:
    void pageChosen();
    void showOutcome();

    QSize m_picture;
    double m_sharpest;
    QComboBox *m_page;
    QComboBox *m_orientation;
    QDoubleSpinBox *m_margin;
    QComboBox *m_fit;
    QSpinBox *m_dpi;
    QLabel *m_summary;
    QLabel *m_warning;
    QDialogButtonBox *m_buttons;
    QPushButton *m_export;
};

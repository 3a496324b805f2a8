#pragma once

#include <QColor>
#include <QWidget>

#include <memory>

class DelayedPopupMenuButton;
class QAbstractButton;
class QButtonGroup;
class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;
class TessaryView;
class UserDefaults;

// The controls under the collage: the transform segments and their name, the spacing type and
// image frame style pop-ups, the width and height spacing, Jumble / Undo Jumble / Unjumble and
// the collage background colour with its clear button. Each control forwards to the view.
class CollageControlBar : public QWidget
{
    Q_OBJECT
public:
    CollageControlBar(TessaryView &view, UserDefaults &defaults, QWidget *parent = nullptr);
    ~CollageControlBar() override;

    // The controls, for the window and its tests.
    QButtonGroup *transformGroup() const;
    QLabel *transformNameLabel() const;
    QComboBox *spacingTypePopUp() const;
    QComboBox *imageFrameStylePopUp() const;
    QSpinBox *widthSpacing() const;
    QSpinBox *heightSpacing() const;
    QAbstractButton *jumbleButton() const;
    QAbstractButton *undoJumbleButton() const;
    QAbstractButton *unjumbleButton() const;
    QAbstractButton *backgroundColorWell() const;
    QAbstractButton *clearBackgroundButton() const;
    // Press and hold: the menu of the three blend commands.
    DelayedPopupMenuButton *blendButton() const;
    // The colour that fills the margin around a blended picture.
    QAbstractButton *blendBackgroundColorWell() const;
    QColor blendBackgroundColor() const;
    // Makes the collage picture; hidden while one is being made.
    QAbstractButton *resultButton() const;

public slots:
    void jumble();
    void undoJumble();
    void unjumble();
    // Opens the colour chooser on the window (window-modal).
    void chooseBackgroundColor();
    void clearTessaryBackgroundColor();
    void chooseBlendBackgroundColor();
    void setBlendBackgroundColor(const QColor &color);

signals:
    void blendBackgroundColorChanged(const QColor &color);
    // Undo Jumble and Unjumble may be used (the menu items follow).
    void jumbleActionsEnabledChanged(bool undoAndUnjumbleEnabled);

private:
    void showBackgroundColor(const QColor &color);

    struct Private;
    std::unique_ptr<Private> d;
    QPushButton *m_resultButton = nullptr;
};

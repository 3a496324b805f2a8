#pragma once

#include <QWidget>

class QLineEdit;

class QCheckBox;
class QLabel;
class QSlider;
class UserDefaults;

// The preferences window: the settings of the blend commands and of the frame around a blended
// result (three sliders and four check boxes, each writing its key the moment it changes, with
// help pictures beside them), a line on saved results, the gallery address, and Reset, which
// puts the reset values back and shows them. Settings that nothing in the program reads
// ("CropResult", "HomographyScaling") have no control: Reset still writes "CropResult". A
// top-level window, not modal, closed by Escape; centred the first time ("FirstRunPreferences").
class PreferencesWindow : public QWidget
{
    Q_OBJECT
public:
    PreferencesWindow(UserDefaults &defaults, const QString &resourcesFolder, QWidget *parent = nullptr);

    // Shows the stored values and brings the window to the front, centring it the first time.
    void showPreferences();
    // Writes the reset values in their fixed order and shows them.
    void resetPreferences();
    // Shows the stored values (the control's own start value for a key never written).
    void showStoredValues();

    QSlider *matchingMarginWidthSlider() const { return m_matchingMarginWidth; }
    QSlider *blendingMarginWidthSlider() const { return m_blendingMarginWidth; }
    QSlider *inputImageScalingSlider() const { return m_inputImageScaling; }
    QCheckBox *uniformlyCropCheckbox() const { return m_uniformlyCrop; }
    QCheckBox *uniformlyCropFitCheckbox() const { return m_uniformlyCropFit; }
    QCheckBox *megapixelLimitCheckbox() const { return m_megapixelLimit; }
    QCheckBox *insetByCroppingCheckbox() const { return m_insetByCropping; }

private:
    QSlider *addSlider(const QString &key, int minimum, int maximum, const QString &suffix);
    QCheckBox *addCheckBox(const QString &key, const QString &text);
    QLabel *helpPicture(const QString &fileName, const char *name) const;

    UserDefaults &m_defaults;
    QString m_resourcesFolder;
    QSlider *m_matchingMarginWidth;
    QSlider *m_blendingMarginWidth;
    QSlider *m_inputImageScaling;
    QCheckBox *m_uniformlyCrop;
    QCheckBox *m_uniformlyCropFit;
    QCheckBox *m_megapixelLimit;
    QCheckBox *m_insetByCropping;
    QLabel *m_autoOpenNote;
    QLineEdit *m_galleryAddress;
    bool m_showing = false;
};

#pragma once

#include <QDialog>
#include <QRect>

class QCheckBox;
class QLabel;
class QToolButton;
class UserDefaults;

// The sheet that offers to add templates to "My Templates". Its bottom part (more ways to get
// templates, and clearing them) folds away under a disclosure button, a short label standing in
// its place; the button's state is remembered under "AddTemplatesDisclosed" and starts folded
// the very first time ("FirstRunDisclosure"). The "Don't show this again" check box writes
// "DontShowAgain". Window-modal; open it with open().
//
// Its template buttons end the sheet and report what was asked; the controller does the work.
class LoadFileSheet : public QDialog
{
    Q_OBJECT
public:
    explicit LoadFileSheet(UserDefaults &defaults, QWidget *parent = nullptr);

    // Folds or unfolds the bottom part by the disclosure button's state: the sheet keeps its saved
    // origin and width and takes the height the fold arithmetic gives.
    void disclose();

    // The frame the sheet was laid out with, everything shown, recorded before any folding.
    QRect savedFrame() const { return m_savedFrame; }
    QToolButton *disclosureButton() const { return m_disclosureButton; }
    QWidget *disclosureView() const { return m_disclosureView; }
    QLabel *disclosureLabel() const { return m_disclosureLabel; }
    QCheckBox *dontShowAgainCheckbox() const { return m_dontShowAgain; }

signals:
    // "Choose Templates File…": pick template files to add to "My Templates".
    void chooseTemplateFile();
    // "Clear All My Templates…": empty "My Templates" (after asking).
    void clearAllTemplates();
    // "Templates Page": open the page of shared templates.
    void downloadWebsiteTemplateFile();
    // "Template Gallery…": browse the template gallery inside Tessary.
    void showTemplateGallery();

private:
    UserDefaults &m_defaults;
    QToolButton *m_disclosureButton;
    QWidget *m_disclosureView;
    QLabel *m_disclosureLabel;
    QCheckBox *m_dontShowAgain;
    QRect m_savedFrame;
    QRect m_viewFrame;
};

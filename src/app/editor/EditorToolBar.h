#pragma once

#include "editor/EditOperation.h"

#include <QList>
#include <QWidget>

class ImageEditorView;
class QButtonGroup;
class QComboBox;
class QDoubleSpinBox;
class QLineEdit;
class QSpinBox;
class QStackedWidget;
class QToolButton;
class QUndoStack;

// The image editor's bar above the photo: the tool modes as one segmented control, the chosen
// tool's options (the crop's aspect, the turns, flips and straightening angle, the marks'
// kind, colour, width and text), Undo and Redo (Ctrl+Z, Ctrl+Shift+Z, in this window only) and
// the adjustments button. Options go straight to the view's tools; what needs the window is
// told by signals.
class EditorToolBar : public QWidget
{
    Q_OBJECT
public:
    EditorToolBar(ImageEditorView &view, QUndoStack &undoStack, QWidget *parent = nullptr);

    // Shows the tool as chosen (its button checked, its options on show).
    void showTool(int index);
    // The controls that edit work only while there is a photo that can be edited.
    void setEditingEnabled(bool enabled);

    QButtonGroup &toolGroup() const { return *m_toolGroup; }
    QComboBox &aspectPopUp() const { return *m_aspect; }
    QDoubleSpinBox &angleField() const { return *m_angle; }
    QComboBox &annotationKindPopUp() const { return *m_annotationKind; }
    QSpinBox &lineWidthField() const { return *m_lineWidth; }
    QLineEdit &annotationTextField() const { return *m_annotationText; }

signals:
    void toolChosen(int index);
    void operationRequested(const EditOperation &operation);
    void adjustRequested();

private:
    QWidget *buildToolOptions();

    ImageEditorView *m_view;
    QButtonGroup *m_toolGroup = nullptr;
    QStackedWidget *m_toolOptions = nullptr;
    QComboBox *m_aspect = nullptr;
    QDoubleSpinBox *m_angle = nullptr;
    QComboBox *m_annotationKind = nullptr;
    QToolButton *m_colourButton = nullptr;
    QSpinBox *m_lineWidth = nullptr;
    QLineEdit *m_annotationText = nullptr;
    QList<QWidget *> m_editControls;
};

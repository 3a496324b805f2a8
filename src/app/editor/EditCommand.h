#pragma once

#include "editor/EditOperation.h"

#include <QUndoCommand>

class EditDocument;

// One edit of the image editor on its undo stack. It holds the edit, not pictures: redoing makes
// it count again in the document's history, undoing makes the document go one step back, and
// the document works the picture out again from what it remembers.
class EditCommand : public QUndoCommand
{
public:
    EditCommand(EditDocument &document, int index, const EditOperation &operation);

    void redo() override;
    void undo() override;

    const EditOperation &operation() const { return m_operation; }

private:
    EditDocument &m_document;
    int m_index;
    EditOperation m_operation;
};

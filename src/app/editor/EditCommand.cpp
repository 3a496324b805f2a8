#include "app/editor/EditCommand.h"

#include "editor/EditDocument.h"

EditCommand::EditCommand(EditDocument &document, int index, const EditOperation &operation)
    : QUndoCommand(operation.name())
    , m_document(document)
    , m_index(index)
    , m_operation(operation)
{
}

void EditCommand::redo()
{
    // Still in the document's history (undone, not replaced): count it again, so the document
    // can reuse what it remembers of that step.
    const QList<EditOperation> &history = m_document.operations();
    if (m_index < history.size() && history.at(m_index) == m_operation)
        m_document.setCount(m_index + 1);
    else
        m_document.setOperation(m_index, m_operation);
}

void EditCommand::undo()
{
    m_document.setCount(m_index);
}

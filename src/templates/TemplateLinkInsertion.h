#pragma once

#include "templates/TemplateLinkDownload.h"

#include <QList>
#include <QObject>
#include <QUrl>

class TemplateEditor;

// The link download of "My Templates" without waiting: fetches each link in turn with a
// TemplateLinkDownload and hands the bytes to the editor, which saves them as
// "templates.plist" and inserts their templates at the row, exactly as the editor's own
// waiting download does. The outcome is that of the last link (a later failure overrides an
// earlier success). Cancelling stops at once: the link being fetched inserts nothing, the
// links after it are not fetched, and the outcome is false.
class TemplateLinkInsertion : public QObject
{
    Q_OBJECT
public:
    // row -1: before the user table's selected template when the bytes arrive, or at the top.
    TemplateLinkInsertion(TemplateEditor &editor, QList<QUrl> links, qsizetype row, QObject *parent = nullptr);

    const QList<QUrl> &links() const { return m_links; }
    qsizetype row() const { return m_row; }

    // Starts with the first link; finished() comes later from the event loop.
    void start();
    void cancel();
    bool isRunning() const { return m_running; }
    bool wasCancelled() const { return m_cancelled; }
    // Why the last link failed, in words (empty when it did not).
    const QString &errorString() const { return m_error; }

signals:
    // The link now being fetched (index into links()).
    void linkStarted(int index, const QUrl &link);
    void progress(qint64 received, qint64 total);
    void finished(bool inserted);

private:
    void next();
    void linkFinished(bool fetched);
    void finish();

    TemplateEditor &m_editor;
    QList<QUrl> m_links;
    qsizetype m_row;
    TemplateLinkDownload m_download;
    int m_index = -1;
    bool m_result = false;
    bool m_running = false;
    bool m_cancelled = false;
    QString m_error;
};

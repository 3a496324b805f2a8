#pragma once

#include <QDialog>
#include <QList>
#include <QUrl>

class QLabel;
class QProgressBar;
class TemplateEditor;
class TemplateLinkInsertion;

// The small sheet shown on the window while template links are fetched into "My Templates":
// what is being fetched, how far it got, and Cancel. It is window-modal, so nothing in the
// window changes underneath the download, yet the window keeps drawing and answering. Cancel
// (or Escape) stops the download: nothing more is inserted and the outcome is false. The
// sheet closes and deletes itself when the download ends, then reports the outcome.
class TemplateDownloadDialog : public QDialog
{
    Q_OBJECT
public:
    // Opens a new sheet on the window and starts fetching the links; each link's templates go
    // in at row (-1: before the selected template of "My Templates", or at the top).
    static TemplateDownloadDialog *download(TemplateEditor &editor, const QList<QUrl> &links, qsizetype row,
                                            QWidget *window);

    TemplateLinkInsertion &insertion() const { return *m_insertion; }

signals:
    // The download ended (also when cancelled): whether templates were inserted.
    void downloadFinished(bool inserted);

protected:
    void reject() override;

private:
    TemplateDownloadDialog(TemplateEditor &editor, const QList<QUrl> &links, qsizetype row, QWidget *parent);
    void showLink(int index, const QUrl &link);
    void showProgress(qint64 received, qint64 total);
    void downloadEnded(bool inserted);

    TemplateLinkInsertion *m_insertion;
    QLabel *m_message;
    QLabel *m_link;
    QProgressBar *m_bar;
};

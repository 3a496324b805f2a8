#include "app/templates/TemplateDownloadDialog.h"

#include "templates/TemplateLinkInsertion.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The sheet goes on top of whatever sheet is open on the window (the gallery, say), so that
// one is held still too; otherwise on the window itself.
QWidget *sheetHost(QWidget *window)
{
    QWidget *modal = QApplication::activeModalWidget();
    if (!window || !modal)
        return window;
    for (QWidget *w = modal; w; w = w->parentWidget()) {
        if (w == window)
            return modal;
    }
    return window;
}

} // namespace

TemplateDownloadDialog *TemplateDownloadDialog::download(TemplateEditor &editor, const QList<QUrl> &links, qsizetype row,
                                                         QWidget *window)
{
    auto *dialog = new TemplateDownloadDialog(editor, links, row, sheetHost(window));
    dialog->open();
    dialog->m_insertion->start();
    return dialog;
}

TemplateDownloadDialog::TemplateDownloadDialog(TemplateEditor &editor, const QList<QUrl> &links, qsizetype row,
                                               QWidget *parent)
    : QDialog(parent)
    , m_insertion(new TemplateLinkInsertion(editor, links, row, this))
    , m_message(new QLabel(tr("Downloading templates into My Templates…")))
    , m_link(new QLabel)
    , m_bar(new QProgressBar)
{
    setObjectName(QStringLiteral("templateDownloadDialog"));
    setWindowTitle(tr("Downloading Templates"));
    setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    setAttribute(Qt::WA_DeleteOnClose);

    QFont bold = m_message->font();
    bold.setBold(true);
    m_message->setFont(bold);
    m_link->setObjectName(QStringLiteral("templateDownloadLink"));
    m_link->setTextInteractionFlags(Qt::NoTextInteraction);
    m_link->setMinimumWidth(320);
    m_bar->setObjectName(QStringLiteral("templateDownloadProgress"));
    m_bar->setRange(0, 0); // busy until the size is known
    m_bar->setTextVisible(false);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Cancel)->setToolTip(tr("Stop the download; nothing more is added"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 16, 18, 12);
    layout->setSpacing(8);
    layout->addWidget(m_message);
    layout->addWidget(m_link);
    layout->addWidget(m_bar);
    layout->addSpacing(4);
    layout->addWidget(buttons);
    setFixedWidth(sizeHint().width());

    connect(m_insertion, &TemplateLinkInsertion::linkStarted, this, &TemplateDownloadDialog::showLink);
    connect(m_insertion, &TemplateLinkInsertion::progress, this, &TemplateDownloadDialog::showProgress);
    connect(m_insertion, &TemplateLinkInsertion::finished, this, &TemplateDownloadDialog::downloadEnded);
    if (!links.isEmpty())
        showLink(0, links.first());
}

void TemplateDownloadDialog::showLink(int index, const QUrl &link)
{
    const QString text = link.toDisplayString();
    m_link->setToolTip(text);
    m_link->setText(m_link->fontMetrics().elidedText(text, Qt::ElideMiddle, m_link->minimumWidth()));
    const qsizetype count = m_insertion->links().size();
    if (count > 1)
        m_message->setText(tr("Downloading templates into My Templates (%1 of %2)…").arg(index + 1).arg(count));
    m_bar->setRange(0, 0);
}

void TemplateDownloadDialog::showProgress(qint64 received, qint64 total)
{
    if (total <= 0)
        return;
    // The bar counts kilobytes, which fit its int range for any accepted file.
    m_bar->setRange(0, int(total / 1024) + 1);
    m_bar->setValue(int(received / 1024));
}

void TemplateDownloadDialog::reject()
{
    // Cancel: the download stops and reports, which closes the sheet.
    if (m_insertion->isRunning())
        m_insertion->cancel();
    else
        QDialog::reject();
}

void TemplateDownloadDialog::downloadEnded(bool inserted)
{
    // The sheet goes first, so whatever follows the outcome (an alert) has the window to itself.
    if (isVisible())
        done(inserted ? QDialog::Accepted : QDialog::Rejected);
    emit downloadFinished(inserted);
    deleteLater();
}

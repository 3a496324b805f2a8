#include "templates/TemplateLinkInsertion.h"

#include "foundation/Log.h"
#include "templates/TemplateEditor.h"

TemplateLinkInsertion::TemplateLinkInsertion(TemplateEditor &editor, QList<QUrl> links, qsizetype row, QObject *parent)
    : QObject(parent)
    , m_editor(editor)
    , m_links(std::move(links))
    , m_row(row)
{
    connect(&m_download, &TemplateLinkDownload::progress, this, &TemplateLinkInsertion::progress);
    connect(&m_download, &TemplateLinkDownload::finished, this, &TemplateLinkInsertion::linkFinished);
}

void TemplateLinkInsertion::start()
{
    if (m_running)
        return;
    m_running = true;
    m_cancelled = false;
    m_result = false;
    m_error.clear();
    m_index = -1;
    if (m_links.isEmpty()) {
        // Nothing to fetch: the answer is false, reported from the event loop like any other.
        QMetaObject::invokeMethod(this, [this] { finish(); }, Qt::QueuedConnection);
        return;
    }
    next();
}

void TemplateLinkInsertion::cancel()
{
    if (!m_running)
        return;
    m_cancelled = true;
    m_result = false;
    if (m_download.isRunning())
        m_download.cancel(); // reports through linkFinished, which finishes
    else
        finish();
}

void TemplateLinkInsertion::next()
{
    ++m_index;
    if (m_index >= m_links.size()) {
        finish();
        return;
    }
    m_download.setTimeoutMs(m_editor.downloadTimeoutMs());
    emit linkStarted(m_index, m_links.at(m_index));
    m_download.start(m_links.at(m_index));
}

void TemplateLinkInsertion::linkFinished(bool fetched)
{
    if (!m_running)
        return;
    if (m_cancelled) {
        finish();
        return;
    }
    if (fetched) {
        m_result = m_editor.insertDownloadedTemplates(m_download.data(), m_row);
        m_error = m_result ? QString() : QStringLiteral("%1: no templates inserted").arg(m_download.url().toDisplayString());
    } else {
        m_result = false;
        m_error = m_download.errorString();
        qCInfo(lcTessary, "Template download failed: %s", qPrintable(m_error));
    }
    next();
}

void TemplateLinkInsertion::finish()
{
    if (!m_running)
        return;
    m_running = false;
    const bool inserted = m_result && !m_cancelled;
    emit finished(inserted);
}

#include "templates/TemplateLinkDownload.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

TemplateLinkDownload::TemplateLinkDownload(QObject *parent)
    : QObject(parent)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        if (!m_reply)
            return;
        m_timedOut = true;
        m_reply->abort();
    });
}

TemplateLinkDownload::~TemplateLinkDownload()
{
    // A reply still running goes with its manager, without a report to anyone.
    if (m_reply)
        m_reply->disconnect(this);
}

bool TemplateLinkDownload::isSupportedLink(const QUrl &url)
{
    const QString scheme = url.scheme().toLower();
    return url.isValid()
           && (scheme == QLatin1String("http") || scheme == QLatin1String("https") || scheme == QLatin1String("file"));
}

void TemplateLinkDownload::start(const QUrl &url)
{
    if (m_running)
        cancel();
    ++m_generation;
    m_url = url;
    m_data.clear();
    m_error.clear();
    m_running = true;
    m_cancelled = false;
    m_tooLarge = false;
    m_timedOut = false;

    const quint64 generation = m_generation;
    if (!isSupportedLink(url)) {
        const QString why = QStringLiteral("%1: only http, https and file links are fetched").arg(url.toDisplayString());
        QMetaObject::invokeMethod(this, [this, generation, why] {
            if (generation == m_generation && m_running)
                finish(false, why);
        }, Qt::QueuedConnection);
        return;
    }
    if (url.isLocalFile()) {
        QMetaObject::invokeMethod(this, [this, generation] {
            if (generation == m_generation && m_running)
                readLocalFile();
        }, Qt::QueuedConnection);
        return;
    }

    if (!m_manager) {
        m_manager = new QNetworkAccessManager(this);
        m_manager->setCache(nullptr); // never kept, never read back
    }
    QNetworkRequest request(url);
    // Always from the network, never from a cache.
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setTransferTimeout(m_timeoutMs);

    m_reply = m_manager->get(request);
    connect(m_reply, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64 total) {
        if (received > m_maxBytes || total > m_maxBytes) {
            m_tooLarge = true;
            m_reply->abort();
            return;
        }
        emit progress(received, total);
    });
    connect(m_reply, &QNetworkReply::finished, this, &TemplateLinkDownload::replyFinished);
    // The transfer time-out covers a stalled transfer; the deadline one that trickles on.
    m_deadline.start(m_timeoutMs);
}

void TemplateLinkDownload::cancel()
{
    if (!m_running)
        return;
    m_cancelled = true;
    if (m_reply) {
        m_reply->abort(); // finishes the reply at once, which reports
        return;
    }
    finish(false, QStringLiteral("%1: cancelled").arg(m_url.toDisplayString()));
}

void TemplateLinkDownload::readLocalFile()
{
    QFile file(m_url.toLocalFile());
    if (!file.open(QIODevice::ReadOnly)) {
        finish(false, QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
        return;
    }
    QByteArray bytes = file.size() > m_maxBytes ? QByteArray() : file.read(m_maxBytes + 1);
    if (file.size() > m_maxBytes || bytes.size() > m_maxBytes) {
        finish(false, QStringLiteral("%1: larger than %2 bytes").arg(file.fileName()).arg(m_maxBytes));
        return;
    }
    m_data = std::move(bytes);
    finish(true, QString());
}

void TemplateLinkDownload::replyFinished()
{
    QNetworkReply *reply = m_reply;
    if (!reply)
        return;
    m_reply = nullptr;
    m_deadline.stop();
    reply->deleteLater();
    const QString link = m_url.toDisplayString();
    if (m_cancelled)
        finish(false, QStringLiteral("%1: cancelled").arg(link));
    else if (m_tooLarge)
        finish(false, QStringLiteral("%1: larger than %2 bytes").arg(link).arg(m_maxBytes));
    else if (m_timedOut)
        finish(false, QStringLiteral("%1: no answer within %2 ms").arg(link).arg(m_timeoutMs));
    else if (reply->error() != QNetworkReply::NoError)
        finish(false, QStringLiteral("%1: %2").arg(link, reply->errorString()));
    else if (QByteArray bytes = reply->readAll(); bytes.size() <= m_maxBytes) {
        m_data = std::move(bytes);
        finish(true, QString());
    } else
        finish(false, QStringLiteral("%1: larger than %2 bytes").arg(link).arg(m_maxBytes));
}

void TemplateLinkDownload::finish(bool ok, const QString &error)
{
    if (!m_running)
        return;
    m_running = false;
    m_error = error;
    if (!ok)
        m_data.clear();
    emit finished(ok);
}

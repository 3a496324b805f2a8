#include "templates/TemplateDownloader.h"

#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace {

std::optional<QByteArray> failWith(QString *error, const QString &message)
{
    if (error)
        *error = message;
    return std::nullopt;
}

std::optional<QByteArray> readLocalFile(const QUrl &url, QString *error, qint64 maxBytes)
{
    QFile file(url.toLocalFile());
    if (!file.open(QIODevice::ReadOnly))
        return failWith(error, QStringLiteral("%1: %2").arg(file.fileName(), file.errorString()));
    if (file.size() > maxBytes)
        return failWith(error, QStringLiteral("%1: larger than %2 bytes").arg(file.fileName()).arg(maxBytes));
    QByteArray data = file.read(maxBytes + 1);
    if (data.size() > maxBytes)
        return failWith(error, QStringLiteral("%1: larger than %2 bytes").arg(file.fileName()).arg(maxBytes));
    return data;
}

} // namespace

bool TemplateDownloader::isSupportedLink(const QUrl &url)
{
    const QString scheme = url.scheme().toLower();
    return url.isValid() && (scheme == QLatin1String("http") || scheme == QLatin1String("https") || scheme == QLatin1String("file"));
}

std::optional<QByteArray> TemplateDownloader::download(const QUrl &url, QString *error, int timeoutMs, qint64 maxBytes)
{
    if (!isSupportedLink(url))
        return failWith(error, QStringLiteral("%1: only http, https and file links are fetched").arg(url.toDisplayString()));
    if (url.isLocalFile())
        return readLocalFile(url, error, maxBytes);

    QNetworkAccessManager manager;
    QNetworkRequest request(url);
    // Always from the network, never from a cache.
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setTransferTimeout(timeoutMs);

    QNetworkReply *reply = manager.get(request);
    QEventLoop loop;
    bool tooLarge = false;
    QObject::connect(reply, &QNetworkReply::downloadProgress, &loop, [&](qint64 received, qint64 total) {
        if (received > maxBytes || total > maxBytes) {
            tooLarge = true;
            reply->abort();
        }
    });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    // The transfer time-out covers a stalled transfer; this covers one that trickles on.
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, reply, &QNetworkReply::abort);
    deadline.start(timeoutMs);
    if (!reply->isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);

    std::optional<QByteArray> result;
    if (tooLarge)
        failWith(error, QStringLiteral("%1: larger than %2 bytes").arg(url.toDisplayString()).arg(maxBytes));
    else if (reply->error() != QNetworkReply::NoError)
        failWith(error, QStringLiteral("%1: %2").arg(url.toDisplayString(), reply->errorString()));
    else if (QByteArray data = reply->readAll(); data.size() <= maxBytes)
        result = std::move(data);
    else
        failWith(error, QStringLiteral("%1: larger than %2 bytes").arg(url.toDisplayString()).arg(maxBytes));
    delete reply;
    return result;
}

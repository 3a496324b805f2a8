#include "templates/TemplateDownloader.h"

#include <QEventLoop>

std::optional<QByteArray> TemplateDownloader::download(const QUrl &url, QString *error, int timeoutMs, qint64 maxBytes)
{
    TemplateLinkDownload fetch;
    fetch.setTimeoutMs(timeoutMs);
    fetch.setMaxBytes(maxBytes);
    QEventLoop loop;
    bool ok = false;
    QObject::connect(&fetch, &TemplateLinkDownload::finished, &loop, [&](bool fetched) {
        ok = fetched;
        loop.quit();
    });
    fetch.start(url);
    // finished() always comes from the event loop, so the loop is running when it arrives.
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    fetch.cancel(); // only when the loop was ended from elsewhere
    if (ok)
        return fetch.data();
    if (error)
        *error = fetch.errorString();
    return std::nullopt;
}

#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

// Receives the URLs handed to the desktop for the given schemes (links, reveal, open) instead
// of the desktop, for as long as it lives.
class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    explicit UrlRecorder(const QStringList &schemes)
        : m_schemes(schemes)
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::setUrlHandler(scheme, this, "openUrl");
    }
    ~UrlRecorder() override
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    }
    QList<QUrl> urls;

public slots:
    void openUrl(const QUrl &url) { urls.append(url); }

private:
    QStringList m_schemes;
};

#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkReply;

// Fetches a templates file from a link without making the caller wait: start() returns at once
// and finished() reports the outcome later, on the event loop of the thread that started it.
//
// Only http, https and file links are fetched. Every request goes to the network (nothing is
// taken from or kept in a cache); a transfer that has not ended within the time limit, answers
// with an error, or grows past the size cap gives nothing. finished() is emitted exactly once
// per start(), never from inside start() itself, and also after cancel().
class TemplateLinkDownload : public QObject
{
    Q_OBJECT
public:
    static constexpr int kTimeoutMs = 5000;
    static constexpr qint64 kMaxBytes = 16LL * 1024 * 1024;

    explicit TemplateLinkDownload(QObject *parent = nullptr);
    ~TemplateLinkDownload() override;

    static bool isSupportedLink(const QUrl &url);

    // The time limit of the whole transfer and the largest body accepted; set before start().
    void setTimeoutMs(int ms) { m_timeoutMs = ms; }
    int timeoutMs() const { return m_timeoutMs; }
    void setMaxBytes(qint64 bytes) { m_maxBytes = bytes; }

    // Starts fetching the link. A download still running is cancelled first (and reports).
    void start(const QUrl &url);
    // Stops a running download: nothing is delivered and finished(false) follows.
    void cancel();

    QUrl url() const { return m_url; }
    bool isRunning() const { return m_running; }
    bool wasCancelled() const { return m_cancelled; }
    // After finished(true): the bytes at the link. After finished(false): why, in words.
    const QByteArray &data() const { return m_data; }
    const QString &errorString() const { return m_error; }

signals:
    // Bytes received so far, and the total when the server told it (else -1).
    void progress(qint64 received, qint64 total);
    void finished(bool ok);

private:
    void readLocalFile();
    void replyFinished();
    void finish(bool ok, const QString &error);

    int m_timeoutMs = kTimeoutMs;
    qint64 m_maxBytes = kMaxBytes;
    QNetworkAccessManager *m_manager = nullptr;
    QPointer<QNetworkReply> m_reply;
    QTimer m_deadline;
    QUrl m_url;
    QByteArray m_data;
    QString m_error;
    bool m_running = false;
    bool m_cancelled = false;
    bool m_tooLarge = false;
    bool m_timedOut = false;
    // Tells a deferred step of an earlier start() apart from the current one.
    quint64 m_generation = 0;
};

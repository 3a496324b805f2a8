#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

// Fetches a templates file from a link, synchronously: the caller waits, as a drop or a
// gallery download does. Only http, https and file links are fetched; a transfer that stalls
// for the time-out, answers with an error, or grows past the size cap gives nothing.
class TemplateDownloader
{
public:
    static constexpr int kTimeoutMs = 5000;
    static constexpr qint64 kMaxBytes = 16LL * 1024 * 1024;

    static bool isSupportedLink(const QUrl &url);

    // The bytes at the link, or nothing (with *error saying why).
    static std::optional<QByteArray> download(const QUrl &url, QString *error = nullptr,
                                              int timeoutMs = kTimeoutMs, qint64 maxBytes = kMaxBytes);
};

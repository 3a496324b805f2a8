#pragma once

#include "templates/TemplateLinkDownload.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

// Fetches a templates file from a link synchronously, for the command line: the caller waits
// while a TemplateLinkDownload runs in a local event loop that takes no user input. The rules
// (schemes, no cache, time limit, size cap) are that class's; the window uses it directly and
// never waits.
class TemplateDownloader
{
public:
    static constexpr int kTimeoutMs = TemplateLinkDownload::kTimeoutMs;
    static constexpr qint64 kMaxBytes = TemplateLinkDownload::kMaxBytes;

    static bool isSupportedLink(const QUrl &url) { return TemplateLinkDownload::isSupportedLink(url); }

    // The bytes at the link, or nothing (with *error saying why).
    static std::optional<QByteArray> download(const QUrl &url, QString *error = nullptr,
                                              int timeoutMs = kTimeoutMs, qint64 maxBytes = kMaxBytes);
};

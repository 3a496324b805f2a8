#pragma once

#include "foundation/Log.h"

#include <QLoggingCategory>
#include <QStringList>

// Collects the application's log lines while it lives. The category is quiet unless asked, so
// the capture turns its progress and debugging lines on, and back off when it ends.
class LogCapture
{
public:
    LogCapture()
    {
        s_lines.clear();
        // Made before the filter goes in: the filter runs under the category registry's lock,
        // where making the category would wait on that same lock for ever.
        s_category = &lcTessary();
        s_previousFilter = QLoggingCategory::installFilter(&LogCapture::filter);
        m_previous = qInstallMessageHandler(&LogCapture::handler);
    }
    ~LogCapture()
    {
        qInstallMessageHandler(m_previous);
        QLoggingCategory::installFilter(s_previousFilter);
    }
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    const QStringList &lines() const { return s_lines; }
    int count(const QString &line) const { return int(s_lines.count(line)); }

private:
    static void handler(QtMsgType, const QMessageLogContext &context, const QString &message)
    {
        if (context.category && QByteArray(context.category) == s_category->categoryName())
            s_lines.append(message);
    }
    static void filter(QLoggingCategory *category)
    {
        if (s_previousFilter)
            s_previousFilter(category);
        if (category == s_category) {
            category->setEnabled(QtDebugMsg, true);
            category->setEnabled(QtInfoMsg, true);
        }
    }
    static inline QStringList s_lines;
    static inline const QLoggingCategory *s_category = nullptr;
    static inline QLoggingCategory::CategoryFilter s_previousFilter = nullptr;
    QtMessageHandler m_previous;
};

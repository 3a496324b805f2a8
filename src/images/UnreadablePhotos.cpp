#include "images/UnreadablePhotos.h"

#include "foundation/CountedNoun.h"

#include <QFileInfo>

namespace {

QString quoted(const QString &text)
{
    return QStringLiteral("\u201c%1\u201d").arg(text);
}

} // namespace

QString UnreadablePhotos::label()
{
    return QStringLiteral("Cannot be read");
}

QString UnreadablePhotos::reason(const QString &path, const QString &error)
{
    const QString name = QFileInfo(path).fileName();
    if (error.trimmed().isEmpty())
        return QStringLiteral("%1 cannot be read").arg(quoted(name));
    QString text = error;
    if (!path.isEmpty())
        text.replace(quoted(path), quoted(name));
    return text;
}

AlertPresenter::Alert UnreadablePhotos::leftEmptyAlert(const QList<Photo> &photos)
{
    AlertPresenter::Alert alert;
    alert.style = AlertPresenter::Style::Warning;
    const QString count = CountedNoun::text(photos.size(), QStringLiteral("photo"), QStringLiteral("photos"));
    alert.messageText = photos.size() == 1
        ? QStringLiteral("%1 cannot be read; its tile was left empty.").arg(count)
        : QStringLiteral("%1 cannot be read; their tiles were left empty.").arg(count);
    QStringList lines;
    for (const Photo &photo : photos)
        lines.append(QStringLiteral("Photo %1: %2").arg(photo.number).arg(photo.reason));
    alert.informativeText = lines.join(QLatin1Char('\n'));
    return alert;
}

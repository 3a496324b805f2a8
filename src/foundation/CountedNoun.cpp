#include "foundation/CountedNoun.h"

QString CountedNoun::text(qint64 count, const QString &one, const QString &many)
{
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? one : many);
}

// Lists the files named on the command line in a fresh photo list and prints how many are
// listed and how many are watched. Tests run it where the inotify watch limit is lowered, to
// show that photos beyond the limit stay listed, unwatched.
#include "foundation/AlertPresenter.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBookmarks.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTextStream>

#include <cstdio>

namespace {
class SilentAlerts : public AlertPresenter
{
public:
    void presentAlert(const Alert &, std::function<void(int)>) override {}
    void beep() override {}
};
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    UserDefaults defaults(dir.filePath(QStringLiteral("defaults.sqlite")));
    defaults.setBool(false, QStringLiteral("FirstRunLoadFactoryImages"));
    SilentAlerts alerts;
    ImageBookmarks list(defaults, dir.path(), alerts);
    const QStringList files = app.arguments().mid(1);
    for (const QString &file : files)
        list.addBookmarkForPath(file, 0);
    int watched = 0;
    for (const QString &file : list.images())
        watched += list.isWatching(file) ? 1 : 0;
    QTextStream(stdout) << "listed " << list.count() << " watched " << watched << Qt::endl;
    return 0;
}

#include "CliProcess.h"

#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"

#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

constexpr int kWorkers = 4;
constexpr int kPhotosEach = 10;
constexpr int kImportsEach = 3;
constexpr int kTemplatesPerFile = 2;

// Several tessary-cli processes change the photo list and My Templates at the same time, each
// reading the list, changing it and writing it back. Every change of every process is kept.
TEST(ConcurrentWriters, EveryProcessKeepsItsChanges)
{
    QTemporaryDir dir;
    const QString store = dir.filePath(QStringLiteral("defaults.sqlite"));
    {
        UserDefaults defaults(store);
        ASSERT_TRUE(defaults.setValuesForKeys({{Preferences::Bookmarks, QVariantList{}},
                                               {Preferences::Aligments, QVariantList{}},
                                               {Preferences::FirstRunLoadFactoryImages, false}}));
    }
    // Each worker's commands in order: photo additions with a templates import now and then.
    std::vector<QList<QStringList>> commands(kWorkers);
    QSet<QString> photos;
    QSet<qint64> templates;
    for (int w = 0; w < kWorkers; ++w) {
        for (int i = 0; i < kPhotosEach; ++i) {
            const QString photo = dir.filePath(QStringLiteral("photo-%1-%2.jpg").arg(w).arg(i));
            QFile f(photo);
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            photos.insert(photo);
            commands[w].append({QStringLiteral("photos"), QStringLiteral("add"), photo});
            if (i % 3 != 0 || i / 3 >= kImportsEach)
                continue;
            QVariantList list;
            for (int k = 0; k < kTemplatesPerFile; ++k) {
                const qint64 id = w * 1000 + i * 10 + k;
                templates.insert(id);
                list.append(QVariantMap{{QStringLiteral("nbrModules"), id}, {QStringLiteral("savedTessaryDataModules"), QVariantList{}}});
            }
            const QString file = dir.filePath(QStringLiteral("templates-%1-%2.plist").arg(w).arg(i));
            ASSERT_TRUE(PropertyList::writeFile(file, QVariantMap{{QStringLiteral("templates"), list}}, PropertyList::Format::Binary));
            commands[w].append({QStringLiteral("template"), QStringLiteral("import"), file});
        }
    }
    ASSERT_EQ(templates.size(), kWorkers * kImportsEach * kTemplatesPerFile);

    const QProcessEnvironment env = CliProcess::environment(store, dir.filePath(QStringLiteral("docs")));
    std::vector<QProcess *> running(kWorkers, nullptr);
    std::vector<int> next(kWorkers, 0);
    int failures = 0;
    for (int finished = 0, total = kWorkers * int(commands[0].size()); finished < total;) {
        for (int w = 0; w < kWorkers; ++w) {
            if (running[w] && running[w]->state() != QProcess::NotRunning && !running[w]->waitForFinished(20))
                continue;
            if (running[w]) {
                const CliProcess r = CliProcess::finish(std::exchange(running[w], nullptr));
                ++finished;
                if (r.code != 0 || r.crashed) {
                    ++failures;
                    ADD_FAILURE() << "worker " << w << ": " << r.err.toStdString();
                }
            }
            if (next[w] < commands[w].size()) {
                running[w] = CliProcess::start(commands[w].at(next[w]++), env);
            }
        }
    }
    EXPECT_EQ(failures, 0);

    UserDefaults defaults(store);
    QSet<QString> listed;
    for (const QVariant &datum : defaults.arrayForKey(Preferences::Bookmarks))
        listed.insert(QFile::decodeName(datum.toByteArray()));
    EXPECT_EQ(defaults.arrayForKey(Preferences::Bookmarks).size(), photos.size());
    EXPECT_EQ(listed, photos);
    QSet<qint64> imported;
    for (const QVariant &t : defaults.arrayForKey(Preferences::UserTemplates))
        imported.insert(t.toMap().value(QStringLiteral("nbrModules")).toLongLong());
    EXPECT_EQ(defaults.arrayForKey(Preferences::UserTemplates).size(), templates.size());
    EXPECT_EQ(imported, templates);
}

} // namespace

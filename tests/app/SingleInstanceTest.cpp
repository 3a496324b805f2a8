#include "app/SingleInstance.h"

#include "app/HalvernDesktopController.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "photos/ImageBrowserController.h"
#include "AppFixture.h"

#include <QImage>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTest>
#include <QtConcurrent>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// A later start runs in another process; here it runs on a worker thread, since its blocking
// exchange would otherwise wait on this thread's own event loop.
QFuture<bool> startSecond(const QString &serverName, const QStringList &files)
{
    return QtConcurrent::run([serverName, files] { return SingleInstance(serverName).sendToRunningInstance(files, 5000); });
}

// A socket file nobody listens on, as a program that died leaves it.
void leaveStaleSocket(const QString &path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path);
    ASSERT_LT(size_t(name.size()), sizeof(address.sun_path));
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    ::close(fd);
    ASSERT_TRUE(QFileInfo::exists(path));
}

class SingleInstanceTest : public AppFixture
{
protected:
    QString socketName() const { return dir.filePath(QStringLiteral("test.socket")); }
};

// What a second start hands over arrives whole at the first, whatever the names hold.
TEST_F(SingleInstanceTest, ASecondStartHandsItsFilesToTheFirst)
{
    const QStringList cases[] = {
        {},
        {QStringLiteral("/photos/a.jpg")},
        {QStringLiteral("/photos/with space.png"), QStringLiteral("/fotos/ünïcode ✓.jpg"),
         QStringLiteral("/x/quote\"and\\backslash.tif"), QStringLiteral("/templates/mine.plist")},
    };
    SingleInstance first(socketName());
    ASSERT_TRUE(first.listen());
    QSignalSpy received(&first, &SingleInstance::filesReceived);
    for (const QStringList &files : cases) {
        received.clear();
        QFuture<bool> second = startSecond(socketName(), files);
        ASSERT_TRUE(QTest::qWaitFor([&] { return second.isFinished(); }, 10000));
        EXPECT_TRUE(second.result());
        ASSERT_TRUE(QTest::qWaitFor([&] { return received.size() == 1; }, 5000));
        EXPECT_EQ(received.at(0).at(0).toStringList(), files);
    }
}

TEST_F(SingleInstanceTest, WithNobodyListeningTheStartRunsAlone)
{
    EXPECT_FALSE(SingleInstance(socketName()).sendToRunningInstance({QStringLiteral("/a.jpg")}, 500));
    leaveStaleSocket(socketName());
    EXPECT_FALSE(SingleInstance(socketName()).sendToRunningInstance({QStringLiteral("/a.jpg")}, 500));
}

// A socket left behind is taken over; a live one is not.
TEST_F(SingleInstanceTest, AStaleSocketIsReplacedALiveOneKept)
{
    leaveStaleSocket(socketName());
    SingleInstance first(socketName());
    EXPECT_TRUE(first.listen());
    SingleInstance intruder(socketName());
    EXPECT_FALSE(intruder.listen());
    EXPECT_TRUE(first.isListening());
    QFuture<bool> second = startSecond(socketName(), {QStringLiteral("/b.jpg")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return second.isFinished(); }, 10000));
    EXPECT_TRUE(second.result());
}

// Something that is not a list of files is answered "refused" and reported to nobody.
TEST_F(SingleInstanceTest, AGarbledRequestIsRefused)
{
    SingleInstance first(socketName());
    ASSERT_TRUE(first.listen());
    QSignalSpy received(&first, &SingleInstance::filesReceived);
    QLocalSocket socket;
    socket.connectToServer(socketName());
    ASSERT_TRUE(socket.waitForConnected(2000));
    socket.write("{\"not\": \"a list\"}\n");
    ASSERT_TRUE(QTest::qWaitFor([&] { return socket.bytesAvailable() > 0 || socket.state() != QLocalSocket::ConnectedState; }, 5000));
    EXPECT_TRUE(socket.readAll().startsWith("refused"));
    EXPECT_EQ(received.size(), 0);
}

// The whole way: a second start's photo lands in the running window's photo list.
TEST_F(SingleInstanceTest, TheRunningWindowAddsTheHandedOverPhoto)
{
    defaults->setBool(true, Preferences::DoNotShowWelcomeWindowAgain);
    const QString photo = dir.filePath(QStringLiteral("handed over.png"));
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    ASSERT_TRUE(image.save(photo));

    HalvernDesktopController controller(*defaults, Paths::resourcesFolder());
    SingleInstance first(socketName());
    ASSERT_TRUE(first.listen());
    QObject::connect(&first, &SingleInstance::filesReceived, &controller, &HalvernDesktopController::openFiles);
    controller.launch();

    QFuture<bool> second = startSecond(socketName(), {photo});
    ASSERT_TRUE(QTest::qWaitFor([&] { return second.isFinished(); }, 10000));
    EXPECT_TRUE(second.result());
    ImageBrowserController &photos = controller.imageBrowserController();
    ASSERT_TRUE(QTest::qWaitFor([&] { return photos.images().contains(photo); }, 5000));
    EXPECT_EQ(photos.images().last(), photo);
}

TEST(SingleInstanceName, IsOnePerStoreAndUser)
{
    const QString a = SingleInstance::serverNameForStore(QStringLiteral("/home/u/.local/share/tessary/defaults.sqlite"));
    const QString b = SingleInstance::serverNameForStore(QStringLiteral("/tmp/test/defaults.sqlite"));
    EXPECT_NE(a, b);
    EXPECT_EQ(a, SingleInstance::serverNameForStore(QStringLiteral("/home/u/.local/share/tessary/defaults.sqlite")));
    EXPECT_TRUE(a.contains(QString::number(::getuid())));
}

} // namespace

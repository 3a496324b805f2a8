#pragma once

#include <QFuture>
#include <QImage>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QThreadPool>

#include <functional>

// Joins photos into one seamless picture: side by side from left to right, stacked from the
// bottom up, or as a square of 2 x 2, 3 x 3 or 4 x 4 photos (the first 4, 9 or 16, in reading
// order from the top left). Neighbours overlap by the blending margin and are feathered across
// it, so no seam shows. Where neighbours show the same scene (a panorama shot in pieces), the
// join is found by correlation of their overlapping parts instead; when the correlation is
// poor, the fixed overlap is used.
//
// Photos read from files are streamed: each is decoded while the picture is made and never held
// whole, so the memory needed is about the picture's own. Transparent parts of a photo (the
// empty bands of photos scaled to one size) let the neighbour show and stay transparent where
// nothing covers them; the picture then has an alpha channel.
//
// The pixel work is done by libvips; this class is the only place that talks to it. blend()
// works on the calling thread; start() runs it on a thread of the blender's own and reports
// progress and the picture by signal.
class PhotoBlender : public QObject
{
    Q_OBJECT
public:
    enum class Arrangement { LeftToRight, BottomToTop, Square };

    struct Options {
        int blendingMarginWidth = 50; // overlap of neighbours, in pixels (after scaling)
        int inputImageScaling = 100;  // percent, applied to every photo first
        bool findJoins = true;        // look for overlapping content
    };

    // Progress on the thread doing the work; each may be empty.
    struct Progress {
        std::function<void(const QString &message)> message;
        std::function<void(double fraction)> fraction; // 0 .. 1
        std::function<void(const QImage &preview)> image;
    };

    // Where one photo joins its neighbour: the neighbour's top-left corner relative to the
    // photo's (to its right, or below it), and whether correlation found it.
    struct Join {
        QPoint offset;
        bool matched = false;
    };

    // How many photos an arrangement uses of `count`: all, or the largest square of at most 16.
    static qsizetype photosUsed(Arrangement arrangement, qsizetype count);
    // The side of the square made of `count` photos: 4, 3, 2, or 0 for fewer than 4.
    static int squareSide(qsizetype count);

    // The picture; null when no photo could be read.
    static QImage blend(const QStringList &files, Arrangement arrangement, const Options &options,
                        const Progress &progress = {});
    static QImage blendImages(const QList<QImage> &photos, Arrangement arrangement, const Options &options,
                              const Progress &progress = {});
    // Where `second` joins `first` (to its right, or below it when `vertical`): found by
    // correlation when the two overlap in content, else the fixed overlap of `margin` pixels,
    // centred across.
    static Join findJoin(const QImage &first, const QImage &second, bool vertical, int margin);

    explicit PhotoBlender(QObject *parent = nullptr);
    ~PhotoBlender() override; // waits for a running blend

    // Blends on the blender's thread; `prepare` (may be empty) runs there first and turns the
    // list of files into the files to blend (uniform cropping). Progress and the result come
    // by the signals below.
    void start(const QStringList &files, Arrangement arrangement, const Options &options,
               std::function<QStringList(const QStringList &)> prepare = {});
    bool isRunning() const { return m_running.isRunning(); }
    void waitForFinished() { m_pool.waitForDone(); }

signals:
    void progressMessage(const QString &message);
    void progressFraction(double fraction);
    void progressImage(const QImage &preview);
    // The blended picture (null when nothing could be read).
    void finished(const QImage &picture);

private:
    QThreadPool m_pool;
    QFuture<void> m_running;
};

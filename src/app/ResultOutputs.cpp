#include "app/ResultOutputs.h"

#include "app/CompletionSound.h"
#include "app/ResultSaveDialog.h"
#include "app/ResultWindow.h"
#include "foundation/AtomicFileWriter.h"
#include "foundation/Log.h"
#include "foundation/Preferences.h"
#include "images/ImageBrowserController.h"
#include "images/ResultFormat.h"
#include "model/ParallelPngWriter.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QGuiApplication>
#include <QMimeData>
#include <QPromise>
#include <QStatusBar>
#include <QtConcurrent/QtConcurrentRun>

ResultOutputs::ResultOutputs(ResultWindow &window, ImageBrowserController &browser, UserDefaults &defaults,
                             CompletionSound *sound, const QString &defaultImage, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_browser(browser)
    , m_defaults(defaults)
    , m_sound(sound)
    , m_defaultImage(defaultImage)
    , m_temporaryFolder(QDir::tempPath())
    , m_opener([](const QUrl &url) { return QDesktopServices::openUrl(url); })
{
    m_pool.setMaxThreadCount(2);
}

ResultOutputs::~ResultOutputs()
{
    // Writes under way finish before the objects they report to go.
    for (auto *watcher : findChildren<QFutureWatcherBase *>())
        watcher->waitForFinished();
}

void ResultOutputs::run(const QString &text, Job job, std::function<void(const Outcome &)> done)
{
    auto *watcher = new QFutureWatcher<Outcome>(this);
    const bool shown = !text.isEmpty();
    if (shown) {
        ++m_running;
        m_window.beginWork(text);
        connect(watcher, &QFutureWatcher<Outcome>::progressValueChanged, this,
                [this, watcher](int value) { m_window.setWorkProgress(value, watcher->progressMaximum()); });
    }
    connect(watcher, &QFutureWatcher<Outcome>::finished, this, [this, watcher, shown, done] {
        const Outcome outcome = watcher->future().resultCount() > 0 ? watcher->result() : Outcome();
        watcher->deleteLater();
        if (shown && --m_running == 0)
            m_window.endWork(outcome.ok ? QString() : tr("Failed: %1").arg(outcome.error));
        done(outcome);
    });
    watcher->setFuture(QtConcurrent::run(&m_pool, [job](QPromise<Outcome> &promise) {
        promise.setProgressRange(0, 100);
        promise.addResult(job([&promise](int value, int total) {
            promise.setProgressValue(total > 0 ? value * 100 / total : 0);
        }));
    }));
}

bool ResultOutputs::autoOpen() const
{
    return Preferences(m_defaults).autoOpenStitchedImageFile();
}

void ResultOutputs::openFile(const QString &path)
{
    if (m_opener)
        m_opener(QUrl::fromLocalFile(path));
}

void ResultOutputs::save()
{
    if (m_window.image().isNull() || m_saveDialog)
        return;
    const QStringList photos = m_browser.images();
    const QString reference = photos.isEmpty() ? m_defaultImage : photos.first();
    const QByteArray format = ResultFormat::startingFormat(reference);
    if (format.isEmpty())
        return; // no reference picture: no dialog, as with no type to start from
    const QImage image = m_window.image();
    m_saveDialog = new ResultSaveDialog(&m_window, format, image.size(), m_window.sharpest());
    connect(m_saveDialog, &QFileDialog::accepted, this, [this] {
        saveImageToPath(m_saveDialog->chosenPath(), m_saveDialog->settings());
    });
    m_saveDialog->open();
}

void ResultOutputs::saveImageToPath(const QString &path, const ResultEncoder::Settings &settings)
{
    const QImage image = m_window.image();
    if (image.isNull() || path.isEmpty())
        return;
    run(tr("Saving %1…").arg(QFileInfo(path).fileName()),
        [image, path, settings](const ResultEncoder::Progress &progress) {
            Outcome o;
            o.path = path;
            o.ok = ResultEncoder::writeFile(image, path, settings, &o.error, progress);
            return o;
        },
        [this](const Outcome &o) {
            if (o.ok) {
                m_window.statusBar()->showMessage(tr("Saved %1").arg(QDir::toNativeSeparators(o.path)), 6000);
                if (autoOpen())
                    openFile(o.path);
            }
            emit saved(o.path, o.ok);
        });
}

void ResultOutputs::saveImage(const QImage &image)
{
    if (image.isNull() || m_tiffDialog)
        return;
    m_tiffDialog = new QFileDialog(&m_window, tr("Save as TIFF"));
    m_tiffDialog->setObjectName(QStringLiteral("tiffSaveDialog"));
    m_tiffDialog->setOption(QFileDialog::DontUseNativeDialog);
    m_tiffDialog->setAcceptMode(QFileDialog::AcceptSave);
    m_tiffDialog->setWindowModality(Qt::WindowModal);
    m_tiffDialog->setAttribute(Qt::WA_DeleteOnClose);
    m_tiffDialog->setNameFilter(ResultFormat::nameFilter("tiff"));
    m_tiffDialog->setDefaultSuffix(QStringLiteral("tif"));
    m_tiffDialog->selectFile(QStringLiteral("Untitled.tif"));
    connect(m_tiffDialog, &QFileDialog::fileSelected, this, [this, image](const QString &file) {
        const QString path = ResultFormat::withSuffix(file, "tiff");
        ResultEncoder::Settings settings;
        settings.format = "tiff";
        settings.tiffCompression = 0;
        run(tr("Saving %1…").arg(QFileInfo(path).fileName()),
            [image, path, settings](const ResultEncoder::Progress &progress) {
                Outcome o;
                o.path = path;
                o.ok = ResultEncoder::writeFile(image, path, settings, &o.error, progress);
                return o;
            },
            [this](const Outcome &o) {
                if (o.ok && autoOpen())
                    openFile(o.path);
                emit saved(o.path, o.ok);
            });
    });
    m_tiffDialog->open();
}

void ResultOutputs::setClipboard(const QImage &image, const Outcome &encoded)
{
    // Programs that paste pictures on Linux ask for PNG; the LZW TIFF and Qt's own image data
    // are there too for those that ask for them.
    auto *data = new QMimeData;
    data->setData(QStringLiteral("image/png"), encoded.png);
    data->setData(QStringLiteral("image/tiff"), encoded.tiff);
    data->setImageData(image);
    QGuiApplication::clipboard()->setMimeData(data);
}

void ResultOutputs::putImageOnClipboard()
{
    const QImage image = m_window.image();
    if (image.isNull())
        return;
    run(tr("Copying…"),
        [image](const ResultEncoder::Progress &progress) {
            Outcome o;
            o.png = ResultEncoder::png(image);
            progress(1, 2);
            o.tiff = ResultEncoder::lzwTiff(image);
            progress(2, 2);
            o.ok = !o.png.isEmpty() && !o.tiff.isEmpty();
            if (!o.ok)
                o.error = QStringLiteral("the picture could not be encoded");
            return o;
        },
        [this, image](const Outcome &o) {
            if (!o.ok)
                return;
            setClipboard(image, o);
            if (m_sound)
                m_sound->play();
            emit copied();
        });
}

void ResultOutputs::openResultInPreview()
{
    const QImage image = m_window.image();
    if (image.isNull())
        return;
    const QString path = ResultFormat::temporaryPngPath(m_temporaryFolder);
    run(tr("Preparing the viewer…"),
        [image, path](const ResultEncoder::Progress &progress) {
            Outcome o;
            o.path = path;
            o.ok = ResultEncoder::writeFile(image, path, ResultEncoder::Settings(), &o.error, progress);
            return o;
        },
        [this](const Outcome &o) {
            if (!o.ok)
                return;
            // The temporary file stays: the viewer may still be reading it.
            openFile(o.path);
            emit opened(o.path);
        });
}

void ResultOutputs::putImageOnClipboardAndOpenInPreview()
{
    const QImage image = m_window.image();
    if (image.isNull())
        return;
    const QString path = ResultFormat::temporaryPngPath(m_temporaryFolder);
    run(tr("Copying and opening…"),
        [image, path](const ResultEncoder::Progress &progress) {
            Outcome o;
            o.path = path;
            o.png = ResultEncoder::png(image);
            progress(1, 3);
            o.tiff = ResultEncoder::lzwTiff(image);
            progress(2, 3);
            o.ok = !o.tiff.isEmpty() && !o.png.isEmpty() && AtomicFileWriter::write(path, o.png, &o.error);
            progress(3, 3);
            return o;
        },
        [this, image](const Outcome &o) {
            if (!o.ok)
                return;
            setClipboard(image, o);
            openFile(o.path);
            emit copied();
            emit opened(o.path);
            if (m_sound)
                m_sound->play();
        });
}

void ResultOutputs::insertResult()
{
    const QString folder = ImageBrowserController::imagesPath();
    const QImage image = m_window.image();
    if (folder.isEmpty() || image.isNull())
        return;
    const QString path = QDir(folder).filePath(ResultFormat::uuidPngName());
    run(tr("Adding to the photos…"),
        [image, path](const ResultEncoder::Progress &progress) {
            Outcome o;
            o.path = path;
            o.ok = ResultEncoder::writeFile(image, path, ResultEncoder::Settings(), &o.error, progress);
            return o;
        },
        [this](const Outcome &o) {
            if (!o.ok)
                return;
            m_browser.insertImage(o.path, 0);
            emit inserted(o.path);
        });
}

void ResultOutputs::writePendingOutput(const QImage &image, const QString &path)
{
    if (image.isNull() || path.isEmpty())
        return;
    run(QString(),
        [image, path](const ResultEncoder::Progress &) {
            Outcome o;
            o.path = path;
            ResultEncoder::Settings settings;
            settings.format = "tiff";
            settings.tiffCompression = 1;
            o.ok = ResultEncoder::writeFile(image, path, settings, &o.error);
            if (!o.ok)
                qCWarning(lcTessary, "The result could not be written to %s: %s", qUtf8Printable(path),
                          qUtf8Printable(o.error));
            return o;
        },
        [this](const Outcome &o) { emit pendingOutputWritten(o.path, o.ok); });
}

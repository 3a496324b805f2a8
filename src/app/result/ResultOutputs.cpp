#include "app/result/ResultOutputs.h"

#include "app/CompletionSound.h"
#include "app/result/ResultSaveDialog.h"
#include "app/result/ResultWindow.h"
#include "foundation/AtomicFileWriter.h"
#include "foundation/BackgroundJob.h"
#include "foundation/ImagesFolder.h"
#include "foundation/Log.h"
#include "foundation/MimeHandlers.h"
#include "foundation/Preferences.h"
#include "photos/ImageBrowserController.h"
#include "output/ResultFormat.h"
#include "output/ParallelPngWriter.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QMimeDatabase>
#include <QStatusBar>

ResultOutputs::ResultOutputs(ResultWindow &window, ImageBrowserController &browser, UserDefaults &defaults,
                             CompletionSound *sound, const QString &defaultImage, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_browser(browser)
    , m_defaults(defaults)
    , m_sound(sound)
    , m_defaultImage(defaultImage)
    , m_temporaryFolder(QDir::tempPath())
    , m_opener([](const QUrl &url) {
        const QString type = QMimeDatabase().mimeTypeForFile(url.toLocalFile()).name();
        return MimeHandlers::hasHandler(type) && QDesktopServices::openUrl(url);
    })
{
    m_alerts.setParentWindow(&m_window);
    connect(&m_window, &ResultWindow::workCanceled, this, &ResultOutputs::cancelRunning);
    // Quitting gives up the writes under way rather than waiting for them.
    if (QCoreApplication *app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &ResultOutputs::cancelAll);
}

ResultOutputs::~ResultOutputs()
{
    cancelAll();
    // Writes under way stop (soon, leaving no file) before the objects they report to go: each
    // job waits for its work as it goes.
    qDeleteAll(findChildren<BackgroundJob *>(Qt::FindDirectChildrenOnly));
    for (const QString &path : std::as_const(m_temporaryFiles))
        QFile::remove(path);
}

ResultOutputs::Job ResultOutputs::writeJob(const QImage &image, const QString &path, const ResultEncoder::Settings &settings) const
{
    return [image, path, settings, canceled = canceled()](const ResultEncoder::Progress &progress) {
        Outcome o;
        o.path = path;
        o.ok = ResultEncoder::writeFile(image, path, settings, &o.error, progress, canceled);
        return o;
    };
}

void ResultOutputs::run(const QString &text, Job job, std::function<void(const Outcome &)> done)
{
    // A job of its own for each: outputs asked for one after another all run and all answer.
    auto *work = new BackgroundJob(this);
    const bool shown = !text.isEmpty();
    if (shown) {
        ++m_running;
        m_window.beginWork(text);
        connect(work, &BackgroundJob::progressChanged, this,
                [this](double fraction) { m_window.setWorkProgress(int(fraction * 100), 100); });
    }
    connect(work, &BackgroundJob::finished, this, [this, work, shown, done, stopped = m_stopped](const QVariant &result) {
        Outcome outcome = result.value<Outcome>();
        work->deleteLater();
        // Stopped with the window's Stop: that is no failure, and nothing came of it.
        outcome.canceled = !outcome.ok && stopped->load();
        if (shown && --m_running == 0) // a failure is told in an alert by `done`
            m_window.endWork(outcome.canceled ? tr("Stopped; nothing was written.") : QString());
        done(outcome);
    });
    work->start([job](BackgroundJob::Control &control) {
        return QVariant::fromValue(job([&control](int value, int total) {
            control.setProgress(total > 0 ? double(value) / total : 0.0);
        }));
    });
}

void ResultOutputs::cancelAll()
{
    m_canceled->store(true);
}

void ResultOutputs::cancelRunning()
{
    if (m_running == 0)
        return;
    qCInfo(lcTessary, "The work on the result was canceled");
    m_stopped->store(true);
    m_stopped = std::make_shared<std::atomic<bool>>(false);
}

bool ResultOutputs::autoOpen() const
{
    return Preferences(m_defaults).autoOpenStitchedImageFile();
}

void ResultOutputs::tell(const QString &message, const QString &reason)
{
    AlertPresenter::Alert alert;
    alert.messageText = message;
    alert.informativeText = reason;
    alert.style = AlertPresenter::Style::Warning;
    m_alerts.beep();
    m_alerts.presentAlert(alert, {});
}

void ResultOutputs::fail(const Outcome &outcome, const QString &message)
{
    if (!outcome.canceled)
        tell(message, outcome.error);
}

bool ResultOutputs::openFile(const QString &path)
{
    if (m_opener && m_opener(QUrl::fromLocalFile(path)))
        return true;
    tell(tr("No program is set up to open %1 files.").arg(QFileInfo(path).suffix().toUpper()),
         tr("Choose a program for them in your desktop's settings, then try again."));
    return false;
}

void ResultOutputs::openTemporary(const QString &path)
{
    if (openFile(path)) {
        // The viewer may still be reading it: it goes at quit.
        m_temporaryFiles << path;
        emit opened(path);
    } else {
        QFile::remove(path);
    }
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
    m_saveDialog = new ResultSaveDialog(&m_window, m_defaults, format, image.size(), m_window.sharpest());
    connect(m_saveDialog, &SaveFileDialog::targetChosen, this, [this](const QString &path) {
        saveImageToPath(path, m_saveDialog->settings());
    });
    m_saveDialog->open();
}

void ResultOutputs::saveImageToPath(const QString &path, const ResultEncoder::Settings &settings)
{
    const QImage image = m_window.image();
    if (image.isNull() || path.isEmpty())
        return;
    qCInfo(lcTessary, "Saving the result to %s", qUtf8Printable(path));
    run(tr("Saving %1…").arg(QFileInfo(path).fileName()),
        writeJob(image, path, settings),
        [this](const Outcome &o) {
            if (o.ok) {
                m_window.statusBar()->showMessage(tr("Saved %1").arg(QDir::toNativeSeparators(o.path)), 6000);
                if (autoOpen())
                    openFile(o.path);
            } else {
                fail(o, tr("“%1” could not be saved.").arg(QFileInfo(o.path).fileName()));
            }
            emit saved(o.path, o.ok);
        });
}

void ResultOutputs::saveImage(const QImage &image)
{
    if (image.isNull() || m_tiffDialog)
        return;
    auto *dialog = new SaveFileDialog(&m_window, tr("Save as TIFF"), &m_defaults);
    m_tiffDialog = dialog;
    dialog->setObjectName(QStringLiteral("tiffSaveDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->startInLastSaveFolder(QDir::homePath());
    dialog->setNameFilter(ResultFormat::nameFilter("tiff"));
    // Qt adds "tif" to a name without an extension, and the question is about that name.
    dialog->setDefaultSuffix(QStringLiteral("tif"));
    dialog->selectFile(QStringLiteral("Untitled.tif"));
    connect(dialog, &SaveFileDialog::targetChosen, this, [this, image](const QString &path) {
        ResultEncoder::Settings settings;
        settings.format = "tiff";
        settings.tiffCompression = 0;
        run(tr("Saving %1…").arg(QFileInfo(path).fileName()),
            writeJob(image, path, settings),
            [this](const Outcome &o) {
                if (o.ok && autoOpen())
                    openFile(o.path);
                if (!o.ok)
                    fail(o, tr("“%1” could not be saved.").arg(QFileInfo(o.path).fileName()));
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
        [image, canceled = canceled()](const ResultEncoder::Progress &progress) {
            Outcome o;
            o.png = ResultEncoder::png(image, canceled);
            progress(1, 2);
            o.tiff = ResultEncoder::lzwTiff(image, canceled);
            progress(2, 2);
            o.ok = !o.png.isEmpty() && !o.tiff.isEmpty();
            if (!o.ok)
                o.error = QStringLiteral("The picture could not be encoded.");
            return o;
        },
        [this, image](const Outcome &o) {
            if (!o.ok) {
                fail(o, tr("The collage could not be copied."));
                return;
            }
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
        writeJob(image, path, ResultEncoder::Settings()),
        [this](const Outcome &o) {
            if (!o.ok) {
                fail(o, tr("The collage could not be opened in a viewer."));
                return;
            }
            openTemporary(o.path);
        });
}

void ResultOutputs::putImageOnClipboardAndOpenInPreview()
{
    const QImage image = m_window.image();
    if (image.isNull())
        return;
    const QString path = ResultFormat::temporaryPngPath(m_temporaryFolder);
    run(tr("Copying and opening…"),
        [image, path, canceled = canceled()](const ResultEncoder::Progress &progress) {
            Outcome o;
            o.path = path;
            o.png = ResultEncoder::png(image, canceled);
            progress(1, 3);
            o.tiff = ResultEncoder::lzwTiff(image, canceled);
            progress(2, 3);
            o.ok = !o.tiff.isEmpty() && !o.png.isEmpty() && !canceled() && AtomicFileWriter::write(path, o.png, &o.error);
            progress(3, 3);
            return o;
        },
        [this, image](const Outcome &o) {
            if (!o.ok) {
                fail(o, tr("The collage could not be copied and opened."));
                return;
            }
            setClipboard(image, o);
            emit copied();
            openTemporary(o.path);
            if (m_sound)
                m_sound->play();
        });
}

void ResultOutputs::insertResult()
{
    const QImage image = m_window.image();
    if (image.isNull())
        return;
    const QString path = ImagesFolder::newFilePath(QStringLiteral("png"));
    if (path.isEmpty())
        return;
    run(tr("Adding to the photos…"),
        writeJob(image, path, ResultEncoder::Settings()),
        [this](const Outcome &o) {
            if (!o.ok) {
                fail(o, tr("The collage could not be added to the photos."));
                return;
            }
            m_browser.insertImage(o.path, 0);
            emit inserted(o.path);
        });
}

void ResultOutputs::writePendingOutput(const QImage &image, const QString &path)
{
    if (image.isNull() || path.isEmpty())
        return;
    qCInfo(lcTessary, "Writing the result to %s", qUtf8Printable(path));
    run(QString(),
        [image, path, canceled = canceled()](const ResultEncoder::Progress &) {
            Outcome o;
            o.path = path;
            ResultEncoder::Settings settings;
            settings.format = "tiff";
            settings.tiffCompression = 1;
            o.ok = ResultEncoder::writeFile(image, path, settings, &o.error, {}, canceled);
            if (!o.ok && canceled())
                qCInfo(lcTessary, "The result was not written to %s: the program quit first", qUtf8Printable(path));
            else if (!o.ok)
                qCWarning(lcTessary, "The result could not be written to %s: %s", qUtf8Printable(path),
                          qUtf8Printable(o.error));
            return o;
        },
        [this](const Outcome &o) { emit pendingOutputWritten(o.path, o.ok); });
}

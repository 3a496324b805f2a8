#pragma once

#include "output/ResultEncoder.h"

#include "app/MessageBoxAlertPresenter.h"
#include "app/result/ResultSaveDialog.h"

#include <QFileDialog>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>

class CompletionSound;
class ImageBrowserController;
class ResultWindow;
class UserDefaults;

// The five ways out of the result window: save in a chosen format and print size, copy as a
// picture, open in the default viewer, copy and open, and insert into the photo list; plus the
// plain TIFF save of a given picture and the pending output path. Every encode and write runs on
// a worker thread with the window's status bar showing how far it is; the window only waits for
// the answer. A save, copy or open that fails is an alert on the result window with the system's
// reason; a file is only replaced after the save dialog asked. The temporary PNGs handed to the
// viewer are removed when this object goes (at quit), or at once when no program opens them.
class ResultOutputs : public QObject
{
    Q_OBJECT
public:
    // Opens a file with the default application; false when there is none. By default: a
    // program registered for the file's type, through QDesktopServices::openUrl.
    using Opener = std::function<bool(const QUrl &url)>;

    // `defaultImage`: the placeholder picture, the reference for the format when the photo list
    // is empty.
    ResultOutputs(ResultWindow &window, ImageBrowserController &browser, UserDefaults &defaults,
                  CompletionSound *sound, const QString &defaultImage, QObject *parent = nullptr);
    ~ResultOutputs() override;

    void setOpener(Opener opener) { m_opener = std::move(opener); }
    // Where the viewer's temporary PNG goes (the system's temporary folder by default).
    void setTemporaryFolder(const QString &folder) { m_temporaryFolder = folder; }

    // The open save dialog, if any (for tests).
    ResultSaveDialog *saveDialog() const { return m_saveDialog; }
    QFileDialog *tiffSaveDialog() const { return m_tiffDialog; }

public slots:
    // Opens the save dialog, its format starting at the first photo's; nothing when there is
    // no picture or no readable reference photo.
    void save();
    // Writes the picture to `path` with the settings; then opens it when
    // "AutoOpenStitchedImageFile" is YES.
    void saveImageToPath(const QString &path, const ResultEncoder::Settings &settings);
    // Saves the given picture as TIFF through a dialog starting at "Untitled".
    void saveImage(const QImage &image);
    void putImageOnClipboard();
    void openResultInPreview();
    void putImageOnClipboardAndOpenInPreview();
    void insertResult();
    // Writes `image` to `path` as an LZW TIFF (the pending output path).
    void writePendingOutput(const QImage &image, const QString &path);
    // Gives up every write and encode under way, for good (the program is quitting, and does
    // so at once): no file is left of them, their answers never come. Also when the
    // application is about to quit, and when this object goes.
    void cancelAll();
    // The window's Stop beside the bar: the work under way now stops and writes nothing, and
    // is not told as a failure; later work runs as usual.
    void cancelRunning();

signals:
    void saved(const QString &path, bool ok);
    void copied();
    void opened(const QString &path);
    void inserted(const QString &path);
    void pendingOutputWritten(const QString &path, bool ok);

public:
    // A job on the picture, run the way every output here runs (the print outputs use it too).
    struct Outcome {
        bool ok = false;
        QString error;
        QString path;
        QByteArray png;
        QByteArray tiff;
        bool canceled = false; // stopped with the window's Stop (set by run)
    };
    using Job = std::function<Outcome(const ResultEncoder::Progress &progress)>;
    // Runs the job on a worker; `text` in the window's status bar while it runs (none: quietly).
    void run(const QString &text, Job job, std::function<void(const Outcome &)> done);
    // The job of writing `image` to `path` with `settings`: the common work of saving, inserting
    // and handing a file to a viewer.
    Job writeJob(const QImage &image, const QString &path, const ResultEncoder::Settings &settings) const;
    // What a job asks to learn that it is given up (cancelAll, or cancelRunning while it runs).
    ResultEncoder::Canceled canceled() const
    {
        return [quit = m_canceled, stop = m_stopped] { return quit->load() || stop->load(); };
    }

private:
    void setClipboard(const QImage &image, const Outcome &encoded);
    // Opens the file; false (after telling so) when no program opens it.
    bool openFile(const QString &path);
    bool autoOpen() const;
    void tell(const QString &message, const QString &reason);
    // Tells a failed outcome with its reason; one that was stopped is no failure.
    void fail(const Outcome &outcome, const QString &message);
    // Opens a temporary PNG in the viewer; without a program it is told and the file removed.
    void openTemporary(const QString &path);

    ResultWindow &m_window;
    ImageBrowserController &m_browser;
    UserDefaults &m_defaults;
    CompletionSound *m_sound;
    QString m_defaultImage;
    QString m_temporaryFolder;
    Opener m_opener;
    QPointer<ResultSaveDialog> m_saveDialog;
    QPointer<QFileDialog> m_tiffDialog;
    MessageBoxAlertPresenter m_alerts;
    QStringList m_temporaryFiles;
    // The encodes run on threads of their own (see BackgroundJob), apart from the global pool,
    // which Qt's image conversions use and wait for.
    int m_running = 0;
    std::shared_ptr<std::atomic<bool>> m_canceled = std::make_shared<std::atomic<bool>>(false);
    // Set by cancelRunning for the work started before it; work started after gets a new one.
    std::shared_ptr<std::atomic<bool>> m_stopped = std::make_shared<std::atomic<bool>>(false);
};

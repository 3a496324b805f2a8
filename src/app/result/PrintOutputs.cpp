#include "app/result/PrintOutputs.h"

#include "app/result/PageSetupSheet.h"
#include "app/result/ResultOutputs.h"
#include "app/result/ResultWindow.h"
#include "output/PageRenderer.h"
#include "widgets/ConfirmAlert.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPainter>
#include <QPaintEngine>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QStandardPaths>
#include <QStatusBar>
#include <QThread>
#include <QTimer>

// The picture for the page, on a worker: the collage rendered afresh for it, or the window's
// picture resampled. Null, with the reason, when it fails or is stopped.
QImage PrintOutputs::pictureFor(const Job &job, const PagePreset &page, const ResultEncoder::Progress &progress,
                                const std::shared_ptr<std::atomic<bool>> &cancel, QString *error)
{
    QImage picture;
    if (job.layout) {
        CollageRenderer::Options options = job.options;
        options.progress = [&progress](int done, int total) { progress(done, total + 1); };
        options.cancelled = [cancel] { return cancel->load(); };
        // One core stays with the window, so it keeps answering while the page is made.
        options.threads = std::max(1, QThread::idealThreadCount() - 1);
        *error = page.noRoomReason(job.layout->contentSize);
        if (!error->isEmpty())
            return QImage();
        CollageRenderer::Result r = CollageRenderer::renderAtScale(*job.layout, page.scaleFor(job.layout->contentSize), options);
        picture = std::move(r.image);
        *error = r.error;
    } else {
        picture = PageRenderer::resample(job.picture, page);
    }
    if (cancel->load()) {
        *error = QStringLiteral("cancelled");
        return QImage();
    }
    return picture;
}

PrintOutputs::PrintOutputs(ResultWindow &window, ResultOutputs &outputs, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_outputs(outputs)
    , m_printer(QPrinter::HighResolution)
    , m_page(*PagePreset::named(QStringLiteral("A4")))
    , m_cancel(std::make_shared<std::atomic<bool>>(false))
{
    // Painting starts at the paper's corner; the page's own margin keeps the picture off it.
    m_printer.setFullPage(true);
    m_printer.setDocName(QStringLiteral("Collage"));
    m_printer.setCreator(QStringLiteral("Tessary"));
    // The window's Stop beside the bar stops a page under way.
    connect(&m_window, &ResultWindow::workCanceled, this, &PrintOutputs::stop);
    // Quitting stops a page under way rather than waiting for it.
    connect(qApp, &QCoreApplication::aboutToQuit, this, &PrintOutputs::stop);
}

PrintOutputs::~PrintOutputs()
{
    m_cancel->store(true);
}

void PrintOutputs::setCollage(const QImage &picture, const CollageLayout &layout, const CollageRenderer::Options &options)
{
    m_collageKey = picture.cacheKey();
    m_layout = layout;
    m_options = options;
    m_options.progress = {};
    m_options.cancelled = {};
}

PrintOutputs::Job PrintOutputs::job() const
{
    Job j;
    j.picture = m_window.image();
    if (!j.picture.isNull() && j.picture.cacheKey() == m_collageKey) {
        j.layout = m_layout;
        j.options = m_options;
    }
    return j;
}

bool PrintOutputs::busy() const
{
    const auto open = [](QWidget *w) { return w && w->isVisible(); };
    return m_window.image().isNull() || m_window.isWorking() || open(m_sheet) || open(m_fileDialog) ||
           open(m_alert) || open(m_preview);
}

void PrintOutputs::stop()
{
    m_cancel->store(true);
}

void PrintOutputs::exportPdf()
{
    if (busy())
        return;
    m_sheet = new PageSetupSheet(&m_window, m_page, m_window.image().size(), m_window.sharpest());
    connect(m_sheet, &QDialog::accepted, this, [this] {
        m_page = m_sheet->preset();
        // The file dialog opens once the sheet has gone.
        QTimer::singleShot(0, this, &PrintOutputs::askForPdfPath);
    });
    m_sheet->open();
}

void PrintOutputs::askForPdfPath()
{
    m_fileDialog = new QFileDialog(&m_window, tr("Export PDF"));
    m_fileDialog->setObjectName(QStringLiteral("pdfSaveDialog"));
    m_fileDialog->setOption(QFileDialog::DontUseNativeDialog);
    // Replacing is asked below, about the name with its extension.
    m_fileDialog->setOption(QFileDialog::DontConfirmOverwrite);
    m_fileDialog->setAcceptMode(QFileDialog::AcceptSave);
    m_fileDialog->setWindowModality(Qt::WindowModal);
    m_fileDialog->setAttribute(Qt::WA_DeleteOnClose);
    m_fileDialog->setNameFilter(tr("PDF (*.pdf)"));
    m_fileDialog->setDefaultSuffix(QStringLiteral("pdf"));
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    m_fileDialog->setDirectory(!documents.isEmpty() && QDir(documents).exists() ? documents : QDir::homePath());
    m_fileDialog->selectFile(QStringLiteral("Collage.pdf"));
    connect(m_fileDialog, &QFileDialog::fileSelected, this, [this](const QString &file) {
        const QString path = PageRenderer::pdfPath(file);
        if (!QFileInfo::exists(path)) {
            writePdf(path);
            return;
        }
        m_alert = ConfirmAlert::open(&m_window, tr("“%1” already exists.").arg(QFileInfo(path).fileName()),
                                     tr("Do you want to replace it? Its contents will be lost."), tr("Replace"),
                                     [this, path] { writePdf(path); });
        m_alert->setObjectName(QStringLiteral("replacePdfAlert"));
    });
    m_fileDialog->open();
}

void PrintOutputs::writePdf(const QString &path)
{
    if (m_window.image().isNull() || m_window.isWorking())
        return;
    const Job j = job();
    const PagePreset page = m_page;
    const PageRenderer::Document document{QFileInfo(path).completeBaseName()};
    m_cancel = std::make_shared<std::atomic<bool>>(false);
    const std::shared_ptr<std::atomic<bool>> cancel = m_cancel;
    m_outputs.run(
        tr("Making the PDF…"),
        [j, page, path, document, cancel](const ResultEncoder::Progress &progress) {
            ResultOutputs::Outcome o;
            o.path = path;
            const QImage picture = pictureFor(j, page, progress, cancel, &o.error);
            if (!picture.isNull())
                o.ok = PageRenderer::writePdf(picture, page, path, document, &o.error);
            progress(1, 1);
            return o;
        },
        [this, cancel](const ResultOutputs::Outcome &o) {
            finish(tr("The PDF could not be written to “%1”.").arg(QDir::toNativeSeparators(o.path)), o.ok,
                   cancel->load() ? QString() : o.error);
            if (o.ok)
                m_window.statusBar()->showMessage(tr("Saved %1").arg(QDir::toNativeSeparators(o.path)), 6000);
            emit pdfWritten(o.path, o.ok);
        });
}

void PrintOutputs::print()
{
    if (busy())
        return;
    auto *dialog = new QPrintDialog(&m_printer, &m_window);
    dialog->setObjectName(QStringLiteral("printDialog"));
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, &PrintOutputs::printNow);
    dialog->open();
}

void PrintOutputs::printPreview()
{
    if (busy())
        return;
    m_preview = new QPrintPreviewDialog(&m_printer, &m_window);
    m_preview->setObjectName(QStringLiteral("printPreview"));
    m_preview->setWindowModality(Qt::WindowModal);
    m_preview->setAttribute(Qt::WA_DeleteOnClose);
    m_preview->resize(900, 760);
    connect(m_preview, &QPrintPreviewDialog::paintRequested, this, [this](QPrinter *printer) {
        // The preview draws the window's copy where the page will have it; printing from the
        // preview renders the page on a worker like Print… does, once the dialog has returned.
        const bool previewing = printer->paintEngine() && printer->paintEngine()->type() == QPaintEngine::Picture;
        if (!previewing) {
            QTimer::singleShot(0, this, &PrintOutputs::printNow);
            return;
        }
        const PagePreset page = PagePreset::ofPageLayout(printer->pageLayout(), m_page.dotsPerInch());
        QPainter painter(printer);
        PageRenderer::paint(painter, m_window.image(), page, printer->resolution());
    });
    m_preview->open();
}

void PrintOutputs::printNow()
{
    if (m_window.image().isNull() || m_window.isWorking())
        return;
    const Job j = job();
    // The printer's page and orientation, at the chosen resolution (no finer than the printer's).
    const PagePreset page = PagePreset::ofPageLayout(
        m_printer.pageLayout(), std::min<double>(m_page.dotsPerInch(), m_printer.resolution()));
    QPrinter *printer = &m_printer; // untouched by this thread until the job ends (the outputs wait)
    m_cancel = std::make_shared<std::atomic<bool>>(false);
    const std::shared_ptr<std::atomic<bool>> cancel = m_cancel;
    m_outputs.run(
        tr("Printing…"),
        [j, page, printer, cancel](const ResultEncoder::Progress &progress) {
            ResultOutputs::Outcome o;
            const QImage picture = pictureFor(j, page, progress, cancel, &o.error);
            if (picture.isNull())
                return o;
            QPainter painter;
            if (!painter.begin(printer)) {
                o.error = QStringLiteral("the printer could not be started");
                return o;
            }
            PageRenderer::paint(painter, picture, page, printer->resolution());
            o.ok = painter.end();
            if (!o.ok)
                o.error = QStringLiteral("the printer did not take the page");
            progress(1, 1);
            return o;
        },
        [this, cancel](const ResultOutputs::Outcome &o) {
            finish(tr("The collage could not be printed."), o.ok, cancel->load() ? QString() : o.error);
            emit printed(o.ok);
        });
}

void PrintOutputs::finish(const QString &what, bool ok, const QString &error)
{
    if (ok)
        return;
    if (error.isEmpty()) {
        m_window.statusBar()->showMessage(tr("Stopped"), 6000);
        return;
    }
    showAlert(what, error);
}

void PrintOutputs::showAlert(const QString &message, const QString &informative)
{
    auto *box = new QMessageBox(QMessageBox::Warning, message, message, QMessageBox::Ok, &m_window);
    box->setObjectName(QStringLiteral("pageFailedAlert"));
    QString reason = informative;
    if (!reason.isEmpty())
        reason[0] = reason[0].toUpper();
    box->setInformativeText(reason + QLatin1Char('.'));
    box->setWindowModality(Qt::WindowModal);
    box->setAttribute(Qt::WA_DeleteOnClose);
    m_alert = box;
    box->open();
}

#pragma once

#include "output/PagePreset.h"
#include "model/CollageLayout.h"
#include "model/CollageRenderer.h"
#include "output/ResultEncoder.h"

#include <QObject>
#include <QPointer>
#include <QPrinter>

#include <atomic>
#include <memory>
#include <optional>

#include "app/result/PageSetupSheet.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPrintPreviewDialog>

class ResultOutputs;
class ResultWindow;

// The result on paper: Export PDF… (a page chosen in a sheet, then a file) and Print… (Qt's
// print dialog, with a print preview). Both render the collage afresh at the pixels the page
// needs, not the window's copy, on a worker through the result outputs' jobs, the status bar
// showing how far it is and a Stop button beside it. A result that is not a collage made from
// a layout (a blend) is resampled instead.
class PrintOutputs : public QObject
{
    Q_OBJECT
public:
    PrintOutputs(ResultWindow &window, ResultOutputs &outputs, QObject *parent = nullptr);
    ~PrintOutputs() override;

    // The layout and render options `picture` was made from; while the window shows that
    // picture, pages are rendered from them.
    void setCollage(const QImage &picture, const CollageLayout &layout, const CollageRenderer::Options &options);

    QPrinter &printer() { return m_printer; }
    PagePreset lastPage() const { return m_page; }
    // The open sheets and dialogs, if any (for tests).
    PageSetupSheet *pageSheet() const { return m_sheet; }
    QFileDialog *pdfDialog() const { return m_fileDialog; }
    QMessageBox *alert() const { return m_alert; }
    QPrintPreviewDialog *preview() const { return m_preview; }

public slots:
    // Export PDF…: the page sheet, then the file dialog, then (for an existing file) the
    // question whether to replace it.
    void exportPdf();
    // Writes the PDF of the current page setup to `path`, replacing any file there.
    void writePdf(const QString &path);
    // Print…: Qt's print dialog, then the printing.
    void print();
    // Print Preview…: the pages as the printer will have them, drawn from the window's copy.
    void printPreview();
    // Prints on the printer as it is set up now.
    void printNow();
    // Stops the page being made; nothing is written.
    void stop();

signals:
    void pdfWritten(const QString &path, bool ok);
    void printed(bool ok);

private:
    struct Job {
        QImage picture;
        std::optional<CollageLayout> layout;
        CollageRenderer::Options options;
    };
    Job job() const;
    static QImage pictureFor(const Job &job, const PagePreset &page, const ResultEncoder::Progress &progress,
                             const std::shared_ptr<std::atomic<bool>> &cancel, QString *error);
    bool busy() const;
    void askForPdfPath();
    void finish(const QString &what, bool ok, const QString &error);
    void showAlert(const QString &message, const QString &informative);

    ResultWindow &m_window;
    ResultOutputs &m_outputs;
    QPrinter m_printer;
    PagePreset m_page;
    qint64 m_collageKey = 0;
    CollageLayout m_layout;
    CollageRenderer::Options m_options;
    std::shared_ptr<std::atomic<bool>> m_cancel;
    QPointer<PageSetupSheet> m_sheet;
    QPointer<QFileDialog> m_fileDialog;
    QPointer<QMessageBox> m_alert;
    QPointer<QPrintPreviewDialog> m_preview;
};

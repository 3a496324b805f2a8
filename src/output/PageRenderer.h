#pragma once

#include "output/PagePreset.h"

#include <QImage>
#include <QString>

class QPainter;

// Puts a picture on a page: places it by the page's fit rule and paints the page onto a PDF
// file or a printer. A collage is rendered afresh for the page by its caller, at the page's
// scale (PagePreset::scaleFor); a picture without a layout (a blended result) is resampled to
// the same size here.
//
// Everything here may run on a worker thread: QPdfWriter and QPrinter may be painted on there.
class PageRenderer
{
public:
    struct Document {
        QString title;
        QString creator = QStringLiteral("Tessary");
    };

    // A finished picture resampled to the page's render size for it.
    static QImage resample(const QImage &picture, const PagePreset &page);

    // Paints `picture` (rendered for `page`) onto a painter whose device is the whole page at
    // `deviceDotsPerInch` (its origin the paper's corner); a picture of another size, such as
    // the window's copy for a preview, is stretched to the same place.
    static void paint(QPainter &painter, const QImage &picture, const PagePreset &page, double deviceDotsPerInch);

    // The whole page as a picture at its resolution: white paper with `picture` painted on it,
    // the resolution recorded for the file.
    static QImage pageImage(const QImage &picture, const PagePreset &page);

    // The path a PDF is written to: as chosen, with ".pdf" added when it does not end so.
    static QString pdfPath(const QString &chosen);

    // Writes a one-page PDF of the page at its resolution, the picture embedded at its own
    // pixels, with the document's title and creator. Atomic: a failure leaves any earlier file
    // in place and says why.
    static bool writePdf(const QImage &picture, const PagePreset &page, const QString &path, const Document &document,
                         QString *error = nullptr);
};

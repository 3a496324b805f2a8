#include "editor/EditDocument.h"
#include "editor/EditOperation.h"
#include "output/JpegQuality.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <QImageWriter>

#include <benchmark/benchmark.h>

namespace {

// A 24-megapixel (6000 x 4000) photo-like picture, made once.
const QImage &photo24()
{
    static const QImage image = [] {
        QImage img(6000, 4000, QImage::Format_RGB32);
        for (int y = 0; y < img.height(); ++y) {
            auto *line = reinterpret_cast<QRgb *>(img.scanLine(y));
            for (int x = 0; x < img.width(); ++x)
                line[x] = qRgb(x * 255 / img.width(), y * 255 / img.height(), ((x / 37 + y / 23) % 7) * 36);
        }
        return img;
    }();
    return image;
}

// Each edit of the image editor at full size on a 24 MP photo (what runs on the worker thread).
void BM_EditOperation24MP(benchmark::State &state)
{
    const QImage &photo = photo24();
    Annotation caption;
    caption.kind = Annotation::Text;
    caption.width = 20;
    caption.text = QStringLiteral("Spring in the garden");
    caption.points = {QPointF(400, 3200)};
    const EditOperation ops[] = {EditOperation::cropTo(QRect(500, 400, 4000, 3000)),
                                 EditOperation::turn(EditOperation::TurnRight), EditOperation::straighten(3.5),
                                 EditOperation::annotate({caption})};
    const EditOperation &op = ops[state.range(0)];
    for (auto _ : state)
        benchmark::DoNotOptimize(op.apply(photo));
    state.SetLabel(op.name().toStdString());
}
BENCHMARK(BM_EditOperation24MP)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

// Undo then redo of a straightening on a 24 MP photo: both come from remembered steps, so
// neither turns the picture again.
void BM_UndoRedoStraighten24MP(benchmark::State &state)
{
    EditDocument document;
    document.setSynchronousPixelLimit(qint64(1) << 40); // at once, so the loop measures the work
    document.setSource(photo24());
    document.setOperation(0, EditOperation::straighten(3.5));
    for (auto _ : state) {
        document.setCount(0);
        document.setCount(1);
    }
    benchmark::DoNotOptimize(document.image());
}
BENCHMARK(BM_UndoRedoStraighten24MP)->Unit(benchmark::kMicrosecond);

// The JPEG quality estimate of a save's options, read from a camera-sized file's tables.
void BM_JpegQualityEstimate(benchmark::State &state)
{
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(87);
    writer.write(photo24().copy(0, 0, 1200, 800));
    for (auto _ : state)
        benchmark::DoNotOptimize(JpegQuality::estimate(jpeg));
}
BENCHMARK(BM_JpegQualityEstimate);

} // namespace

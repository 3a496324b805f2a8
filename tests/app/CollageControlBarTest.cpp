#include "CollageFixture.h"

#include "foundation/Preferences.h"

#include <QColorDialog>
#include <QComboBox>
#include <QPainter>
#include <QSpinBox>

namespace {

using CollageControlBarTest = CollageFixture;

// The spacing controls write their keys and lay the collage out again; the spacing type and
// the frame style reach every tile.
TEST_F(CollageControlBarTest, SpacingAndFrameStyleRelayOut)
{
    const QRect before = view->tileWithTag(0)->geometry();
    const struct {
        QSpinBox *box;
        const QString key;
    } spins[] = {{bar->widthSpacing(), Preferences::CollageWidthIncrement},
                 {bar->heightSpacing(), Preferences::CollageHeightIncrement}};
    for (const auto &s : spins) {
        EXPECT_EQ(s.box->value(), 5);
        s.box->setValue(30);
        EXPECT_EQ(defaults->integerForKey(s.key), 30) << qPrintable(s.key);
    }
    const QRect inset = view->tileWithTag(0)->geometry();
    EXPECT_LT(inset.width(), before.width());
    EXPECT_LT(inset.height(), before.height());

    bar->spacingTypePopUp()->setCurrentIndex(1);
    EXPECT_EQ(view->spacingType(), 1);
    EXPECT_GT(view->tileWithTag(0)->width(), before.width());

    EXPECT_EQ(bar->imageFrameStylePopUp()->count(), 5);
    EXPECT_EQ(bar->imageFrameStylePopUp()->itemText(2), QStringLiteral("Grey Bezel"));
    for (int style = 0; style < 5; ++style) {
        bar->imageFrameStylePopUp()->setCurrentIndex(style);
        for (TessaryDataView *tile : view->tiles())
            ASSERT_EQ(tile->imageView()->imageFrameStyle(), style);
    }
}

// Each image frame style draws its own recognisable frame around the photo (saved side by side
// for a person to look at): the edge of the photo differs from the unframed one and from the
// other styles.
TEST_F(CollageControlBarTest, EachFrameStyleIsDrawn)
{
    view->setFixedSize(900, 700);
    QList<QImage> shots;
    for (int style = 0; style < 5; ++style) {
        bar->imageFrameStylePopUp()->setCurrentIndex(style);
        ASSERT_TRUE(waitFilled());
        shots.append(view->tileWithTag(1)->grab().toImage());
    }
    QImage strip(shots[0].width() * 5 + 40, shots[0].height(), QImage::Format_RGB32);
    strip.fill(Qt::white);
    {
        QPainter p(&strip);
        for (int i = 0; i < 5; ++i)
            p.drawImage(i * (shots[0].width() + 10), 0, shots[i]);
    }
    ASSERT_TRUE(strip.save(QStringLiteral(TESSARY_BINARY_DIR "/collage-frame-styles.png")));
    const auto edge = [](const QImage &image) {
        QList<QRgb> pixels;
        for (int y = 2; y < image.height() - 2; y += 3)
            pixels << image.pixel(1, y) << image.pixel(image.width() - 2, y) << image.pixel(y, image.height() - 2);
        return pixels;
    };
    for (int a = 0; a < 5; ++a)
        for (int b = a + 1; b < 5; ++b)
            EXPECT_NE(edge(shots[a]), edge(shots[b])) << "styles " << a << " and " << b;
}

// The colour well opens Qt's colour dialog on the window, opaque even from the clear colour;
// a colour picked by its red, green and blue alone fills the collage behind the tiles, and
// Clear takes it away.
TEST_F(CollageControlBarTest, BackgroundColourWellAndClear)
{
    ASSERT_EQ(view->tessaryBackgroundColor().alpha(), 0);
    bar->backgroundColorWell()->click();
    auto *dialog = window->findChild<QColorDialog *>(QStringLiteral("tessaryBackgroundColorDialog"));
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    EXPECT_EQ(dialog->currentColor().alpha(), 255);
    // As a person types into the red, green and blue fields, leaving alpha alone.
    QColor picked = dialog->currentColor();
    picked.setRgb(200, 30, 40, picked.alpha());
    dialog->setCurrentColor(picked);
    dialog->accept();
    EXPECT_EQ(view->tessaryBackgroundColor(), QColor(200, 30, 40));
    const QImage document = view->documentView()->grab().toImage();
    EXPECT_EQ(document.pixelColor(1, 1).rgb(), QColor(200, 30, 40).rgb());

    bar->clearBackgroundButton()->click();
    EXPECT_EQ(view->tessaryBackgroundColor().alpha(), 0);
}

} // namespace

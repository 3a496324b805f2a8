#include "CollageFixture.h"

#include "foundation/Preferences.h"

#include <QColorDialog>
#include <QComboBox>
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

// The colour well opens Qt's colour dialog on the window; the chosen colour fills the
// collage behind the tiles, and Clear takes it away.
TEST_F(CollageControlBarTest, BackgroundColourWellAndClear)
{
    bar->backgroundColorWell()->click();
    auto *dialog = window->findChild<QColorDialog *>(QStringLiteral("tessaryBackgroundColorDialog"));
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->windowModality(), Qt::WindowModal);
    dialog->setCurrentColor(QColor(200, 30, 40));
    dialog->accept();
    EXPECT_EQ(view->tessaryBackgroundColor(), QColor(200, 30, 40));
    const QImage document = view->documentView()->grab().toImage();
    EXPECT_EQ(document.pixelColor(1, 1).rgb(), QColor(200, 30, 40).rgb());

    bar->clearBackgroundButton()->click();
    EXPECT_EQ(view->tessaryBackgroundColor().alpha(), 0);
}

} // namespace

#include "app/collage/CollageControlBar.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "model/CoordinateTransform.h"
#include "widgets/DelayedPopupMenuButton.h"
#include "widgets/FlowLayout.h"
#include "app/collage/TessaryView.h"

#include <QButtonGroup>
#include <QColorDialog>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>

namespace {

// A swatch of the colour; a clear colour shows as a small chequerboard.
QIcon swatch(const QColor &color)
{
    QPixmap pixmap(28, 16);
    pixmap.fill(Qt::white);
    QPainter p(&pixmap);
    if (color.alpha() < 255) {
        for (int y = 0; y < 16; y += 4)
            for (int x = 0; x < 28; x += 4)
                if (((x + y) / 4) % 2 == 0)
                    p.fillRect(x, y, 4, 4, QColor(200, 200, 200));
    }
    p.fillRect(pixmap.rect(), color);
    p.setPen(QColor(120, 120, 120));
    p.drawRect(pixmap.rect().adjusted(0, 0, -1, -1));
    return QIcon(pixmap);
}

} // namespace

struct CollageControlBar::Private {
    Private(TessaryView &view, UserDefaults &defaults)
        : view(view)
        , defaults(defaults)
    {
    }
    TessaryView &view;
    UserDefaults &defaults;
    QButtonGroup *transforms = nullptr;
    QLabel *transformName = nullptr;
    QComboBox *spacingType = nullptr;
    QComboBox *frameStyle = nullptr;
    QSpinBox *width = nullptr;
    QSpinBox *height = nullptr;
    QPushButton *jumble = nullptr;
    QPushButton *undoJumble = nullptr;
    QPushButton *unjumble = nullptr;
    QToolButton *colorWell = nullptr;
    QToolButton *blendColorWell = nullptr;
    QColor blendColor = Qt::white;
    QToolButton *clearColor = nullptr;
    DelayedPopupMenuButton *blend = nullptr;
};

CollageControlBar::CollageControlBar(TessaryView &view, UserDefaults &defaults, QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(view, defaults))
{
    // Groups of controls that wrap as units onto as many lines as the width needs, so the bar
    // stays whole under a collage in a narrow window: how the tiles are laid out, then what is
    // done to them.
    auto *flow = new FlowLayout(this, 14, 4);
    flow->setContentsMargins(8, 4, 8, 6);
    const auto group = [flow](int spacing = 6) {
        auto *box = new QWidget;
        auto *layout = new QHBoxLayout(box);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(spacing);
        flow->addWidget(box);
        return layout;
    };
    QHBoxLayout *row = group();

    // The transform segments, in value order, and the name of the chosen one.
    d->transforms = new QButtonGroup(this);
    d->transforms->setExclusive(true);
    static const char *const symbols[] = {"\u25A1", "\u2194", "\u2195", "\u21BA", "\u21BB"};
    auto *segments = new QHBoxLayout;
    segments->setSpacing(0);
    for (int i = 0; i < CoordinateTransform::kCount; ++i) {
        auto *b = new QToolButton;
        b->setText(QString::fromUtf8(symbols[i]));
        b->setToolTip(CoordinateTransform::name(i));
        b->setCheckable(true);
        b->setAutoRaise(false);
        b->setMinimumWidth(28);
        d->transforms->addButton(b, i);
        segments->addWidget(b);
    }
    d->transforms->button(0)->setChecked(true);
    row->addLayout(segments);
    d->transformName = new QLabel(CoordinateTransform::name(0));
    d->transformName->setMinimumWidth(fontMetrics().horizontalAdvance(CoordinateTransform::name(1)) + 8);
    row->addWidget(d->transformName);
    connect(d->transforms, &QButtonGroup::idClicked, &view, &TessaryView::setCoordinateTransform);
    connect(&view, &TessaryView::coordinateTransformChanged, this, [this](int transform, const QString &name) {
        if (QAbstractButton *b = d->transforms->button(transform))
            b->setChecked(true);
        d->transformName->setText(name);
    });

    row = group();
    d->spacingType = new QComboBox;
    d->spacingType->addItems({tr("Inset"), tr("Outset")});
    d->spacingType->setToolTip(tr("Inset leaves gaps between the tiles; Outset makes them overlap"));
    connect(d->spacingType, &QComboBox::currentIndexChanged, &view, &TessaryView::setSpacingType);
    row->addWidget(d->spacingType);

    const Preferences prefs(defaults);
    const auto spin = [this, row, &view](const QString &label, const QString &key, double value, const QString &tip) {
        auto *caption = new QLabel(label);
        auto *box = new QSpinBox;
        box->setRange(0, 100);
        box->setSuffix(QStringLiteral(" %"));
        box->setValue(int(value));
        box->setToolTip(tip);
        caption->setBuddy(box);
        row->addWidget(caption);
        row->addWidget(box);
        connect(box, &QSpinBox::valueChanged, this, [this, key, &view](int v) {
            d->defaults.setInteger(v, key);
            view.reloadData();
        });
        return box;
    };
    d->width = spin(tr("W:"), Preferences::CollageWidthIncrement, prefs.collageWidthIncrement(),
                    tr("Horizontal spacing of the tiles"));
    d->height = spin(tr("H:"), Preferences::CollageHeightIncrement, prefs.collageHeightIncrement(),
                     tr("Vertical spacing of the tiles"));

    row = group();
    d->frameStyle = new QComboBox;
    d->frameStyle->addItems({tr("None"), tr("Photo"), tr("Grey Bezel"), tr("Groove"), tr("Button")});
    d->frameStyle->setToolTip(tr("Frame drawn around every photo"));
    connect(d->frameStyle, &QComboBox::currentIndexChanged, &view, &TessaryView::setImageFrameStyle);
    row->addWidget(d->frameStyle);

    QHBoxLayout *actions = group();
    d->jumble = new QPushButton(tr("Jumble"));
    d->jumble->setToolTip(tr("Scatter the tiles over the collage"));
    d->undoJumble = new QPushButton(tr("Undo Jumble"));
    d->undoJumble->setToolTip(tr("Swap between the scattered and the previous places"));
    d->unjumble = new QPushButton(tr("Unjumble"));
    d->unjumble->setToolTip(tr("Put every tile back in its place"));
    for (QPushButton *b : {d->jumble, d->undoJumble, d->unjumble}) {
        b->setAutoDefault(false);
        actions->addWidget(b);
    }
    connect(d->jumble, &QPushButton::clicked, this, &CollageControlBar::jumble);
    connect(d->undoJumble, &QPushButton::clicked, this, &CollageControlBar::undoJumble);
    connect(d->unjumble, &QPushButton::clicked, this, &CollageControlBar::unjumble);
    const auto showJumbled = [this](bool jumbled) {
        d->undoJumble->setEnabled(jumbled);
        d->unjumble->setEnabled(jumbled);
        emit jumbleActionsEnabledChanged(jumbled);
    };
    showJumbled(view.isJumbled());
    connect(&view, &TessaryView::jumbledChanged, this, showJumbled);

    actions = group();
    d->blend = new DelayedPopupMenuButton(tr("Blend"));
    d->blend->setObjectName(QStringLiteral("blendButton"));
    d->blend->setToolTip(tr("Press for the blend commands: join the photos into one seamless picture"));
    actions->addWidget(d->blend);
    d->blendColorWell = new QToolButton;
    d->blendColorWell->setObjectName(QStringLiteral("blendBackgroundColorWell"));
    d->blendColorWell->setToolTip(tr("Blend background colour: fills the margin around a blended picture"));
    d->blendColorWell->setIconSize(QSize(20, 16));
    d->blendColorWell->setIcon(swatch(d->blendColor));
    actions->addWidget(d->blendColorWell);
    connect(d->blendColorWell, &QToolButton::clicked, this, &CollageControlBar::chooseBlendBackgroundColor);

    actions = group();
    auto *background = new QLabel(tr("Background:"));
    actions->addWidget(background);
    d->colorWell = new QToolButton;
    d->colorWell->setToolTip(tr("Collage background colour"));
    d->colorWell->setIconSize(QSize(28, 16));
    d->clearColor = new QToolButton;
    d->clearColor->setText(tr("Clear"));
    d->clearColor->setToolTip(tr("No background colour"));
    actions->addWidget(d->colorWell);
    actions->addWidget(d->clearColor);
    connect(d->colorWell, &QToolButton::clicked, this, &CollageControlBar::chooseBackgroundColor);
    connect(d->clearColor, &QToolButton::clicked, this, &CollageControlBar::clearTessaryBackgroundColor);
    showBackgroundColor(view.tessaryBackgroundColor());
    connect(&view, &TessaryView::tessaryBackgroundColorChanged, this, &CollageControlBar::showBackgroundColor);

    actions = group();
    m_resultButton = new QPushButton(tr("Make Collage"));
    m_resultButton->setObjectName(QStringLiteral("resultButton"));
    m_resultButton->setToolTip(tr("Render the collage at full size and show it in the result window (Ctrl+R)"));
    m_resultButton->setAutoDefault(false);
    QFont strong = m_resultButton->font();
    strong.setBold(true);
    m_resultButton->setFont(strong);
    actions->addWidget(m_resultButton);
}

QAbstractButton *CollageControlBar::resultButton() const { return m_resultButton; }

CollageControlBar::~CollageControlBar() = default;

QButtonGroup *CollageControlBar::transformGroup() const { return d->transforms; }
QLabel *CollageControlBar::transformNameLabel() const { return d->transformName; }
QComboBox *CollageControlBar::spacingTypePopUp() const { return d->spacingType; }
QComboBox *CollageControlBar::imageFrameStylePopUp() const { return d->frameStyle; }
QSpinBox *CollageControlBar::widthSpacing() const { return d->width; }
QSpinBox *CollageControlBar::heightSpacing() const { return d->height; }
QAbstractButton *CollageControlBar::jumbleButton() const { return d->jumble; }
QAbstractButton *CollageControlBar::undoJumbleButton() const { return d->undoJumble; }
QAbstractButton *CollageControlBar::unjumbleButton() const { return d->unjumble; }
QAbstractButton *CollageControlBar::backgroundColorWell() const { return d->colorWell; }
QAbstractButton *CollageControlBar::clearBackgroundButton() const { return d->clearColor; }
DelayedPopupMenuButton *CollageControlBar::blendButton() const { return d->blend; }
QAbstractButton *CollageControlBar::blendBackgroundColorWell() const { return d->blendColorWell; }
QColor CollageControlBar::blendBackgroundColor() const { return d->blendColor; }

void CollageControlBar::jumble() { d->view.jumble(); }
void CollageControlBar::undoJumble() { d->view.undojumble(); }
void CollageControlBar::unjumble() { d->view.unjumble(); }

void CollageControlBar::chooseBackgroundColor()
{
    // The clear colour (no background) starts the dialog as opaque white: picking a colour
    // then shows it, instead of keeping the clear colour's alpha of 0.
    QColor start = d->view.tessaryBackgroundColor();
    if (start.alpha() == 0)
        start = Qt::white;
    auto *dialog = new QColorDialog(start, this);
    dialog->setObjectName(QStringLiteral("tessaryBackgroundColorDialog"));
    dialog->setOption(QColorDialog::DontUseNativeDialog);
    dialog->setOption(QColorDialog::ShowAlphaChannel);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QColorDialog::colorSelected, &d->view, &TessaryView::setTessaryBackgroundColor);
    dialog->open();
}

void CollageControlBar::chooseBlendBackgroundColor()
{
    auto *dialog = new QColorDialog(d->blendColor, this);
    dialog->setObjectName(QStringLiteral("blendBackgroundColorDialog"));
    dialog->setOption(QColorDialog::DontUseNativeDialog);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QColorDialog::colorSelected, this, &CollageControlBar::setBlendBackgroundColor);
    dialog->open();
}

void CollageControlBar::setBlendBackgroundColor(const QColor &color)
{
    if (!color.isValid() || color == d->blendColor)
        return;
    d->blendColor = color;
    d->blendColorWell->setIcon(swatch(color));
    emit blendBackgroundColorChanged(color);
}

void CollageControlBar::clearTessaryBackgroundColor()
{
    d->view.setTessaryBackgroundColor(Qt::transparent);
}

void CollageControlBar::showBackgroundColor(const QColor &color)
{
    d->colorWell->setIcon(swatch(color));
}

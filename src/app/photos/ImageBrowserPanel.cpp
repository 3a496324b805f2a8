#include "app/photos/ImageBrowserPanel.h"

#include "foundation/AlertPresenter.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "photos/ImageBrowserSelection.h"
#include "photos/ImageCache.h"
#include "photos/ImageCacheLoader.h"
#include "app/photos/ImageBrowserListView.h"
#include "app/photos/ImageBrowserModel.h"
#include "app/photos/PhotoPreview.h"

#include <QClipboard>
#include <QComboBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScrollBar>
#include <QSlider>
#include <QStandardPaths>
#include <QUrl>
#include <QVBoxLayout>

struct ImageBrowserPanel::Private {
    Private(ImageBrowserController &c, ImageCacheLoader &l, UserDefaults &d)
        : controller(c)
        , loader(l)
        , defaults(d)
    {
    }

    ImageBrowserController &controller;
    ImageCacheLoader &loader;
    UserDefaults &defaults;
    ImageBrowserModel *model = nullptr;
    ImageBrowserListView *grid = nullptr;
    PhotoPreview *preview = nullptr;
    QLabel *imageLabel = nullptr;
    QComboBox *alignment = nullptr;
    QPushButton *centerAll = nullptr;
    QPushButton *fitAll = nullptr;
    QLineEdit *number = nullptr;
    QSlider *zoom = nullptr;
    QPushButton *insertBlank = nullptr;
    QMenu *menu = nullptr;
    // The photo the preview waits for, while the cache decodes it.
    QString previewPath;
    // Set while the grid follows the controller, so the grid's own selection signals are not
    // taken for the user's.
    bool following = false;
    int scrollBeforeReset = 0;
};

QStringList ImageBrowserPanel::alignmentTitles()
{
    return {tr("Fill, Centered"), tr("Fill, Keep Top or Left"), tr("Fill, Keep Bottom or Right"),
            tr("Fit Whole Photo"), tr("Fill, Smart")};
}

ImageBrowserPanel::ImageBrowserPanel(ImageBrowserController &controller, ImageCacheLoader &loader,
                                     UserDefaults &defaults, QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(controller, loader, defaults))
{
    d->model = new ImageBrowserModel(controller, loader, this);
    d->grid = new ImageBrowserListView(controller, this);
    d->grid->setObjectName(QStringLiteral("imageBrowserGrid"));
    d->grid->setModel(d->model);
    d->model->setRowVisibility([grid = d->grid, model = d->model](int row) {
        return grid->visualRect(model->index(row)).intersects(grid->viewport()->rect());
    });
    d->grid->setContextMenuPolicy(Qt::CustomContextMenu);
    d->grid->setMinimumSize(2 * kSmallestIcon + 40, kSmallestIcon + 80);

    d->zoom = new QSlider(Qt::Horizontal, this);
    d->zoom->setObjectName(QStringLiteral("zoomSlider"));
    d->zoom->setRange(0, kZoomSteps);
    d->zoom->setToolTip(tr("Thumbnail size"));
    auto *smaller = new QLabel(QStringLiteral("▫"), this);
    auto *larger = new QLabel(QStringLiteral("◻"), this);
    for (QLabel *l : {smaller, larger})
        l->setForegroundRole(QPalette::PlaceholderText);

    d->preview = new PhotoPreview(this);
    d->preview->setObjectName(QStringLiteral("imagePreview"));
    d->preview->setToolTip(tr("The selected photo"));

    d->imageLabel = new QLabel(QStringLiteral(" "), this);
    d->imageLabel->setObjectName(QStringLiteral("imageLabel"));
    QFont bold = d->imageLabel->font();
    bold.setBold(true);
    d->imageLabel->setFont(bold);

    d->number = new QLineEdit(this);
    d->number->setObjectName(QStringLiteral("imageNumber"));
    d->number->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]{0,9}")), d->number));
    d->number->setPlaceholderText(QStringLiteral("#"));
    d->number->setMaximumWidth(64);
    d->number->setAlignment(Qt::AlignRight);
    d->number->setToolTip(tr("Type a photo's number and press Enter to select it"));
    auto *numberLabel = new QLabel(tr("Go to:"), this);
    numberLabel->setBuddy(d->number);

    d->alignment = new QComboBox(this);
    d->alignment->setObjectName(QStringLiteral("imageAlignment"));
    const QStringList titles = alignmentTitles();
    const QStringList tips = {tr("Fill the tile, cropping both sides equally"),
                              tr("Fill the tile, keeping the top or left end of the photo"),
                              tr("Fill the tile, keeping the bottom or right end of the photo"),
                              tr("Show the whole photo inside the tile"),
                              tr("Fill the tile, keeping the photo's subject (found from its content)")};
    for (int i = 0; i < titles.size(); ++i) {
        d->alignment->addItem(titles[i]);
        d->alignment->setItemData(i, tips[i], Qt::ToolTipRole);
    }
    d->alignment->setToolTip(tr("How the selected photo fills its tile"));
    auto *alignmentLabel = new QLabel(tr("Alignment:"), this);
    alignmentLabel->setBuddy(d->alignment);

    d->centerAll = new QPushButton(tr("Center All"), this);
    d->centerAll->setObjectName(QStringLiteral("centerAll"));
    d->centerAll->setToolTip(tr("Every photo fills its tile, centred"));
    d->fitAll = new QPushButton(tr("Fit All"), this);
    d->fitAll->setObjectName(QStringLiteral("fitAll"));
    d->fitAll->setToolTip(tr("Every photo is shown whole inside its tile"));
    d->insertBlank = new QPushButton(tr("Insert Blank Image"), this);
    d->insertBlank->setObjectName(QStringLiteral("insertBlankImage"));
    d->insertBlank->setToolTip(tr("Insert a blank image before the selected photo"));

    auto *zoomRow = new QHBoxLayout;
    zoomRow->setSpacing(4);
    zoomRow->addWidget(smaller);
    zoomRow->addWidget(d->zoom, 1);
    zoomRow->addWidget(larger);

    auto *details = new QGridLayout;
    details->setHorizontalSpacing(8);
    details->setVerticalSpacing(6);
    details->addWidget(d->imageLabel, 0, 0, 1, 2);
    auto *numberRow = new QHBoxLayout;
    numberRow->addStretch(1);
    numberRow->addWidget(numberLabel);
    numberRow->addWidget(d->number);
    details->addLayout(numberRow, 0, 2, 1, 2);
    details->addWidget(alignmentLabel, 1, 0);
    details->addWidget(d->alignment, 1, 1, 1, 3);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(d->centerAll);
    buttons->addWidget(d->fitAll);
    buttons->addStretch(1);
    buttons->addWidget(d->insertBlank);
    details->addLayout(buttons, 2, 0, 1, 4);
    details->setColumnStretch(1, 1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(6);
    layout->addWidget(d->grid, 1);
    layout->addLayout(zoomRow);
    layout->addSpacing(4);
    layout->addWidget(d->preview);
    layout->addLayout(details);

    d->menu = new QMenu(this);
    d->menu->addAction(tr("Reveal in File Manager"), this, &ImageBrowserPanel::selectInFinder)
        ->setObjectName(QStringLiteral("contextSelectInFinder"));
    d->menu->addAction(tr("Open"), this, &ImageBrowserPanel::doOpen)->setObjectName(QStringLiteral("contextOpen"));
    d->menu->addAction(tr("Duplicate"), this, &ImageBrowserPanel::doDuplicate)
        ->setObjectName(QStringLiteral("contextDuplicate"));
    d->menu->addSeparator();
    d->menu->addAction(tr("Remove Photo"), this, &ImageBrowserPanel::removeSelectedPhoto)
        ->setObjectName(QStringLiteral("contextRemovePhoto"));

    // The controller's list, selection and preview drive the panel...
    connect(&controller, &ImageBrowserController::browserReloaded, this, &ImageBrowserPanel::browserReloaded);
    connect(&controller.selection(), &ImageBrowserSelection::selectionChanged, this,
            [this](qsizetype index) {
                showSelection(index, true);
                enableSelectionControls();
            });
    connect(&controller, &ImageBrowserController::previewChanged, this, &ImageBrowserPanel::previewChanged);
    connect(&controller, &ImageBrowserController::selectedAlignmentChanged, d->alignment, &QComboBox::setCurrentIndex);
    connect(&loader, &ImageCacheLoader::imageReady, this, &ImageBrowserPanel::imageReady);
    connect(&loader, &ImageCacheLoader::imageFailed, this, [this](const QString &path) {
        if (path == d->previewPath) {
            d->previewPath.clear();
            d->preview->setUnreadable(d->loader.cache().failureReason(path));
        }
    });
    connect(d->model, &ImageBrowserModel::aboutToReset, this,
            [this] { d->scrollBeforeReset = d->grid->verticalScrollBar()->value(); });
    connect(d->model, &ImageBrowserModel::didReset, this, [this] {
        d->grid->doItemsLayout();
        d->grid->verticalScrollBar()->setValue(d->scrollBeforeReset);
    });

    // ...and the user's actions go to the controller.
    connect(d->grid->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &ImageBrowserPanel::viewSelectionChanged);
    connect(d->grid, &QListView::doubleClicked, this, [this](const QModelIndex &index) { emit editRequested(index.row()); });
    connect(d->grid, &QWidget::customContextMenuRequested, this, &ImageBrowserPanel::showContextMenu);
    connect(d->alignment, &QComboBox::activated, &controller, &ImageBrowserController::imageAligmentDidChange);
    connect(d->centerAll, &QPushButton::clicked, &controller, &ImageBrowserController::imageAligmentCenterAll);
    connect(d->fitAll, &QPushButton::clicked, &controller, &ImageBrowserController::imageAligmentFitAll);
    connect(d->insertBlank, &QPushButton::clicked, this, &ImageBrowserPanel::insertBlankImage);
    connect(d->number, &QLineEdit::returnPressed, this, [this] { d->controller.selectItemNumber(d->number->text()); });
    connect(d->zoom, &QSlider::valueChanged, this, &ImageBrowserPanel::zoomChanged);
    // Dragging the slider resizes at once; the size is stored when the knob is let go.
    connect(d->zoom, &QSlider::sliderReleased, this, [this] { zoomChanged(d->zoom->value()); });

    const double stored = std::clamp(double(Preferences(defaults).iconSize()), 0.0, 1.0);
    {
        const QSignalBlocker block(d->zoom);
        d->zoom->setValue(qRound(stored * kZoomSteps));
    }
    const int side = kSmallestIcon + (kLargestIcon - kSmallestIcon) * d->zoom->value() / kZoomSteps;
    d->grid->setIconSize(QSize(side, side));
    showSelection(controller.selection().selectedIndex(), true);
    enableSelectionControls();
    // The selection may have been restored before this panel listened: show its photo now.
    controller.announcePreview();
}

ImageBrowserPanel::~ImageBrowserPanel() = default;

ImageBrowserListView &ImageBrowserPanel::grid() const { return *d->grid; }
ImageBrowserModel &ImageBrowserPanel::model() const { return *d->model; }
PhotoPreview &ImageBrowserPanel::preview() const { return *d->preview; }
QLabel &ImageBrowserPanel::imageLabel() const { return *d->imageLabel; }
QComboBox &ImageBrowserPanel::alignmentPopUp() const { return *d->alignment; }
QPushButton &ImageBrowserPanel::centerAllButton() const { return *d->centerAll; }
QPushButton &ImageBrowserPanel::fitAllButton() const { return *d->fitAll; }
QLineEdit &ImageBrowserPanel::numberField() const { return *d->number; }
QSlider &ImageBrowserPanel::zoomSlider() const { return *d->zoom; }
QPushButton &ImageBrowserPanel::insertBlankButton() const { return *d->insertBlank; }
QMenu &ImageBrowserPanel::contextMenu() const { return *d->menu; }

// ---------------------------------------------------------------- following the controller

void ImageBrowserPanel::browserReloaded()
{
    // The rows followed the list as it changed; the grid shows the controller's selection now.
    showSelection(d->controller.selection().selectedIndex(), false);
}

void ImageBrowserPanel::showSelection(qsizetype index, bool scroll)
{
    QItemSelectionModel *selection = d->grid->selectionModel();
    d->following = true;
    if (index >= 0 && index < d->model->rowCount()) {
        const QModelIndex item = d->model->index(int(index));
        if (!selection->isSelected(item) || selection->currentIndex() != item)
            selection->setCurrentIndex(item, QItemSelectionModel::ClearAndSelect);
        if (scroll)
            d->grid->scrollTo(item);
    } else {
        selection->clear();
    }
    d->following = false;
}

void ImageBrowserPanel::enableSelectionControls()
{
    const bool selected = d->controller.selection().hasSelection();
    for (QWidget *w : std::initializer_list<QWidget *>{d->alignment, d->centerAll, d->fitAll})
        w->setEnabled(selected);
    d->number->setEnabled(d->controller.hasImages());
}

void ImageBrowserPanel::viewSelectionChanged()
{
    // The rows moving with the list move the grid's selection too: that is not the user's.
    if (d->following || d->model->isFollowing())
        return;
    const QModelIndexList selected = d->grid->selectionModel()->selectedIndexes();
    if (!selected.isEmpty())
        d->controller.selection().select(selected.first().row());
}

void ImageBrowserPanel::previewChanged(const QString &path, int alignment)
{
    d->imageLabel->setText(d->controller.imageLabelText());
    d->alignment->setCurrentIndex(std::clamp(alignment, 0, d->alignment->count() - 1));
    d->previewPath.clear();
    if (path.isEmpty()) {
        d->preview->clear();
        return;
    }
    // The cache's copy: never a decode here.
    if (const std::optional<UIImage> image = d->loader.imageForPath(path)) {
        d->preview->setImage(image->bestRepresentation());
    } else if (!d->loader.isLoading(path)) {
        // Known not to be readable (and unchanged since).
        d->preview->setUnreadable(d->loader.cache().failureReason(path));
    } else {
        d->previewPath = path;
        d->preview->setLoading();
    }
}

void ImageBrowserPanel::imageReady(const QString &path)
{
    if (path != d->previewPath)
        return;
    d->previewPath.clear();
    if (const std::optional<UIImage> image = d->loader.imageForPath(path))
        d->preview->setImage(image->bestRepresentation());
}

void ImageBrowserPanel::zoomChanged(int value)
{
    const int side = kSmallestIcon + (kLargestIcon - kSmallestIcon) * value / kZoomSteps;
    d->grid->setIconSize(QSize(side, side));
    if (!d->zoom->isSliderDown())
        d->defaults.setDouble(double(value) / kZoomSteps, Preferences::IconSize);
}

// ---------------------------------------------------------------- actions

QString ImageBrowserPanel::selectedPath() const
{
    return d->controller.imageBookmarks().pathAtIndex(d->controller.selectedItem());
}

void ImageBrowserPanel::addPhotos()
{
    QStringList patterns;
    const QList<QByteArray> formats = QImageReader::supportedImageFormats();
    for (const QByteArray &format : formats)
        patterns.append(QStringLiteral("*.") + QString::fromLatin1(format));
    auto *dialog = new QFileDialog(this, tr("Add Photos"),
                                   QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
    dialog->setObjectName(QStringLiteral("addPhotosDialog"));
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setLabelText(QFileDialog::Accept, tr("Add"));
    dialog->setNameFilters({tr("Images (%1)").arg(patterns.join(QLatin1Char(' '))), tr("All Files (*)")});
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::filesSelected, &d->controller, &ImageBrowserController::addImagesWithPaths);
    dialog->open();
}

void ImageBrowserPanel::paste()
{
    const QMimeData *clipboard = QGuiApplication::clipboard()->mimeData();
    if (!clipboard || !d->controller.paste(*clipboard))
        d->controller.alerts().beep();
}

void ImageBrowserPanel::removeSelectedPhoto()
{
    const qsizetype index = d->controller.selectedItem();
    if (index < 0) {
        d->controller.alerts().beep();
        return;
    }
    d->controller.removeItemsAtIndexes({index});
}

void ImageBrowserPanel::clearAllImages()
{
    AlertPresenter::Alert alert;
    alert.messageText = QStringLiteral("Clear All Images");
    alert.informativeText = QStringLiteral("Are you sure you want to clear all the images in the image browser?");
    alert.defaultButton = QStringLiteral("Cancel");
    alert.alternateButton = QStringLiteral("Clear All");
    alert.style = AlertPresenter::Style::Warning;
    QPointer<ImageBrowserPanel> self(this);
    d->controller.alerts().presentAlert(alert, [self](int response) {
        if (self && response == AlertPresenter::AlternateButton)
            self->d->controller.clearImages();
    });
}

void ImageBrowserPanel::insertBlankImage()
{
    d->controller.insertBlankImage();
}

void ImageBrowserPanel::selectInFinder()
{
    const QString path = selectedPath();
    if (!path.isEmpty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

void ImageBrowserPanel::doOpen()
{
    const QString path = selectedPath();
    if (!path.isEmpty())
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void ImageBrowserPanel::doDuplicate()
{
    if (d->controller.selectedItem() >= 0)
        d->controller.duplicateImage(d->controller.selectedItem());
}

void ImageBrowserPanel::showContextMenu(const QPoint &position)
{
    // The menu acts on the photo under the pointer, which becomes the selected one.
    const QModelIndex item = d->grid->indexAt(position);
    if (!item.isValid())
        return;
    d->controller.selection().select(item.row());
    d->menu->popup(d->grid->viewport()->mapToGlobal(position));
}

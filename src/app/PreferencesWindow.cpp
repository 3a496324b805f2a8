#include "app/PreferencesWindow.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "templates/TemplateGallery.h"

#include <QAction>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QImageReader>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSlider>
#include <QVBoxLayout>

#include <cmath>

namespace {

constexpr int kPictureSide = 48;

} // namespace

PreferencesWindow::PreferencesWindow(UserDefaults &defaults, const QString &resourcesFolder, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_defaults(defaults)
    , m_resourcesFolder(resourcesFolder)
{
    setObjectName(QStringLiteral("preferencesWindow"));
    setWindowTitle(tr("Tessary Preferences"));

    m_matchingMarginWidth = addSlider(Preferences::MatchingMarginWidth, 0, 100, tr(" px"));
    m_blendingMarginWidth = addSlider(Preferences::BlendingMarginWidth, 0, 200, tr(" px"));
    m_inputImageScaling = addSlider(Preferences::InputImageScaling, 10, 100, tr(" %"));
    m_uniformlyCrop = addCheckBox(Preferences::UniformlyCrop, tr("Crop all photos to one size before blending"));
    m_uniformlyCropFit = addCheckBox(Preferences::UniformlyCropFit, tr("Scale photos to that size rather than cropping them"));
    m_insetByCropping = addCheckBox(Preferences::InsetByCropping, tr("Fit the blend into its frame by cropping, not by shrinking"));
    m_megapixelLimit = addCheckBox(Preferences::MegapixelLimit, tr("Keep framed blends within 8 megapixels"));

    m_blendingMarginWidth->setToolTip(tr("How wide the band is over which neighbouring photos are blended"));
    m_inputImageScaling->setToolTip(tr("Photos are scaled to this size before they are blended"));
    m_uniformlyCrop->setToolTip(tr("Every photo is brought to the smallest width and height among them"));
    m_matchingMarginWidth->setToolTip(tr("Half of this width frames each side of a blended picture, in the blend "
                                         "background colour; below 2 px there is no frame"));
    m_insetByCropping->setToolTip(tr("Off: the whole blend is shrunk to fit inside the frame"));
    m_megapixelLimit->setToolTip(tr("A framed blend larger than 8 megapixels is scaled down to 8"));

    // One row per control: help picture, name, control, value.
    const auto sliderRow = [this](QGridLayout *grid, int row, QLabel *picture, const QString &name, QSlider *slider) {
        auto *value = new QLabel;
        value->setObjectName(slider->objectName() + QStringLiteral("Value"));
        value->setMinimumWidth(value->fontMetrics().horizontalAdvance(QStringLiteral("000 px")));
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        const QString suffix = slider->property("suffix").toString();
        const auto show = [value, suffix](int v) { value->setText(QString::number(v) + suffix); };
        connect(slider, &QSlider::valueChanged, value, show);
        connect(slider, &QSlider::sliderMoved, value, show);
        show(slider->value());
        auto *label = new QLabel(name);
        label->setBuddy(slider);
        grid->addWidget(picture, row, 0, Qt::AlignCenter);
        grid->addWidget(label, row, 1);
        grid->addWidget(slider, row, 2);
        grid->addWidget(value, row, 3);
    };
    const auto checkRow = [](QGridLayout *grid, int row, QLabel *picture, QWidget *box) {
        if (picture)
            grid->addWidget(picture, row, 0, Qt::AlignCenter);
        grid->addWidget(box, row, 1, 1, 3);
    };
    const auto group = [](const QString &title) {
        auto *box = new QGroupBox(title);
        auto *grid = new QGridLayout(box);
        grid->setHorizontalSpacing(12);
        grid->setVerticalSpacing(8);
        grid->setColumnMinimumWidth(0, kPictureSide);
        grid->setColumnMinimumWidth(1, 120);
        grid->setColumnStretch(2, 1);
        return std::make_pair(box, grid);
    };

    // What the blend commands (the press-and-hold Blend button) do with the photos.
    auto [blending, blendingGrid] = group(tr("Blending"));
    sliderRow(blendingGrid, 0, helpPicture(QStringLiteral("BlendingMarginWidth.tif"), "blendingMarginScalingIcon"),
              tr("Overlap:"), m_blendingMarginWidth);
    sliderRow(blendingGrid, 1, helpPicture(QStringLiteral("InputImageScaling.tif"), "inputImageScalingIcon"),
              tr("Photo size:"), m_inputImageScaling);
    checkRow(blendingGrid, 2, helpPicture(QStringLiteral("UniformlyCrop.png"), "uniformlyCropIcon"), m_uniformlyCrop);
    checkRow(blendingGrid, 3, nullptr, m_uniformlyCropFit);

    // The frame put around a blended picture before it is shown.
    auto [frame, frameGrid] = group(tr("Frame around blended results"));
    sliderRow(frameGrid, 0, helpPicture(QStringLiteral("MatchingMarginWidth.tif"), "matchingMarginScalingIcon"),
              tr("Frame width:"), m_matchingMarginWidth);
    checkRow(frameGrid, 1, nullptr, m_insetByCropping);
    checkRow(frameGrid, 2, nullptr, m_megapixelLimit);

    // Opening saved results in another program is not a choice made here; a line says how it
    // stands (information only: no picture beside it).
    auto [results, resultsGrid] = group(tr("Saved results"));
    m_autoOpenNote = new QLabel;
    m_autoOpenNote->setObjectName(QStringLiteral("autoOpenNote"));
    m_autoOpenNote->setWordWrap(true);
    checkRow(resultsGrid, 0, nullptr, m_autoOpenNote);

    // The template gallery's address: empty shows the gallery shipped with Tessary.
    auto [templates, templatesGrid] = group(tr("Templates"));
    m_galleryAddress = new QLineEdit;
    m_galleryAddress->setObjectName(TemplateGallery::kGalleryUrlKey);
    m_galleryAddress->setPlaceholderText(tr("The gallery that comes with Tessary"));
    m_galleryAddress->setToolTip(tr("The address of an online template gallery to show instead"));
    m_galleryAddress->setClearButtonEnabled(true);
    templatesGrid->addWidget(new QLabel(tr("Gallery address:")), 0, 1);
    templatesGrid->addWidget(m_galleryAddress, 0, 2, 1, 2);
    connect(m_galleryAddress, &QLineEdit::editingFinished, this, [this] {
        const QString address = m_galleryAddress->text().trimmed();
        if (address.isEmpty())
            m_defaults.removeObject(TemplateGallery::kGalleryUrlKey);
        else
            m_defaults.setObject(address, TemplateGallery::kGalleryUrlKey);
    });

    // The fit variant only means something while uniform cropping is on.
    m_uniformlyCropFit->setEnabled(m_uniformlyCrop->isChecked());
    connect(m_uniformlyCrop, &QCheckBox::toggled, m_uniformlyCropFit, &QWidget::setEnabled);

    auto *buttons = new QDialogButtonBox;
    QPushButton *reset = buttons->addButton(QDialogButtonBox::RestoreDefaults);
    reset->setText(tr("Reset"));
    reset->setObjectName(QStringLiteral("resetPreferences"));
    reset->setToolTip(tr("Put the blending and frame settings back to their first values"));
    QPushButton *close = buttons->addButton(QDialogButtonBox::Close);
    close->setObjectName(QStringLiteral("closePreferences"));
    connect(reset, &QPushButton::clicked, this, &PreferencesWindow::resetPreferences);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    // Escape closes the window, as it closes a dialog.
    auto *escape = new QAction(this);
    escape->setShortcut(QKeySequence(Qt::Key_Escape));
    connect(escape, &QAction::triggered, this, &QWidget::close);
    addAction(escape);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 18, 18, 14);
    layout->setSpacing(12);
    layout->addWidget(blending);
    layout->addWidget(frame);
    layout->addWidget(results);
    layout->addWidget(templates);
    layout->addStretch(1);
    layout->addWidget(buttons);

    showStoredValues();
    resize(sizeHint().expandedTo(QSize(520, 0)));
}

QSlider *PreferencesWindow::addSlider(const QString &key, int minimum, int maximum, const QString &suffix)
{
    auto *slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(key);
    slider->setRange(minimum, maximum);
    slider->setProperty("suffix", suffix);
    slider->setMinimumWidth(180);
    // A drag writes its key once, when the slider is let go; the value beside it follows the drag.
    slider->setTracking(false);
    connect(slider, &QSlider::valueChanged, this, [this, key](int value) {
        if (!m_showing)
            m_defaults.setInteger(value, key);
    });
    return slider;
}

QCheckBox *PreferencesWindow::addCheckBox(const QString &key, const QString &text)
{
    auto *box = new QCheckBox(text);
    box->setObjectName(key);
    connect(box, &QCheckBox::toggled, this, [this, key](bool on) {
        if (!m_showing)
            m_defaults.setBool(on, key);
    });
    return box;
}

QLabel *PreferencesWindow::helpPicture(const QString &fileName, const char *name) const
{
    auto *label = new QLabel;
    label->setObjectName(QString::fromLatin1(name));
    label->setFixedSize(kPictureSide, kPictureSide);
    QImageReader reader(QDir(m_resourcesFolder).filePath(fileName));
    reader.setScaledSize(QSize(kPictureSide, kPictureSide));
    const QImage picture = reader.read();
    // A missing picture leaves an empty place; the controls work all the same.
    if (!picture.isNull())
        label->setPixmap(QPixmap::fromImage(picture));
    return label;
}

void PreferencesWindow::showStoredValues()
{
    // Showing a value writes nothing; the labels and enabled states still follow.
    m_showing = true;
    Preferences prefs(m_defaults);
    // A key never written shows the value Reset would write (the homography slider: full size).
    const auto show = [this](QSlider *slider, const QString &key, int start) {
        slider->setValue(m_defaults.hasObject(key) ? int(std::lround(m_defaults.doubleForKey(key))) : start);
    };
    show(m_matchingMarginWidth, Preferences::MatchingMarginWidth, 0);
    show(m_blendingMarginWidth, Preferences::BlendingMarginWidth, 50);
    show(m_inputImageScaling, Preferences::InputImageScaling, 100);
    m_uniformlyCrop->setChecked(prefs.uniformlyCrop());
    m_uniformlyCropFit->setChecked(prefs.uniformlyCropFit());
    m_megapixelLimit->setChecked(prefs.megapixelLimit());
    m_insetByCropping->setChecked(prefs.insetByCropping());
    m_autoOpenNote->setText(prefs.autoOpenStitchedImageFile()
                                ? tr("Saved results are opened in your image viewer.")
                                : tr("Saved results are not opened in another program; open them from their folder."));
    m_galleryAddress->setText(m_defaults.objectForKey(TemplateGallery::kGalleryUrlKey).toString());
    m_showing = false;
}

void PreferencesWindow::resetPreferences()
{
    Preferences(m_defaults).resetPreferences();
    showStoredValues();
}

void PreferencesWindow::showPreferences()
{
    showStoredValues();
    Preferences prefs(m_defaults);
    if (prefs.markPresent(Preferences::FirstRunPreferences)) {
        if (QScreen *s = screen()) {
            QRect frame = frameGeometry();
            frame.moveCenter(s->availableGeometry().center());
            move(frame.topLeft());
        }
    }
    show();
    raise();
    activateWindow();
}

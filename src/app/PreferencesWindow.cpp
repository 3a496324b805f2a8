#include "app/PreferencesWindow.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "templates/TemplateGallery.h"

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
    m_homographyScaling = addSlider(HomographyScaling, 10, 100, tr(" %"));
    m_cropResult = addCheckBox(Preferences::CropResult, tr("Crop the result to its filled area"));
    m_uniformlyCrop = addCheckBox(Preferences::UniformlyCrop, tr("Crop all photos to one size before tiling"));
    m_uniformlyCropFit = addCheckBox(Preferences::UniformlyCropFit, tr("Scale photos to the common size rather than cropping them"));
    m_megapixelLimit = addCheckBox(Preferences::MegapixelLimit, tr("Keep results within the megapixel limit"));
    m_insetByCropping = addCheckBox(Preferences::InsetByCropping, tr("Inset photos by cropping, not by shrinking"));

    m_matchingMarginWidth->setToolTip(tr("How wide the band is in which neighbouring photos are matched"));
    m_blendingMarginWidth->setToolTip(tr("How wide the band is over which neighbouring photos are blended"));
    m_inputImageScaling->setToolTip(tr("Photos are scaled to this size before they are combined"));
    m_homographyScaling->setToolTip(tr("Photos are scaled to this size while their alignment is worked out"));

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
    const auto checkRow = [](QGridLayout *grid, int row, QLabel *picture, QCheckBox *box) {
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

    auto [blending, blendingGrid] = group(tr("Blending"));
    sliderRow(blendingGrid, 0, helpPicture(QStringLiteral("MatchingMarginWidth.tif"), "matchingMarginScalingIcon"),
              tr("Matching margin:"), m_matchingMarginWidth);
    sliderRow(blendingGrid, 1, helpPicture(QStringLiteral("BlendingMarginWidth.tif"), "blendingMarginScalingIcon"),
              tr("Blending margin:"), m_blendingMarginWidth);

    auto [scaling, scalingGrid] = group(tr("Scaling"));
    sliderRow(scalingGrid, 0, helpPicture(QStringLiteral("InputImageScaling.tif"), "inputImageScalingIcon"),
              tr("Input photos:"), m_inputImageScaling);
    sliderRow(scalingGrid, 1, helpPicture(QStringLiteral("HomographyScaling.tif"), "homographyScalingIcon"),
              tr("Alignment:"), m_homographyScaling);

    auto [cropping, croppingGrid] = group(tr("Cropping"));
    checkRow(croppingGrid, 0, helpPicture(QStringLiteral("UniformlyCrop.png"), "uniformlyCropIcon"), m_uniformlyCrop);
    checkRow(croppingGrid, 1, nullptr, m_uniformlyCropFit);
    checkRow(croppingGrid, 2, nullptr, m_insetByCropping);

    auto [results, resultsGrid] = group(tr("Results"));
    checkRow(resultsGrid, 0, helpPicture(QStringLiteral("CropResult.tif"), "cropResultIcon"), m_cropResult);
    checkRow(resultsGrid, 1, nullptr, m_megapixelLimit);
    // Opening saved results in another program is not a choice made here; the picture and the
    // line beside it say how it stands.
    m_autoOpenNote = new QLabel;
    m_autoOpenNote->setObjectName(QStringLiteral("autoOpenNote"));
    m_autoOpenNote->setWordWrap(true);
    resultsGrid->addWidget(helpPicture(QStringLiteral("xcircle.tiff"), "autoOpenIcon"), 2, 0, Qt::AlignCenter);
    resultsGrid->addWidget(m_autoOpenNote, 2, 1, 1, 3);

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
    reset->setToolTip(tr("Put every setting but the alignment scaling back to its first value"));
    QPushButton *close = buttons->addButton(QDialogButtonBox::Close);
    close->setObjectName(QStringLiteral("closePreferences"));
    connect(reset, &QPushButton::clicked, this, &PreferencesWindow::resetPreferences);
    connect(close, &QPushButton::clicked, this, &QWidget::close);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 18, 18, 14);
    layout->setSpacing(12);
    layout->addWidget(blending);
    layout->addWidget(scaling);
    layout->addWidget(cropping);
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
    show(m_homographyScaling, HomographyScaling, 100);
    m_cropResult->setChecked(prefs.cropResult());
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

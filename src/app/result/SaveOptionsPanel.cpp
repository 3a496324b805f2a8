#include "app/result/SaveOptionsPanel.h"

#include "output/ResultFormat.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QStyle>

#include <cmath>

SaveOptionsPanel::SaveOptionsPanel(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("saveOptions"));
    auto *outer = new QHBoxLayout(this);
    outer->setContentsMargins(0, 8, 0, 0);
    outer->setSpacing(18);

    auto *formatBox = new QGroupBox(tr("Format"));
    auto *form = new QFormLayout(formatBox);
    form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    m_format = new QComboBox;
    for (const QByteArray &format : ResultFormat::writableFormats())
        m_format->addItem(ResultFormat::displayName(format), format);
    m_format->setToolTip(tr("The file format of the saved collage"));
    form->addRow(tr("Format:"), m_format);

    m_qualityRow = new QWidget;
    auto *qualityLayout = new QHBoxLayout(m_qualityRow);
    qualityLayout->setContentsMargins(0, 0, 0, 0);
    m_qualitySlider = new QSlider(Qt::Horizontal);
    m_qualitySlider->setRange(0, 100);
    m_qualitySlider->setMinimumWidth(120);
    m_quality = new QSpinBox;
    m_quality->setRange(0, 100);
    m_quality->setValue(90);
    m_qualitySlider->setValue(90);
    m_quality->setToolTip(tr("Higher keeps more detail and makes a larger file"));
    qualityLayout->addWidget(m_qualitySlider);
    qualityLayout->addWidget(m_quality);
    connect(m_qualitySlider, &QSlider::valueChanged, m_quality, &QSpinBox::setValue);
    connect(m_quality, &QSpinBox::valueChanged, m_qualitySlider, &QSlider::setValue);
    m_qualityLabel = new QLabel(tr("Quality:"));
    form->addRow(m_qualityLabel, m_qualityRow);

    m_compression = new QComboBox;
    m_compression->addItem(tr("LZW"), 1);
    m_compression->addItem(tr("None"), 0);
    m_compression->setToolTip(tr("LZW makes a smaller file and loses nothing"));
    m_compressionLabel = new QLabel(tr("Compression:"));
    form->addRow(m_compressionLabel, m_compression);
    outer->addWidget(formatBox, 0, Qt::AlignTop);

    m_print = new QGroupBox(tr("Print size"));
    m_print->setCheckable(true);
    m_print->setChecked(false);
    m_print->setToolTip(tr("Resample the collage to a size on paper and store the resolution in the file"));
    auto *print = new QFormLayout(m_print);
    print->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
    auto *sizeRow = new QHBoxLayout;
    const auto sideBox = [] {
        auto *box = new QDoubleSpinBox;
        box->setDecimals(3);
        box->setRange(0.01, 99999.0);
        box->setAccelerated(true);
        box->setMinimumWidth(96);
        return box;
    };
    m_width = sideBox();
    m_height = sideBox();
    m_unit = new QComboBox;
    m_unit->addItem(tr("cm"), int(PrintSize::Unit::Centimetres));
    m_unit->addItem(tr("in"), int(PrintSize::Unit::Inches));
    sizeRow->addWidget(m_width);
    sizeRow->addWidget(new QLabel(QStringLiteral("×")));
    sizeRow->addWidget(m_height);
    sizeRow->addWidget(m_unit);
    sizeRow->addStretch(1);
    print->addRow(tr("Size:"), sizeRow);
    m_dpi = new QSpinBox;
    m_dpi->setRange(1, 4800);
    m_dpi->setValue(int(PrintSize::kDefaultDotsPerInch));
    m_dpi->setSuffix(tr(" dpi"));
    m_dpi->setToolTip(tr("Dots per inch on paper; 300 suits most prints"));
    print->addRow(tr("Resolution:"), m_dpi);
    m_keep = new QCheckBox(tr("Keep proportions"));
    m_keep->setChecked(true);
    m_keep->setToolTip(tr("Otherwise the collage fills the size and the overflow is cut off evenly"));
    print->addRow(QString(), m_keep);
    m_pixels = new QLabel;
    m_pixels->setObjectName(QStringLiteral("printPixels"));
    print->addRow(tr("Pixels:"), m_pixels);
    m_warning = new QLabel;
    m_warning->setObjectName(QStringLiteral("printWarning"));
    m_warning->setWordWrap(true);
    m_warning->setStyleSheet(QStringLiteral("color: #a04000;"));
    m_warning->setMaximumWidth(320);
    print->addRow(m_warning);
    outer->addWidget(m_print, 1, Qt::AlignTop);

    connect(m_format, &QComboBox::currentIndexChanged, this, [this] {
        showFormatOptions();
        emit formatChanged(format());
    });
    connect(m_print, &QGroupBox::toggled, this, &SaveOptionsPanel::showPixels);
    connect(m_unit, &QComboBox::currentIndexChanged, this, &SaveOptionsPanel::unitChanged);
    connect(m_width, &QDoubleSpinBox::valueChanged, this, &SaveOptionsPanel::widthEdited);
    connect(m_height, &QDoubleSpinBox::valueChanged, this, &SaveOptionsPanel::heightEdited);
    connect(m_dpi, &QSpinBox::valueChanged, this, &SaveOptionsPanel::showPixels);
    connect(m_keep, &QCheckBox::toggled, this, [this](bool keep) {
        if (keep)
            widthEdited();
    });
    showFormatOptions();
}

void SaveOptionsPanel::setPicture(const QSize &pixels, double sharpest)
{
    m_picture = pixels;
    m_sharpest = sharpest;
    resetPrintSize();
}

void SaveOptionsPanel::resetPrintSize()
{
    // The picture's own pixels at the resolution: a print that needs no resampling.
    const PrintSize own = PrintSize::ofPixels(m_picture, m_shownUnit, m_dpi->value());
    m_updating = true;
    m_width->setValue(own.width());
    m_height->setValue(own.height());
    m_updating = false;
    showPixels();
}

void SaveOptionsPanel::setFormat(const QByteArray &format)
{
    const int index = m_format->findData(format);
    if (index >= 0)
        m_format->setCurrentIndex(index);
}

QByteArray SaveOptionsPanel::format() const
{
    return m_format->currentData().toByteArray();
}

bool SaveOptionsPanel::printSizeEnabled() const
{
    return m_print->isChecked();
}

PrintSize SaveOptionsPanel::printSize() const
{
    if (!printSizeEnabled())
        return PrintSize();
    return PrintSize(m_width->value(), m_height->value(), m_shownUnit, m_dpi->value());
}

ResultEncoder::Settings SaveOptionsPanel::settings() const
{
    ResultEncoder::Settings s;
    s.format = format();
    s.quality = m_quality->value();
    s.tiffCompression = m_compression->currentData().toInt();
    const PrintSize print = printSize();
    if (print.isValid()) {
        s.pixelSize = print.pixelSize();
        s.dotsPerMeter = print.dotsPerMeter();
    }
    return s;
}

bool SaveOptionsPanel::enlargesBeyondSharpest() const
{
    const PrintSize print = printSize();
    return print.isValid() && print.enlargesBeyond(m_picture, m_sharpest);
}

void SaveOptionsPanel::showFormatOptions()
{
    const QByteArray f = format();
    m_qualityLabel->setVisible(ResultFormat::hasQuality(f));
    m_qualityRow->setVisible(ResultFormat::hasQuality(f));
    m_compressionLabel->setVisible(ResultFormat::hasCompression(f));
    m_compression->setVisible(ResultFormat::hasCompression(f));
}

void SaveOptionsPanel::unitChanged()
{
    const auto unit = PrintSize::Unit(m_unit->currentData().toInt());
    const PrintSize converted = PrintSize(m_width->value(), m_height->value(), m_shownUnit, m_dpi->value()).inUnit(unit);
    m_shownUnit = unit;
    m_updating = true;
    m_width->setValue(converted.width());
    m_height->setValue(converted.height());
    m_updating = false;
    showPixels();
}

void SaveOptionsPanel::widthEdited()
{
    if (m_updating)
        return;
    if (m_keep->isChecked()) {
        m_updating = true;
        m_height->setValue(PrintSize::heightKeepingProportions(m_width->value(), m_picture));
        m_updating = false;
    }
    showPixels();
}

void SaveOptionsPanel::heightEdited()
{
    if (m_updating)
        return;
    if (m_keep->isChecked()) {
        m_updating = true;
        m_width->setValue(PrintSize::widthKeepingProportions(m_height->value(), m_picture));
        m_updating = false;
    }
    showPixels();
}

void SaveOptionsPanel::showPixels()
{
    const PrintSize print(m_width->value(), m_height->value(), m_shownUnit, m_dpi->value());
    const QSize pixels = print.pixelSize();
    m_pixels->setText(pixels.isEmpty() ? tr("too large to print")
                                       : tr("%1 × %2 (the collage is %3 × %4)")
                                             .arg(pixels.width())
                                             .arg(pixels.height())
                                             .arg(m_picture.width())
                                             .arg(m_picture.height()));
    if (enlargesBeyondSharpest()) {
        m_warning->setText(tr("⚠ This enlarges the collage %1 times, beyond the detail of its sharpest photo: "
                              "the print will look soft.")
                               .arg(print.enlargement(m_picture), 0, 'f', 1));
        m_warning->show();
    } else {
        m_warning->clear();
        m_warning->hide();
    }
}

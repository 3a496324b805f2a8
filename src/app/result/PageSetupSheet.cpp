#include "app/result/PageSetupSheet.h"

#include "model/CollageRenderer.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

PageSetupSheet::PageSetupSheet(QWidget *parent, const PagePreset &start, const QSize &picture, double sharpest)
    : QDialog(parent)
    , m_picture(picture)
    , m_sharpest(sharpest)
{
    setObjectName(QStringLiteral("pageSetupSheet"));
    setWindowTitle(tr("Export PDF"));
    setWindowModality(Qt::WindowModal);
    setAttribute(Qt::WA_DeleteOnClose);

    m_page = new QComboBox;
    m_page->setObjectName(QStringLiteral("pageName"));
    m_page->addItems(PagePreset::names());
    m_orientation = new QComboBox;
    m_orientation->setObjectName(QStringLiteral("pageOrientation"));
    m_orientation->addItems({tr("Portrait"), tr("Landscape")});
    m_margin = new QDoubleSpinBox;
    m_margin->setObjectName(QStringLiteral("pageMargin"));
    m_margin->setRange(0, 100);
    m_margin->setDecimals(1);
    m_margin->setSuffix(tr(" mm"));
    m_fit = new QComboBox;
    m_fit->setObjectName(QStringLiteral("pageFit"));
    m_fit->addItem(tr("Fit the whole collage on the page"), int(PagePreset::Fit::Inside));
    m_fit->addItem(tr("Fill the page, trimming the edges evenly"), int(PagePreset::Fit::Fill));
    m_dpi = new QSpinBox;
    m_dpi->setObjectName(QStringLiteral("pageDpi"));
    m_dpi->setRange(72, 1200);
    m_dpi->setSingleStep(50);
    m_dpi->setSuffix(tr(" dpi"));
    m_summary = new QLabel;
    m_summary->setObjectName(QStringLiteral("pageSummary"));
    m_summary->setWordWrap(true);
    m_warning = new QLabel;
    m_warning->setObjectName(QStringLiteral("pageWarning"));
    m_warning->setWordWrap(true);
    m_warning->setStyleSheet(QStringLiteral("color: #a05a00;"));
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    m_export = m_buttons->addButton(tr("Export…"), QDialogButtonBox::AcceptRole);
    m_export->setObjectName(QStringLiteral("pageExport"));
    m_export->setDefault(true);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *form = new QFormLayout;
    form->addRow(tr("Page:"), m_page);
    form->addRow(tr("Orientation:"), m_orientation);
    form->addRow(tr("Margin:"), m_margin);
    form->addRow(tr("Collage:"), m_fit);
    form->addRow(tr("Resolution:"), m_dpi);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_summary);
    layout->addWidget(m_warning);
    layout->addStretch(1);
    layout->addWidget(m_buttons);
    setMinimumWidth(460);

    m_page->setCurrentIndex(std::max<int>(0, int(PagePreset::names().indexOf(start.name()))));
    m_orientation->setCurrentIndex(start.isLandscape() ? 1 : 0);
    m_margin->setValue(start.margin());
    m_fit->setCurrentIndex(start.fit() == PagePreset::Fit::Fill ? 1 : 0);
    m_dpi->setValue(int(std::lround(start.dotsPerInch())));
    // A new paper starts with its own margin: none for photo sizes, 10 mm for paper.
    connect(m_page, &QComboBox::currentIndexChanged, this, &PageSetupSheet::pageChosen);
    connect(m_orientation, &QComboBox::currentIndexChanged, this, &PageSetupSheet::showOutcome);
    connect(m_margin, &QDoubleSpinBox::valueChanged, this, &PageSetupSheet::showOutcome);
    connect(m_fit, &QComboBox::currentIndexChanged, this, &PageSetupSheet::showOutcome);
    connect(m_dpi, &QSpinBox::valueChanged, this, &PageSetupSheet::showOutcome);
    showOutcome();
}

PagePreset PageSetupSheet::preset() const
{
    PagePreset page = *PagePreset::named(m_page->currentText());
    page.setLandscape(m_orientation->currentIndex() == 1)
        .setMargin(m_margin->value())
        .setFit(PagePreset::Fit(m_fit->currentData().toInt()))
        .setDotsPerInch(m_dpi->value());
    return page;
}

void PageSetupSheet::pageChosen()
{
    m_margin->setValue(PagePreset::named(m_page->currentText())->margin());
    showOutcome();
}

void PageSetupSheet::showOutcome()
{
    const PagePreset page = preset();
    const QSize render = page.renderSize(QSizeF(m_picture));
    const bool room = page.isValid() && !render.isEmpty();
    const bool fits = room && qint64(render.width()) * render.height() <= CollageRenderer::kMaxCanvasPixels;
    m_export->setEnabled(fits);
    if (!fits) {
        m_summary->setText(!room ? tr("The margins leave no room on the page.")
                                 : tr("%1 × %2 pixels is too large to render (at most %3 megapixels): choose a "
                                      "lower resolution.")
                                       .arg(render.width())
                                       .arg(render.height())
                                       .arg(CollageRenderer::kMaxCanvasPixels / 1000000));
        m_warning->hide();
        return;
    }
    const QSizeF mm = page.size();
    m_summary->setText(tr("%1 × %2 mm; the collage is rendered %3 × %4 pixels.")
                           .arg(mm.width(), 0, 'f', 0)
                           .arg(mm.height(), 0, 'f', 0)
                           .arg(render.width())
                           .arg(render.height()));
    const bool soft = m_sharpest > 0 && page.enlargesBeyond(m_picture, m_sharpest);
    m_warning->setVisible(soft);
    if (soft)
        m_warning->setText(tr("⚠ This enlarges the collage %1 times, beyond the detail of its sharpest photo: "
                              "the print will look soft.")
                               .arg(page.enlargement(m_picture), 0, 'f', 1));
}

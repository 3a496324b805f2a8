#include "app/templates/LoadFileSheet.h"

#include "foundation/DisclosureFold.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"

#include <QCheckBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

LoadFileSheet::LoadFileSheet(UserDefaults &defaults, QWidget *parent)
    : QDialog(parent)
    , m_defaults(defaults)
    , m_disclosureButton(new QToolButton)
    , m_disclosureView(new QWidget)
    , m_disclosureLabel(new QLabel(tr("The template gallery, the templates page, and clearing My Templates")))
    , m_dontShowAgain(new QCheckBox(tr("Don't show this again")))
{
    setObjectName(QStringLiteral("loadFileWindow"));
    setWindowTitle(tr("Add Templates"));
    setWindowModality(Qt::WindowModal);

    auto *title = new QLabel(tr("Add Templates to My Templates"));
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.3);
    titleFont.setBold(true);
    title->setFont(titleFont);
    auto *text = new QLabel(tr("Template files (.plist) made in Tessary iOS or exported from Tessary add their "
                               "templates to the end of My Templates."));
    text->setWordWrap(true);

    auto *choose = new QPushButton(tr("Choose Templates File…"));
    choose->setObjectName(QStringLiteral("chooseTemplateFile"));
    choose->setDefault(true);
    choose->setToolTip(tr("Pick one or more template files to add"));
    auto *close = new QPushButton(tr("Close"));
    close->setObjectName(QStringLiteral("endLoadFileWindow"));

    m_dontShowAgain->setObjectName(QStringLiteral("dontShowAgain"));
    m_dontShowAgain->setToolTip(tr("Go straight to choosing files next time"));
    m_dontShowAgain->setChecked(Preferences(defaults).dontShowAgain());
    connect(m_dontShowAgain, &QCheckBox::toggled, this,
            [this](bool on) { m_defaults.setBool(on, Preferences::DontShowAgain); });

    auto *actions = new QHBoxLayout;
    actions->addWidget(m_dontShowAgain);
    actions->addStretch(1);
    actions->addWidget(close);
    actions->addWidget(choose);

    m_disclosureButton->setObjectName(QStringLiteral("disclosureButton"));
    m_disclosureButton->setCheckable(true);
    m_disclosureButton->setAutoRaise(true);
    m_disclosureButton->setText(tr("More"));
    m_disclosureButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_disclosureButton->setToolTip(tr("Show or hide more ways to manage templates"));
    m_disclosureButton->setChecked(Preferences(defaults).addTemplatesDisclosed());
    m_disclosureLabel->setObjectName(QStringLiteral("disclosureLabel"));
    // A disclosure triangle, not a push button: no frame when it is open.
    m_disclosureButton->setStyleSheet(QStringLiteral("QToolButton { border: none; background: transparent; }"));

    auto *separator = new QFrame;
    separator->setFrameShape(QFrame::HLine);
    separator->setFrameShadow(QFrame::Sunken);

    auto *disclosureRow = new QHBoxLayout;
    disclosureRow->setSpacing(4);
    disclosureRow->addWidget(m_disclosureButton, 0, Qt::AlignTop);
    // The label wraps rather than run past the sheet's edge.
    m_disclosureLabel->setWordWrap(true);
    disclosureRow->addWidget(m_disclosureLabel, 1);

    // The part that folds: the template gallery, the templates page and clearing My Templates.
    m_disclosureView->setObjectName(QStringLiteral("disclosureView"));
    auto *website = new QPushButton(tr("Templates Page"));
    website->setObjectName(QStringLiteral("downloadWebsiteTemplateFile"));
    website->setToolTip(tr("Open the page of templates that people share, in your browser"));
    auto *gallery = new QPushButton(tr("Template Gallery…"));
    gallery->setObjectName(QStringLiteral("showTemplateWebviewWindow"));
    gallery->setToolTip(tr("Browse template sets and add them to My Templates with a click"));
    auto *galleryText = new QLabel(tr("Browse template sets without leaving Tessary."));
    galleryText->setWordWrap(true);
    auto *clear = new QPushButton(tr("Clear All My Templates…"));
    clear->setObjectName(QStringLiteral("clearAllTemplates"));
    clear->setToolTip(tr("Remove every template from My Templates (you are asked first)"));
    auto *websiteText = new QLabel(tr("Find more templates to download on the shared templates page."));
    auto *clearText = new QLabel(tr("Start My Templates afresh before adding a file."));
    websiteText->setWordWrap(true);
    clearText->setWordWrap(true);
    auto *viewGrid = new QGridLayout(m_disclosureView);
    viewGrid->setContentsMargins(24, 0, 0, 0);
    viewGrid->setHorizontalSpacing(12);
    viewGrid->setVerticalSpacing(8);
    viewGrid->addWidget(gallery, 0, 0);
    viewGrid->addWidget(galleryText, 0, 1);
    viewGrid->addWidget(website, 1, 0);
    viewGrid->addWidget(websiteText, 1, 1);
    viewGrid->addWidget(clear, 2, 0);
    viewGrid->addWidget(clearText, 2, 1);
    viewGrid->setColumnStretch(1, 1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 16);
    layout->setSpacing(12);
    layout->addWidget(title);
    layout->addWidget(text);
    layout->addLayout(actions);
    layout->addWidget(separator);
    layout->addLayout(disclosureRow);
    layout->addWidget(m_disclosureView);
    layout->addStretch(1);

    // Each template button ends the sheet, then reports.
    const auto endThen = [this](QPushButton *button, void (LoadFileSheet::*signal)()) {
        connect(button, &QPushButton::clicked, this, [this, signal] {
            accept();
            emit(this->*signal)();
        });
    };
    endThen(choose, &LoadFileSheet::chooseTemplateFile);
    endThen(clear, &LoadFileSheet::clearAllTemplates);
    endThen(website, &LoadFileSheet::downloadWebsiteTemplateFile);
    endThen(gallery, &LoadFileSheet::showTemplateGallery);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);

    // The frame as laid out with everything shown, before anything folds, and where the folding
    // part sits in it.
    m_disclosureLabel->hide();
    setMinimumWidth(520);
    resize(sizeHint());
    layout->activate();
    m_savedFrame = geometry();
    m_viewFrame = m_disclosureView->geometry();
    m_disclosureLabel->show();

    // The first time ever, the sheet starts folded.
    Preferences prefs(defaults);
    if (prefs.markPresent(Preferences::FirstRunDisclosure)) {
        m_disclosureButton->setChecked(false);
        defaults.setBool(false, Preferences::AddTemplatesDisclosed);
    }
    connect(m_disclosureButton, &QToolButton::toggled, this, [this](bool on) {
        m_defaults.setBool(on, Preferences::AddTemplatesDisclosed);
        disclose();
    });
    disclose();
}

void LoadFileSheet::disclose()
{
    const bool disclosed = m_disclosureButton->isChecked();
    m_disclosureButton->setArrowType(disclosed ? Qt::DownArrow : Qt::RightArrow);
    m_disclosureLabel->setVisible(!disclosed);
    m_disclosureView->setVisible(disclosed);
    const double origin = DisclosureFold::verticalOrigin(m_savedFrame.height(), m_viewFrame.top(), m_viewFrame.height());
    const double height = DisclosureFold::sheetHeight(m_savedFrame.height(), disclosed, m_viewFrame.height(), origin);
    // The origin is the parent window's business (the sheet is centred over it); width and height
    // are the saved width and the folded or full height.
    setFixedSize(m_savedFrame.width(), int(std::lround(height)));
}

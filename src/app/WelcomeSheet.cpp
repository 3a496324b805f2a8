#include "app/WelcomeSheet.h"

#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

WelcomeSheet::WelcomeSheet(UserDefaults &defaults, QWidget *parent)
    : QDialog(parent)
    , m_defaults(defaults)
    , m_dontShowAgain(new QCheckBox(tr("Don't show this again")))
{
    setObjectName(QStringLiteral("welcomeWindow"));
    setWindowTitle(tr("Welcome to Tessary"));
    setWindowModality(Qt::WindowModal);

    auto *title = new QLabel(tr("Welcome to Tessary"));
    QFont titleFont = title->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    titleFont.setBold(true);
    title->setFont(titleFont);

    auto *text = new QLabel(tr("<p style='line-height:140%'>"
                               "<b>1.</b> Add your photos: drop them on the list at the left, or use File ▸ Add Photos.<br>"
                               "<b>2.</b> Pick a template at the right: the collage fills in at once, photo by photo.<br>"
                               "<b>3.</b> Drag tiles to swap photos or Jumble them, then save the collage as one picture."
                               "</p>"));
    text->setObjectName(QStringLiteral("welcomeText"));
    text->setTextFormat(Qt::RichText);

    m_dontShowAgain->setObjectName(QStringLiteral("doNotShowWelcomeWindowAgain"));
    m_dontShowAgain->setToolTip(tr("You can open this again from Help ▸ Welcome"));
    m_dontShowAgain->setChecked(Preferences(defaults).doNotShowWelcomeWindowAgain());
    connect(m_dontShowAgain, &QCheckBox::toggled, this,
            [this](bool on) { m_defaults.setBool(on, Preferences::DoNotShowWelcomeWindowAgain); });

    auto *website = new QPushButton(tr("Visit Website"));
    website->setObjectName(QStringLiteral("visitWebsite"));
    website->setToolTip(tr("Open Tessary's website in your browser"));
    website->setAutoDefault(false);
    auto *ok = new QPushButton(tr("OK"));
    ok->setObjectName(QStringLiteral("endWelcomeWindow"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(website, &QPushButton::clicked, this, [this] {
        accept();
        emit visitWebsiteRequested();
    });

    auto *bottom = new QHBoxLayout;
    bottom->setSpacing(8);
    bottom->addWidget(m_dontShowAgain);
    bottom->addStretch(1);
    bottom->addWidget(website);
    bottom->addWidget(ok);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 16);
    layout->setSpacing(14);
    layout->addWidget(title);
    layout->addWidget(text);
    layout->addLayout(bottom);
    setMinimumWidth(600);
}

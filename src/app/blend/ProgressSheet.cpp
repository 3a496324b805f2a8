#include "app/blend/ProgressSheet.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

ProgressSheet::ProgressSheet(QWidget *parent)
    : QDialog(parent)
    , m_message(new QLabel)
    , m_viewer(new QLabel)
    , m_bar(new QProgressBar)
    , m_subBar(new QProgressBar)
    , m_spinner(new QProgressBar)
    , m_abort(new QPushButton(tr("Abort")))
{
    setObjectName(QStringLiteral("progressPanel"));
    setWindowTitle(tr("Blending"));
    setWindowModality(Qt::WindowModal);

    m_viewer->setObjectName(QStringLiteral("progressViewer"));
    m_viewer->setFixedSize(340, 220);
    m_viewer->setAlignment(Qt::AlignCenter);
    m_viewer->setFrameShape(QFrame::StyledPanel);
    m_viewer->setStyleSheet(QStringLiteral("background: palette(base);"));
    m_message->setObjectName(QStringLiteral("progressMessageField"));
    m_message->setMinimumWidth(340);
    m_message->setWordWrap(true);
    m_bar->setObjectName(QStringLiteral("progressBar"));
    m_bar->setTextVisible(false);
    m_subBar->setObjectName(QStringLiteral("subProgressBar"));
    m_subBar->setTextVisible(false);
    m_subBar->setMaximumHeight(8);
    m_spinner->setObjectName(QStringLiteral("indeterminateProgressBar"));
    m_spinner->setTextVisible(false);
    m_spinner->setFixedWidth(48);
    m_spinner->setRange(0, 1);
    m_abort->setObjectName(QStringLiteral("abortButton"));
    m_abort->setAutoDefault(false);
    m_abort->setToolTip(tr("Stop the blend"));
    connect(m_abort, &QPushButton::clicked, this, &ProgressSheet::abort);
    connect(this, &QDialog::finished, this, &ProgressSheet::progreeSheetForStitchDidEnd);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 16, 18, 14);
    layout->setSpacing(8);
    layout->addWidget(m_viewer, 0, Qt::AlignHCenter);
    layout->addWidget(m_message);
    auto *bars = new QHBoxLayout;
    bars->addWidget(m_bar, 1);
    bars->addWidget(m_spinner);
    layout->addLayout(bars);
    layout->addWidget(m_subBar);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_abort);
    layout->addLayout(buttons);
}

void ProgressSheet::prepareForStitch()
{
    displayImage(QImage());
    updateProgressMessage(QString());
    m_bar->hide();
    m_subBar->hide();
    m_bar->setRange(0, kSteps);
    m_value = 0.0;
    m_bar->setValue(0);
    m_bar->show();
    m_spinner->setRange(0, 0); // turning
}

void ProgressSheet::endSheet()
{
    done(QDialog::Accepted);
}

void ProgressSheet::updateProgressMessage(const QString &message)
{
    m_message->setText(message);
}

void ProgressSheet::updateProgressBar(double value)
{
    m_value = value;
    if (float(value) > 0.99f) {
        m_bar->setRange(0, 0);
    } else {
        m_bar->setRange(0, kSteps);
        m_bar->setValue(int(qBound(0.0, value, 1.0) * kSteps));
    }
}

void ProgressSheet::displayImage(const QImage &image)
{
    m_image = image;
    if (image.isNull()) {
        m_viewer->clear();
        return;
    }
    m_viewer->setPixmap(QPixmap::fromImage(image.scaled(m_viewer->size() - QSize(8, 8), Qt::KeepAspectRatio,
                                                        Qt::SmoothTransformation)));
}

void ProgressSheet::progreeSheetForStitchDidEnd(int returnCode)
{
    Q_UNUSED(returnCode);
    hide();
}

void ProgressSheet::closeEvent(QCloseEvent *event)
{
    if (isVisible())
        emit aborted();
    hide();
    event->accept();
}

QString ProgressSheet::message() const
{
    return m_message->text();
}

bool ProgressSheet::isProgressBarIndeterminate() const
{
    return m_bar->minimum() == 0 && m_bar->maximum() == 0;
}

#include "app/collage/PleaseWaitWindow.h"

#include "widgets/ProgressSpinner.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>

PleaseWaitWindow::PleaseWaitWindow(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
{
    setObjectName(QStringLiteral("pleaseWaitWindow"));
    setWindowTitle(tr("Making the Collage"));
    setModal(false);

    m_spinner = new ProgressSpinner;
    m_spinner->setFixedSize(36, 36);
    auto *title = new QLabel(tr("Please wait…"));
    QFont bold = title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    title->setFont(bold);
    m_detail = new QLabel(tr("Rendering the collage at full size"));
    m_bar = new QProgressBar;
    m_bar->setObjectName(QStringLiteral("renderProgress"));
    m_bar->setTextVisible(true);
    m_bar->setMinimumWidth(300);

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(20, 18, 20, 18);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(6);
    grid->addWidget(m_spinner, 0, 0, 3, 1, Qt::AlignTop);
    grid->addWidget(title, 0, 1);
    grid->addWidget(m_detail, 1, 1);
    grid->addWidget(m_bar, 2, 1);
    setFixedSize(sizeHint());
}

void PleaseWaitWindow::showPleaseWaitWindow()
{
    setProgress(0, 0);
    m_detail->setText(tr("Rendering the collage at full size"));
    if (QWidget *owner = parentWidget()) {
        QRect frame = rect();
        frame.moveCenter(owner->frameGeometry().center());
        move(frame.topLeft());
    }
    show();
    raise();
    m_spinner->startAnimation();
}

void PleaseWaitWindow::hidePleaseWaitWindow()
{
    m_spinner->stopAnimation();
    hide();
}

void PleaseWaitWindow::setProgress(int done, int total)
{
    if (total <= 0) {
        m_bar->setRange(0, 0); // not started: the bar only shows that work is under way
        return;
    }
    m_bar->setRange(0, total);
    m_bar->setValue(done);
    m_bar->setFormat(tr("%1 of %2 tiles").arg(done).arg(total));
    m_detail->setText(tr("Drawing the photos into the collage"));
}

void PleaseWaitWindow::closeEvent(QCloseEvent *event)
{
    hidePleaseWaitWindow();
    event->accept();
}

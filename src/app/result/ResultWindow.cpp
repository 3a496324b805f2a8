#include "app/result/ResultWindow.h"

#include "foundation/Preferences.h"
#include "app/result/ResultImageView.h"

#include <QAction>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>

ResultWindow::ResultWindow(UserDefaults &defaults, QWidget *parent)
    : QMainWindow(parent, Qt::Window)
    , m_defaults(defaults)
{
    setObjectName(QStringLiteral("resultWindow"));
    setWindowTitle(tr("Collage"));
    m_view = new ResultImageView;
    setCentralWidget(m_view);

    m_sizeLabel = new QLabel;
    m_sizeLabel->setObjectName(QStringLiteral("resultSize"));
    m_sizeLabel->setContentsMargins(8, 0, 0, 0);
    m_workLabel = new QLabel;
    m_workBar = new QProgressBar;
    m_workBar->setObjectName(QStringLiteral("resultWorkProgress"));
    m_workBar->setMaximumWidth(220);
    m_workBar->setTextVisible(false);
    m_workBar->hide();
    m_stopWork = new QToolButton;
    m_stopWork->setObjectName(QStringLiteral("stopResultWork"));
    m_stopWork->setText(tr("Stop"));
    m_stopWork->setToolTip(tr("Stop this work; nothing of it is written"));
    m_stopWork->hide();
    connect(m_stopWork, &QToolButton::clicked, this, &ResultWindow::workCanceled);
    statusBar()->addWidget(m_sizeLabel);
    statusBar()->addPermanentWidget(m_workLabel);
    statusBar()->addPermanentWidget(m_workBar);
    statusBar()->addPermanentWidget(m_stopWork);
    statusBar()->setSizeGripEnabled(true);

    buildActions();
    updateActions();
    resize(900, 700);
}

ResultWindow::~ResultWindow() = default;

void ResultWindow::buildActions()
{
    // Window shortcuts: Ctrl+S and Ctrl+C act on the picture only while this window is active.
    const auto make = [this](const char *name, const QString &text, const QKeySequence &keys, const QString &tip,
                             QStyle::StandardPixmap icon = QStyle::SP_CustomBase) {
        auto *a = new QAction(text, this);
        a->setObjectName(QString::fromLatin1(name));
        a->setShortcut(keys);
        a->setShortcutContext(Qt::WindowShortcut);
        a->setToolTip(tip);
        if (icon != QStyle::SP_CustomBase)
            a->setIcon(style()->standardIcon(icon));
        addAction(a);
        return a;
    };
    QAction *save = make("saveResult", tr("Save…"), QKeySequence::Save, tr("Save the collage to a file (Ctrl+S)"),
                         QStyle::SP_DialogSaveButton);
    QAction *copy = make("copyResult", tr("Copy"), QKeySequence::Copy,
                         tr("Copy the collage as a picture to paste in other programs (Ctrl+C)"));
    QAction *open = make("openResult", tr("Open in Viewer"), QKeySequence(Qt::CTRL | Qt::Key_O),
                         tr("Open the collage in the default image viewer (Ctrl+O)"), QStyle::SP_DirOpenIcon);
    QAction *copyOpen = make("copyAndOpenResult", tr("Copy and Open"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
                             tr("Copy the collage, then open it in the default image viewer"));
    QAction *insert = make("insertResult", tr("Insert into Photos"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_I),
                           tr("Put the collage first in the photo list as a new photo"), QStyle::SP_ArrowBack);
    QAction *pdf = make("exportPdf", tr("Export PDF…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E),
                        tr("Put the collage on a page of a PDF file (Ctrl+Shift+E)"));
    QAction *print = make("printResult", tr("Print…"), QKeySequence::Print, tr("Print the collage (Ctrl+P)"));
    QAction *preview = make("printPreview", tr("Print Preview…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P),
                            tr("See the collage on the printer's page"));
    QAction *fit = make("zoomToFit", tr("Zoom to Fit"), QKeySequence(Qt::CTRL | Qt::Key_0),
                        tr("Shrink a large collage to fit the window"));
    QAction *actual = make("actualSize", tr("Actual Size"), QKeySequence(Qt::CTRL | Qt::Key_1),
                           tr("Show the collage pixel for pixel"));
    QAction *close = make("closeResult", tr("Close"), QKeySequence::Close, tr("Close this window"));
    connect(fit, &QAction::triggered, this, &ResultWindow::alwaysZoomToFit);
    connect(actual, &QAction::triggered, this, &ResultWindow::actualSize);
    connect(close, &QAction::triggered, this, &QWidget::close);

    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->addAction(save);
    file->addAction(pdf);
    file->addSeparator();
    file->addAction(preview);
    file->addAction(print);
    file->addSeparator();
    file->addAction(open);
    file->addAction(insert);
    file->addSeparator();
    file->addAction(close);
    QMenu *edit = menuBar()->addMenu(tr("&Edit"));
    edit->addAction(copy);
    edit->addAction(copyOpen);
    QMenu *view = menuBar()->addMenu(tr("&View"));
    view->addAction(fit);
    view->addAction(actual);

    QToolBar *bar = addToolBar(tr("Result"));
    bar->setObjectName(QStringLiteral("resultToolBar"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    bar->setIconSize(QSize(18, 18));
    bar->addAction(save);
    bar->addAction(copy);
    bar->addAction(open);
    bar->addAction(copyOpen);
    bar->addAction(insert);
    auto *spacer = new QWidget;
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(spacer);
    bar->addAction(fit);
    bar->addAction(actual);
}

QAction *ResultWindow::action(const QString &name) const
{
    return findChild<QAction *>(name);
}

QImage ResultWindow::image() const
{
    return m_view->image();
}

void ResultWindow::setResult(const QImage &image, double sharpest)
{
    m_view->setImage(image);
    m_sharpest = sharpest;
    if (Preferences(m_defaults).alwaysZoomToFit())
        m_view->setImageScaling(ResultImageView::Scaling::ProportionallyDown);
    else
        m_view->setImageScaling(ResultImageView::Scaling::None);
    m_sizeLabel->setText(image.isNull() ? QString() : tr("%1 × %2 pixels").arg(image.width()).arg(image.height()));
    updateActions();
}

void ResultWindow::showResultWindow()
{
    show();
    raise();
    activateWindow();
    if (Preferences(m_defaults).markPresent(Preferences::FirstRunResult)) {
        if (QScreen *s = screen()) {
            QRect frame = frameGeometry();
            frame.moveCenter(s->availableGeometry().center());
            move(frame.topLeft());
        }
    }
}

void ResultWindow::alwaysZoomToFit()
{
    m_view->setImageScaling(ResultImageView::Scaling::ProportionallyDown);
}

void ResultWindow::actualSize()
{
    m_view->setImageScaling(ResultImageView::Scaling::None);
}

void ResultWindow::beginWork(const QString &text)
{
    m_working = true;
    m_workLabel->setText(text);
    m_workBar->setRange(0, 0);
    m_workBar->show();
    m_stopWork->show();
    statusBar()->clearMessage();
    updateActions();
}

void ResultWindow::setWorkProgress(int done, int total)
{
    if (total > 0) {
        m_workBar->setRange(0, total);
        m_workBar->setValue(done);
    }
}

void ResultWindow::endWork(const QString &message)
{
    m_working = false;
    m_workBar->hide();
    m_stopWork->hide();
    m_workLabel->clear();
    if (!message.isEmpty())
        statusBar()->showMessage(message, 6000);
    updateActions();
}

void ResultWindow::updateActions()
{
    const bool ready = !m_view->image().isNull() && !m_working;
    for (const char *name : {"saveResult", "copyResult", "openResult", "copyAndOpenResult", "insertResult", "exportPdf",
                             "printResult", "printPreview"})
        if (QAction *a = action(QString::fromLatin1(name)))
            a->setEnabled(ready);
}

void ResultWindow::resizeEvent(QResizeEvent *event)
{
    QMainWindow::resizeEvent(event);
    if (Preferences(m_defaults).alwaysZoomToFit())
        m_view->setImageScaling(ResultImageView::Scaling::ProportionallyDown);
}

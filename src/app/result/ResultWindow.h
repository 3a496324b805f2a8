#pragma once

#include <QImage>
#include <QMainWindow>

class QAction;
class QLabel;
class QProgressBar;
class QToolButton;
class ResultImageView;
class UserDefaults;

// The result window: the collage picture, and the ways out of it in its own tool bar and menus
// (Save…, Copy, Open in Viewer, Copy and Open, Insert into Photos), whose shortcuts work only in
// this window. The picture lives here and nowhere else; every output reads it at the moment it
// runs. Long work on the picture (encoding, writing) shows its progress in the status bar.
class ResultWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit ResultWindow(UserDefaults &defaults, QWidget *parent = nullptr);
    ~ResultWindow() override;

    ResultImageView &resultView() const { return *m_view; }
    QImage image() const;
    // Photo pixels on one picture pixel of the result's sharpest photo (0: unknown).
    double sharpest() const { return m_sharpest; }
    // Shows the picture, fitted by the zoom-to-fit rule ("AlwaysZoomToFit", YES when absent).
    void setResult(const QImage &image, double sharpest = 0.0);

    // Brings the window forward; centres it only the first time it is ever shown.
    void showResultWindow();
    // Fit a larger picture into the window; or show it at its own size.
    void alwaysZoomToFit();
    void actualSize();

    // Actions by object name: "saveResult", "copyResult", "openResult", "copyAndOpenResult",
    // "insertResult", "exportPdf", "printResult", "printPreview", "zoomToFit", "actualSize",
    // "closeResult".
    QAction *action(const QString &name) const;

    // Work on the picture under way: the output actions wait, the status bar shows the bar
    // and a Stop button (workCanceled()).
    void beginWork(const QString &text);
    void setWorkProgress(int done, int total);
    // The work ended; `message` stays in the status bar for a while.
    void endWork(const QString &message);
    bool isWorking() const { return m_working; }
    QToolButton &stopWorkButton() const { return *m_stopWork; }

signals:
    // The Stop button beside the work's bar was pressed.
    void workCanceled();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void buildActions();
    void updateActions();

    UserDefaults &m_defaults;
    ResultImageView *m_view;
    QLabel *m_sizeLabel;
    QLabel *m_workLabel;
    QProgressBar *m_workBar;
    QToolButton *m_stopWork;
    double m_sharpest = 0.0;
    bool m_working = false;
};

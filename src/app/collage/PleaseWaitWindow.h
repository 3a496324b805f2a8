#pragma once

#include <QDialog>

class ProgressSpinner;
class QLabel;
class QProgressBar;

// The small window shown while the collage is rendered: a spinner, a line of text and a bar of
// the tiles drawn so far. It blocks nothing; the windows behind it stay live.
class PleaseWaitWindow : public QDialog
{
    Q_OBJECT
public:
    explicit PleaseWaitWindow(QWidget *parent = nullptr);

    // Shows the window, centred on its parent, and starts the spinner; the bar starts empty.
    void showPleaseWaitWindow();
    // Stops the spinner and hides the window.
    void hidePleaseWaitWindow();
    // The tiles drawn so far of all.
    void setProgress(int done, int total);

    ProgressSpinner *spinner() const { return m_spinner; }
    QProgressBar *progressBar() const { return m_bar; }

protected:
    // Escape does not hide it: it goes when the render is done.
    void reject() override {}
    // Closing it (it has no close button: quitting closes every window) hides it, so that it
    // never holds quitting up; the render is stopped by the quitting itself.
    void closeEvent(QCloseEvent *event) override;

private:
    ProgressSpinner *m_spinner;
    QLabel *m_detail;
    QProgressBar *m_bar;
};

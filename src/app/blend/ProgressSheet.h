#pragma once

#include <QDialog>
#include <QImage>

class QLabel;
class QProgressBar;
class QPushButton;

// The progress sheet of long photo work (blending): a message line, a picture of the work in
// hand, a main and a secondary bar, a spinner and an Abort button, which reports aborted() for
// the work to stop. Window-modal; prepareForStitch() then open(). The work ends it with
// endSheet().
class ProgressSheet : public QDialog
{
    Q_OBJECT
public:
    explicit ProgressSheet(QWidget *parent = nullptr);

    // Before a blend: no picture, no message, the secondary bar hidden, the main bar at 0 of 1
    // and measured, the spinner turning.
    void prepareForStitch();
    // Ends the sheet (its did-end handler orders it out).
    void endSheet();

    void updateProgressMessage(const QString &message);
    // The main bar's value, 0 to 1. Past 0.99 the work is in its final, unmeasured stage: the
    // bar turns indeterminate and animates; otherwise it is measured.
    void updateProgressBar(double value);
    void displayImage(const QImage &image);
    // The Abort button's action.
    void abort() { emit aborted(); }
    // The sheet has ended: order it out.
    void progreeSheetForStitchDidEnd(int returnCode);

    // What it shows, for tests.
    QString message() const;
    QImage image() const { return m_image; }
    double progressBarValue() const { return m_value; }
    bool isProgressBarIndeterminate() const;
    QProgressBar *progressBar() const { return m_bar; }
    QProgressBar *subProgressBar() const { return m_subBar; }
    QProgressBar *indeterminateProgressBar() const { return m_spinner; }
    QPushButton *abortButton() const { return m_abort; }

signals:
    void aborted();

public slots:
    // Escape does not end the sheet: only the work does.
    void reject() override {}

protected:
    // Closing the sheet (quitting closes every window first) is an Abort: the work stops and
    // the sheet goes, so quitting is never held up by running work.
    void closeEvent(QCloseEvent *event) override;

private:
    static constexpr int kSteps = 1000; // the bar's resolution over 0 .. 1

    QLabel *m_message;
    QLabel *m_viewer;
    QProgressBar *m_bar;
    QProgressBar *m_subBar;
    QProgressBar *m_spinner;
    QPushButton *m_abort;
    QImage m_image;
    double m_value = 0;
};

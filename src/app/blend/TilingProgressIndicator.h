#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

// The tiling bar (percent of tiles written), its spinner and a Cancel button, shown while a
// photo is being cut into tiles and hidden otherwise. activeChanged tells the window to show or
// hide its place; Cancel reports cancelRequested.
class TilingProgressIndicator : public QWidget
{
    Q_OBJECT
public:
    explicit TilingProgressIndicator(QWidget *parent = nullptr);

    // Bar at 0, shown, spinner turning.
    void begin();
    void setPercent(double percent);
    // Bar at 0 and hidden, spinner stopped.
    void end();

    bool isActive() const { return m_active; }
    double percent() const { return m_percent; }
    QProgressBar *tilingProgressIndicator() const { return m_bar; }
    QProgressBar *tilingProgressIndicator2() const { return m_spinner; }
    QPushButton *cancelButton() const { return m_cancel; }

signals:
    void activeChanged(bool active);
    void cancelRequested();

private:
    QLabel *m_label;
    QProgressBar *m_bar;
    QProgressBar *m_spinner;
    QPushButton *m_cancel;
    double m_percent = 0;
    bool m_active = false;
};

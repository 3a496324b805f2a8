#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;

// The tiling bar (percent of tiles written) and its spinner, shown while a photo is being cut
// into tiles and hidden otherwise. activeChanged tells the window to show or hide its place.
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

signals:
    void activeChanged(bool active);

private:
    QLabel *m_label;
    QProgressBar *m_bar;
    QProgressBar *m_spinner;
    double m_percent = 0;
    bool m_active = false;
};

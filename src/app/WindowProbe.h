#pragma once

#include "app/StallMeter.h"

#include <QObject>
#include <QPointer>
#include <QString>

class QWidget;
class TessaryView;

// Measures a start of the window for the benchmarks, when $TESSARY_PROBE names a file: the
// time from process start to the first painted main window, the time until every tile shows
// its photo, the longest stall of the main thread meanwhile, the resident memory then, and
// whether the gallery plugin is found. The figures go to the file as one line of JSON and the
// program quits. Without the variable it does nothing.
class WindowProbe : public QObject
{
    Q_OBJECT
public:
    // Null when the probe is not asked for.
    static WindowProbe *createIfRequested(QWidget *mainWindow, TessaryView *collageView, QObject *parent);

    // Milliseconds since the process started (from the kernel's start time of the process).
    static double msSinceProcessStart();
    // Resident memory of this process, in megabytes.
    static double residentMegabytes();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    WindowProbe(QWidget *mainWindow, TessaryView *collageView, const QString &outputPath, QObject *parent);
    void tilesFilled();
    void finish();


    QPointer<QWidget> m_window;
    QString m_output;
    StallMeter m_stalls;
    double m_firstPaintMs = -1;
    double m_tilesFilledMs = -1;
    bool m_finished = false;
};

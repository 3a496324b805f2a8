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
// whether the gallery plugin is found. The figures go to the file as one line of JSON, with the
// moment the probe asks the program to quit, and the program quits. Without the variable it does nothing.
//
// With $TESSARY_PROBE_SCROLL=1 it then also scrolls the photo browser through the whole list a
// page at a time and back, as a person looking through a long list does, and adds the resident
// memory after that, its peak, and the longest stall while scrolling.
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
    // One page of the browser's scroll through the list and back; finishes at the end.
    void scrollStep();
    void finish();


    QPointer<QWidget> m_window;
    QString m_output;
    StallMeter m_stalls;
    double m_firstPaintMs = -1;
    double m_tilesFilledMs = -1;
    double m_startStallMs = -1;
    double m_filledResidentMB = -1;
    bool m_scroll = false;
    int m_scrollDirection = 1;
    bool m_finished = false;
};

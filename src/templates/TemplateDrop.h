#pragma once

#include <QList>
#include <QStringList>
#include <QUrl>

// What is being dropped on a template table, as the window reads it from the drag.
struct TemplateDrop {
    enum class Source { Outside, BuiltInTable, UserTable };
    enum class Operation { Above, On };

    Source source = Source::Outside;
    // Local files dropped from outside (file URLs), in drag order.
    QStringList fileNames;
    bool hasFileNames = false;
    // Other links dropped from outside.
    QList<QUrl> links;
    // For a row dragged from a template table: the row it came from.
    qsizetype sourceRow = -1;

    // Whether a drop on a row means that row rather than the gap before it: only a row of
    // "My Templates" dragged within it swaps with the row it lands on; everything else is
    // inserted before the row, whichever way it was dropped.
    bool landsOnRows() const { return source == Source::UserTable; }
};

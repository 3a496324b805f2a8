#pragma once

#include "templates/TemplateStore.h"
#include "templates/TemplateTable.h"

#include <QImage>
#include <QString>

// The arithmetic of the two template tables that is not widgets: row heights from the
// thumbnails, the selected-row label, and the first built-in template for a photo count.
class TemplateTables
{
public:
    // The row height of a user template that shows no thumbnail.
    static constexpr double kFallbackRowHeight = 16.0;

    // The thumbnail's height in points at the slider's percent. Built-in rows have no fallback
    // (0 for a missing thumbnail); user rows fall back to 16 points.
    static double rowHeight(const TemplateStore::Template &templateData, double sliderPercent, TemplateTable table);
    // The thumbnail's pixel height read from its header; 0 when there is none or it cannot be read.
    static double thumbnailHeight(const TemplateStore::Template &templateData);
    // The template's "thumbnail" data decoded; a null image when there is none or it does not
    // decode. Safe to call from a worker thread on a template shared with the store.
    static QImage thumbnailImage(const TemplateStore::Template &templateData);
    // Templates are numbered from 1 wherever a person sees or gives a number: under the tables
    // and on the command line (tessary-cli template list, apply, delete, render --builtin).
    static qint64 numberOfRow(qsizetype row) { return qint64(row) + 1; }
    // The row a number names; -1 for a number below 1.
    static qsizetype rowOfNumber(qint64 number) { return number >= 1 ? qsizetype(number - 1) : -1; }
    // The label under a table: the row's number, or a single blank when none is selected.
    static QString selectedRowLabel(qsizetype row);
    // The first built-in row whose "nbrModules" equals the photo count exactly; the number of
    // templates (one past the last row) when none does.
    static qsizetype findFirstTemplateMatchingPhotoCount(const TemplateStore::Templates &builtIn, qsizetype photoCount);
};

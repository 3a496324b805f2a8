#pragma once

#include "editor/Annotation.h"
#include "editor/PhotoAdjustments.h"

#include <QImage>
#include <QList>
#include <QRect>
#include <QString>

// One edit of the image editor as a value: what a tool emits when it is applied. apply() is
// pure and thread-safe, so an edit is worked out on a worker thread and the picture at any step
// of the undo history can be made again from the source by applying the edits in order.
struct EditOperation {
    enum Kind { Crop = 0, Straighten, TurnLeft, TurnRight, FlipHorizontal, FlipVertical, Annotate, Adjust };

    Kind kind = Crop;
    QRect crop;                      // Crop: the pixels kept
    double degrees = 0;              // Straighten: clockwise turn, cut to the inscribed rectangle
    QList<Annotation> annotations;   // Annotate: drawn in this order
    PhotoAdjustments adjustments;    // Adjust

    static EditOperation cropTo(const QRect &rect);
    static EditOperation straighten(double degrees);
    static EditOperation turn(Kind kind);
    static EditOperation annotate(const QList<Annotation> &annotations);
    static EditOperation adjust(const PhotoAdjustments &adjustments);

    // The name shown in the undo history and the Undo menu ("Crop", "Straighten 5.0°", ...).
    QString name() const;
    // The picture after this edit. A crop outside the picture or a null picture give it back
    // unchanged.
    QImage apply(const QImage &image) const;
    // The picture size after this edit, without doing it (annotations and adjustments keep it).
    QSize resultSize(const QSize &size) const;

    bool operator==(const EditOperation &) const = default;
};

#pragma once

#include <QImage>
#include <QSize>
#include <QVariantList>

// The picture of a template set on the gallery page: each template of the set drawn from its
// own layout (the layout engine places its modules as the application would), side by side in
// one or more rows, centred on a light card.
class SetPreview
{
public:
    static constexpr QSize kSize{720, 440};

    static QImage render(const QVariantList &templates, int colourSeed, QSize size = kSize);
    // One template alone, fitted into the box.
    static QImage renderTemplate(const QVariantMap &templateData, QSizeF box, int colourSeed);
};

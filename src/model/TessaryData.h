#pragma once

#include <QColor>
#include <QString>
#include <QVariantMap>

#include <memory>

// One module of a collage layout: its size in grid cells, its tile's look and an optional title.
// Its persistent form is the module dictionary that templates carry in "savedTessaryDataModules".
//
// The strings and the border colour are shared, not copied, by initWithModule: the colour is a
// shared object so that "the same colour" is observable, as the layout relies on.
class TessaryData
{
public:
    using ColorRef = std::shared_ptr<const QColor>;

    // The plain initialiser: every number 0, no strings, no colour.
    TessaryData() = default;

    static TessaryData initWithDictionary(const QVariantMap &dictionary);
    static TessaryData initWithModule(const TessaryData &module);
    static TessaryData initDefault();
    // A new UUID in upper-case 8-4-4-4-12 form; a new one each call.
    static QString uid();

    // The module dictionary that initWithDictionary reads back to an equal module.
    QVariantMap dictionaryRepresentation() const;

    // Width and height 2, opaque, no border, no corner radius, white border; file name, title
    // and the empty flag are kept.
    void resetModule();

    QString description() const;

    bool empty() const { return m_empty; }
    void setEmpty(bool v) { m_empty = v; }
    // A null string stands for "no file name" / "no title".
    QString imageFilename() const { return m_imageFilename; }
    void setImageFilename(const QString &v) { m_imageFilename = v; }
    QString title() const { return m_title; }
    void setTitle(const QString &v) { m_title = v; }
    qint64 widthFactor() const { return m_widthFactor; }
    void setWidthFactor(qint64 v) { m_widthFactor = v; }
    qint64 heightFactor() const { return m_heightFactor; }
    void setHeightFactor(qint64 v) { m_heightFactor = v; }
    double tileAlpha() const { return m_tileAlpha; }
    void setTileAlpha(double v) { m_tileAlpha = v; }
    double tileBorderWidth() const { return m_tileBorderWidth; }
    void setTileBorderWidth(double v) { m_tileBorderWidth = v; }
    ColorRef tileBorderColor() const { return m_tileBorderColor; }
    void setTileBorderColor(ColorRef v) { m_tileBorderColor = std::move(v); }
    void setTileBorderColor(const QColor &v) { m_tileBorderColor = std::make_shared<const QColor>(v); }
    double tileCornerRadius() const { return m_tileCornerRadius; }
    void setTileCornerRadius(double v) { m_tileCornerRadius = v; }

    // The border colour, white when none is set.
    QColor borderColorOrWhite() const { return m_tileBorderColor ? *m_tileBorderColor : QColor(Qt::white); }

private:
    bool m_empty = false;
    QString m_imageFilename;
    QString m_title;
    qint64 m_widthFactor = 0;
    qint64 m_heightFactor = 0;
    double m_tileAlpha = 0.0;
    double m_tileBorderWidth = 0.0;
    ColorRef m_tileBorderColor;
    double m_tileCornerRadius = 0.0;
};

#pragma once

#include <QColor>
#include <QWidget>

// The collage view's document view: a flipped canvas (origin top-left, y growing downward, as
// the layout's frames are) sized to the collage, that fills itself with the collage background
// colour and holds the tiles. A clear colour leaves the view behind it showing.
class TessaryDocumentView : public QWidget
{
    Q_OBJECT
public:
    explicit TessaryDocumentView(QWidget *parent = nullptr);

    QColor backgroundColor() const { return m_background; }
    void setBackgroundColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_background = Qt::transparent;
};

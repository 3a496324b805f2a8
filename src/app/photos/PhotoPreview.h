#pragma once

#include <QImage>
#include <QPixmap>
#include <QWidget>

// The preview of the selected photo: the whole picture fitted into the widget and centred, on
// a light sunken card; a quiet "loading" card while the picture is on its way, the "cannot be
// read" mark with the reason in words when the photo cannot be read, and an empty card when
// there is none.
class PhotoPreview : public QWidget
{
    Q_OBJECT
public:
    enum class State { Empty, Loading, Shown, Unreadable };

    explicit PhotoPreview(QWidget *parent = nullptr);

    void setImage(const QImage &image);
    void setLoading();
    // The photo cannot be read; reason says why, in words.
    void setUnreadable(const QString &reason);
    QString reason() const { return m_reason; }
    void clear();
    State state() const { return m_state; }
    const QImage &image() const { return m_image; }

    QSize sizeHint() const override { return QSize(240, 180); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void rescale();

    State m_state = State::Empty;
    QImage m_image;
    QString m_reason;
    QPixmap m_scaled; // m_image at the size it is drawn
};

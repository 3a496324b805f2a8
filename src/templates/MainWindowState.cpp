#include "templates/MainWindowState.h"

#include "foundation/PlistValue.h"
#include "foundation/UserDefaults.h"
#include "model/CoordinateTransform.h"
#include "templates/TemplateSelection.h"

#include <algorithm>

namespace {

bool isInteger(const QVariant &v)
{
    const int t = v.typeId();
    return t == QMetaType::LongLong || t == QMetaType::ULongLong || t == QMetaType::Int || t == QMetaType::UInt;
}

// The frame made to lie wholly inside the area: no larger than it (nor smaller than the
// minimum, which wins on a screen too small for it), then moved in from any edge it crosses.
QRect fitted(QRect frame, const QRect &area, const QSize &minimum)
{
    frame.setWidth(std::max(std::min(frame.width(), area.width()), minimum.width()));
    frame.setHeight(std::max(std::min(frame.height(), area.height()), minimum.height()));
    frame.moveLeft(std::max(area.left(), std::min(frame.left(), area.right() + 1 - frame.width())));
    frame.moveTop(std::max(area.top(), std::min(frame.top(), area.bottom() + 1 - frame.height())));
    return frame;
}

} // namespace

MainWindowState::MainWindowState(UserDefaults &defaults)
    : m_defaults(defaults)
{
}

int MainWindowState::intIn(const QString &key, int count) const
{
    const QVariant v = m_defaults.objectForKey(key);
    if (!isInteger(v))
        return 0;
    const qint64 value = PlistValue::integerValue(v);
    return value >= 0 && value < count ? int(value) : 0;
}

MainWindowState::Collage MainWindowState::collage(const TemplateSelection &selection) const
{
    Collage c;
    if (intIn(TemplateTab, 2) == 1 && selection.savedRow(TemplateTable::User) >= 0)
        c.tab = TemplateTable::User;
    c.coordinateTransform = intIn(CoordinateTransform, ::CoordinateTransform::kCount);
    c.spacingType = intIn(SpacingType, kSpacingTypeCount);
    c.imageFrameStyle = intIn(ImageFrameStyle, kImageFrameStyleCount);
    return c;
}

QRect MainWindowState::windowFrame(const QList<QRect> &screens, const QSize &preferred, const QSize &minimum) const
{
    if (screens.isEmpty())
        return QRect(QPoint(0, 0), preferred.expandedTo(minimum));
    const QVariantList saved = m_defaults.arrayForKey(WindowFrame);
    if (saved.size() == 4 && std::all_of(saved.begin(), saved.end(), isInteger)) {
        const QRect frame(int(PlistValue::integerValue(saved[0])), int(PlistValue::integerValue(saved[1])),
                          int(PlistValue::integerValue(saved[2])), int(PlistValue::integerValue(saved[3])));
        // The screen that shows most of it; none when it lies off every screen.
        qint64 best = 0;
        const QRect *screen = nullptr;
        for (const QRect &area : screens) {
            const QRect shared = area.intersected(frame);
            const qint64 size = qint64(shared.width()) * shared.height();
            if (frame.isValid() && size > best) {
                best = size;
                screen = &area;
            }
        }
        if (screen)
            return fitted(frame, *screen, minimum);
    }
    const QRect &primary = screens.first();
    QRect frame = fitted(QRect(primary.topLeft(), preferred), primary, minimum);
    frame.moveCenter(primary.center());
    return fitted(frame, primary, minimum);
}

bool MainWindowState::windowMaximized() const
{
    return PlistValue::boolValue(m_defaults.objectForKey(WindowMaximized));
}

bool MainWindowState::setTemplateTab(TemplateTable tab)
{
    return m_defaults.setInteger(tab == TemplateTable::User ? 1 : 0, TemplateTab);
}

bool MainWindowState::setCoordinateTransform(int transform)
{
    return m_defaults.setInteger(transform, CoordinateTransform);
}

bool MainWindowState::setSpacingType(int type)
{
    return m_defaults.setInteger(type, SpacingType);
}

bool MainWindowState::setImageFrameStyle(int style)
{
    return m_defaults.setInteger(style, ImageFrameStyle);
}

bool MainWindowState::setWindowFrame(const QRect &frame, bool maximized)
{
    const QVariantList values{qint64(frame.x()), qint64(frame.y()), qint64(frame.width()), qint64(frame.height())};
    return m_defaults.setObject(values, WindowFrame) && m_defaults.setBool(maximized, WindowMaximized);
}

#include "foundation/Preferences.h"

#include "foundation/PlistValue.h"
#include "foundation/PlainColorArchive.h"
#include "foundation/UserDefaults.h"

#include <QFileInfo>

bool Preferences::isPresent(const QString &presenceKey) const
{
    return m_defaults.hasObject(presenceKey);
}

bool Preferences::markPresent(const QString &presenceKey)
{
    if (isPresent(presenceKey))
        return false;
    m_defaults.setBool(false, presenceKey);
    return true;
}

bool Preferences::boolOr(const QString &key, bool fallback) const
{
    const QVariant v = m_defaults.objectForKey(key);
    return v.isValid() ? PlistValue::boolValue(v) : fallback;
}

bool Preferences::addTemplatesDisclosed() const { return boolOr(AddTemplatesDisclosed, false); }
bool Preferences::doNotShowWelcomeWindowAgain() const { return boolOr(DoNotShowWelcomeWindowAgain, false); }
bool Preferences::dontShowAgain() const { return boolOr(DontShowAgain, false); }

double Preferences::collageWidthIncrement() const
{
    const QVariant v = m_defaults.objectForKey(CollageWidthIncrement);
    return v.isValid() ? double(float(PlistValue::integerValue(v))) : 5.0;
}

double Preferences::collageHeightIncrement() const
{
    const QVariant v = m_defaults.objectForKey(CollageHeightIncrement);
    return v.isValid() ? double(float(PlistValue::integerValue(v))) : 5.0;
}

float Preferences::matchingMarginWidth() const { return m_defaults.floatForKey(MatchingMarginWidth); }
qint64 Preferences::blendingMarginWidth() const { return m_defaults.integerForKey(BlendingMarginWidth); }
qint64 Preferences::inputImageScaling() const { return m_defaults.integerForKey(InputImageScaling); }
bool Preferences::megapixelLimit() const { return boolOr(MegapixelLimit, true); }
bool Preferences::insetByCropping() const { return boolOr(InsetByCropping, true); }
bool Preferences::alwaysZoomToFit() const { return boolOr(AlwaysZoomToFit, true); }
bool Preferences::cropResult() const { return boolOr(CropResult, false); }
bool Preferences::uniformlyCrop() const { return boolOr(UniformlyCrop, true); }
bool Preferences::uniformlyCropFit() const { return boolOr(UniformlyCropFit, true); }
bool Preferences::autoOpenStitchedImageFile() const { return boolOr(AutoOpenStitchedImageFile, false); }
QString Preferences::lastSaveFolder() const
{
    const QString folder = m_defaults.stringForKey(LastSaveFolder);
    return !folder.isEmpty() && QFileInfo(folder).isDir() ? folder : QString();
}

bool Preferences::setLastSaveFolder(const QString &folder)
{
    return m_defaults.setObject(folder, LastSaveFolder);
}

bool Preferences::renderEmptyTiles() const { return boolOr(RenderEmptyTiles, false); }
float Preferences::iconSize() const { return m_defaults.floatForKey(IconSize); }

QColor Preferences::tessaryBackgroundColor() const
{
    const QByteArray data = m_defaults.dataForKey(TessaryBackgroundColor);
    if (data.isEmpty())
        return QColor(Qt::transparent);
    return PlainColorArchive::decode(data).value_or(QColor(Qt::transparent));
}

bool Preferences::setTessaryBackgroundColor(const QColor &color)
{
    return m_defaults.setObject(PlainColorArchive::encode(color), TessaryBackgroundColor);
}

qint64 Preferences::imageBrowserSeletion() const { return m_defaults.integerForKey(ImageBrowserSeletion); }
qint64 Preferences::selectedTemplateTableRow() const
{
    const QVariant v = m_defaults.objectForKey(SelectedTemplateTableRow);
    return v.isValid() ? PlistValue::integerValue(v) : kDefaultTemplateRow;
}
qint64 Preferences::selectedUserTemplateTableRow() const { return m_defaults.integerForKey(SelectedUserTemplateTableRow); }

qint64 Preferences::moduleSizeInPoints() const { return m_defaults.integerForKey(ModuleSizeInPoints); }
qint64 Preferences::borderWidth() const { return m_defaults.integerForKey(BorderWidth); }
float Preferences::contentSizeWidth() const { return m_defaults.floatForKey(ContentSizeWidth); }
float Preferences::contentSizeHeight() const { return m_defaults.floatForKey(ContentSizeHeight); }
QVariantList Preferences::savedTessaryDataModules() const { return m_defaults.arrayForKey(SavedTessaryDataModules); }

bool Preferences::resetPreferences()
{
    // One transaction: the eight values are stored together or, when the store cannot be
    // written, none of them (the caller reports defaults().errorString()).
    return m_defaults.setValuesForKeys({
        {BlendingMarginWidth, QVariant::fromValue(qint64(50))},
        {InputImageScaling, QVariant::fromValue(qint64(100))},
        {MegapixelLimit, true},
        {InsetByCropping, true},
        {UniformlyCrop, true},
        {UniformlyCropFit, true},
        {CropResult, false},
        {MatchingMarginWidth, QVariant::fromValue(qint64(0))},
    });
}

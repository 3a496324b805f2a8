#include "model/CollageDocument.h"

#include "foundation/PlistValue.h"
#include "foundation/Preferences.h"
#include "foundation/PropertyList.h"
#include "foundation/UserDefaults.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <limits>

namespace {

const QString kVersionKey = QStringLiteral("TessaryDocumentVersion");
const QString kTemplateKey = QStringLiteral("template");
const QString kPhotosKey = QStringLiteral("photos");
const QString kPathKey = QStringLiteral("path");
const QString kRelativePathKey = QStringLiteral("relativePath");
const QString kAlignmentKey = QStringLiteral("alignment");
const QString kFramingKey = QStringLiteral("framing");
// Alignments 0-4; a document may hold others (from a later version), which read as 0.
constexpr int kAlignmentCount = 5;
const QString kTransformKey = QStringLiteral("coordinateTransform");
const QString kSpacingKey = QStringLiteral("spacingType");
const QString kWidthIncrementKey = QStringLiteral("widthIncrement");
const QString kHeightIncrementKey = QStringLiteral("heightIncrement");
const QString kFrameStyleKey = QStringLiteral("imageFrameStyle");
const QString kBackgroundKey = QStringLiteral("backgroundColor");
const QString kJumbledKey = QStringLiteral("jumbled");
const QString kJumbledFramesKey = QStringLiteral("jumbledFrames");
const QString kModulesKey = QStringLiteral("savedTessaryDataModules");

const QStringList &knownKeys()
{
    static const QStringList keys{kVersionKey,  kTemplateKey,    kPhotosKey, kTransformKey,    kSpacingKey,
                                  kWidthIncrementKey, kHeightIncrementKey, kFrameStyleKey, kBackgroundKey, kJumbledKey, kJumbledFramesKey};
    return keys;
}

bool isInteger(const QVariant &v)
{
    const int t = v.typeId();
    return t == QMetaType::LongLong || t == QMetaType::ULongLong || t == QMetaType::Int || t == QMetaType::UInt;
}

bool isReal(const QVariant &v) { return isInteger(v) || v.typeId() == QMetaType::Double; }

// An optional integer key in [min, max]; false with *error set when present and not one.
bool readInteger(const QVariantMap &map, const QString &key, qint64 min, qint64 max, int &out, QString *error)
{
    if (!map.contains(key))
        return true;
    const QVariant v = map.value(key);
    if (!isInteger(v) || PlistValue::integerValue(v) < min || PlistValue::integerValue(v) > max) {
        *error = QStringLiteral("\"%1\" must be a whole number from %2 to %3").arg(key).arg(min).arg(max);
        return false;
    }
    out = int(PlistValue::integerValue(v));
    return true;
}

QString locate(const QString &absolute, const QString &relative, const QString &documentFolder)
{
    if (!absolute.isEmpty() && QFileInfo(absolute).isFile())
        return absolute;
    if (!relative.isEmpty()) {
        const QString moved = QDir::cleanPath(QDir(documentFolder).filePath(relative));
        if (QFileInfo(moved).isFile())
            return moved;
    }
    return QString();
}

} // namespace

void CollageDocument::setTemplateFromDefaults(UserDefaults &defaults)
{
    static const QStringList keys{Preferences::SavedTessaryDataModules, Preferences::ContentSizeWidth,
                                  Preferences::ContentSizeHeight,       Preferences::ModuleSizeInPoints,
                                  Preferences::BorderWidth,             Preferences::BackgroundColor,
                                  Preferences::BackgroundImage};
    templateData.clear();
    for (const QString &key : keys) {
        const QVariant v = defaults.objectForKey(key);
        if (v.isValid())
            templateData.insert(key, v);
    }
    templateData.insert(QStringLiteral("nbrModules"),
                        qint64(templateData.value(Preferences::SavedTessaryDataModules).toList().size()));
    const Preferences prefs(defaults);
    widthIncrement = prefs.collageWidthIncrement();
    heightIncrement = prefs.collageHeightIncrement();
}

QList<QRectF> CollageDocument::jumbledFramesAt(const QSizeF &size, qsizetype tileCount) const
{
    QList<QRectF> frames;
    if (!jumbled || jumbledFrames.size() != tileCount)
        return frames;
    for (const QRectF &f : jumbledFrames)
        frames.append(QRectF(f.x() * size.width(), f.y() * size.height(), f.width() * size.width(), f.height() * size.height()));
    return frames;
}

void CollageDocument::setPhotos(const QStringList &paths, const QList<int> &alignments, const QList<PhotoFraming> &framings)
{
    photos.clear();
    for (qsizetype i = 0; i < paths.size(); ++i)
        photos.append(Photo{paths[i], paths[i], int(alignments.value(i, 0)), framings.value(i)});
}

QStringList CollageDocument::photoPaths() const
{
    QStringList paths;
    for (const Photo &p : photos)
        paths.append(p.path);
    return paths;
}

QList<int> CollageDocument::photoAlignments() const
{
    QList<int> alignments;
    for (const Photo &p : photos)
        alignments.append(p.alignment);
    return alignments;
}

QList<PhotoFraming> CollageDocument::photoFramings() const
{
    QList<PhotoFraming> framings;
    for (const Photo &p : photos)
        framings.append(p.framing);
    return framings;
}

QVariantMap CollageDocument::toPropertyList(const QString &documentFolder) const
{
    QVariantMap root = otherKeys;
    root.insert(kVersionKey, kFormatVersion);
    root.insert(kTemplateKey, templateData);
    QVariantList photoList;
    const QDir folder(documentFolder);
    for (const Photo &p : photos) {
        const QString absolute = p.path.isEmpty() ? p.storedPath : QFileInfo(p.path).absoluteFilePath();
        QVariantMap entry{{kPathKey, absolute}, {kAlignmentKey, qint64(p.alignment)}};
        if (!p.framing.isNull())
            entry.insert(kFramingKey, p.framing.toVariant());
        if (!absolute.isEmpty())
            entry.insert(kRelativePathKey, folder.relativeFilePath(absolute));
        photoList.append(entry);
    }
    root.insert(kPhotosKey, photoList);
    root.insert(kTransformKey, qint64(coordinateTransform));
    root.insert(kSpacingKey, qint64(spacingType));
    root.insert(kWidthIncrementKey, widthIncrement);
    root.insert(kHeightIncrementKey, heightIncrement);
    root.insert(kFrameStyleKey, qint64(imageFrameStyle));
    root.insert(kBackgroundKey, backgroundColor.name(QColor::HexArgb));
    root.insert(kJumbledKey, jumbled);
    if (jumbled) {
        QVariantList frames;
        for (const QRectF &f : jumbledFrames)
            frames.append(QVariant(QVariantList{f.x(), f.y(), f.width(), f.height()}));
        root.insert(kJumbledFramesKey, frames);
    } else {
        root.remove(kJumbledFramesKey);
    }
    return root;
}

CollageDocument::ReadResult CollageDocument::fromPropertyList(const QVariant &root, const QString &documentFolder)
{
    ReadResult result;
    const auto refuse = [&result](const QString &why) {
        result.error = QStringLiteral("not a collage document: %1").arg(why);
        return result;
    };
    if (root.typeId() != QMetaType::QVariantMap)
        return refuse(QStringLiteral("it holds a %1, not a dictionary").arg(PropertyList::typeName(root)));
    const QVariantMap map = root.toMap();
    if (!isInteger(map.value(kVersionKey)) || PlistValue::integerValue(map.value(kVersionKey)) < 1)
        return refuse(QStringLiteral("\"%1\" is missing or not a version number").arg(kVersionKey));

    CollageDocument doc;
    const QVariant templateValue = map.value(kTemplateKey);
    if (templateValue.typeId() != QMetaType::QVariantMap)
        return refuse(QStringLiteral("\"%1\" is missing or not a dictionary").arg(kTemplateKey));
    doc.templateData = templateValue.toMap();
    if (doc.templateData.value(kModulesKey).typeId() != QMetaType::QVariantList)
        return refuse(QStringLiteral("the template has no \"%1\" array").arg(kModulesKey));

    QString error;
    if (!readInteger(map, kTransformKey, 0, 4, doc.coordinateTransform, &error)
        || !readInteger(map, kSpacingKey, 0, 1, doc.spacingType, &error)
        || !readInteger(map, kFrameStyleKey, 0, 1000, doc.imageFrameStyle, &error))
        return refuse(error);

    for (const auto &[key, out] : {std::pair{kWidthIncrementKey, &doc.widthIncrement}, std::pair{kHeightIncrementKey, &doc.heightIncrement}}) {
        if (!map.contains(key))
            continue;
        const QVariant v = map.value(key);
        if (!isReal(v) || !(PlistValue::doubleValue(v) >= 0 && PlistValue::doubleValue(v) <= 1000))
            return refuse(QStringLiteral("\"%1\" must be a number from 0 to 1000").arg(key));
        *out = PlistValue::doubleValue(v);
    }

    if (map.contains(kBackgroundKey)) {
        const QVariant v = map.value(kBackgroundKey);
        const QColor color = v.typeId() == QMetaType::QString ? QColor::fromString(v.toString()) : QColor();
        if (!color.isValid())
            return refuse(QStringLiteral("\"%1\" is not a colour such as #ffrrggbb").arg(kBackgroundKey));
        doc.backgroundColor = color;
    }

    const QVariant photosValue = map.value(kPhotosKey, QVariantList());
    if (photosValue.typeId() != QMetaType::QVariantList)
        return refuse(QStringLiteral("\"%1\" is not an array").arg(kPhotosKey));
    const QVariantList photoList = photosValue.toList();
    for (qsizetype i = 0; i < photoList.size(); ++i) {
        const QVariantMap entry = photoList[i].toMap();
        const QVariant path = entry.value(kPathKey);
        const QVariant relative = entry.value(kRelativePathKey);
        const bool pathOk = path.typeId() == QMetaType::QString || (!path.isValid() && relative.typeId() == QMetaType::QString);
        if (photoList[i].typeId() != QMetaType::QVariantMap || !pathOk
            || (relative.isValid() && relative.typeId() != QMetaType::QString))
            return refuse(QStringLiteral("photo %1 has no \"%2\" text").arg(i + 1).arg(kPathKey));
        Photo photo;
        if (!readInteger(entry, kAlignmentKey, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(),
                         photo.alignment, &error))
            return refuse(QStringLiteral("photo %1: %2").arg(i + 1).arg(error));
        if (photo.alignment < 0 || photo.alignment >= kAlignmentCount)
            photo.alignment = 0;
        photo.framing = PhotoFraming::fromVariant(entry.value(kFramingKey));
        photo.storedPath = path.toString();
        photo.path = locate(photo.storedPath, relative.toString(), documentFolder);
        if (photo.path.isEmpty()) {
            const QString shown = photo.storedPath.isEmpty() ? relative.toString() : photo.storedPath;
            if (!result.missingPhotos.contains(shown))
                result.missingPhotos.append(shown);
        }
        doc.photos.append(photo);
    }

    doc.jumbled = PlistValue::boolValue(map.value(kJumbledKey));
    if (doc.jumbled) {
        const QVariantList frames = map.value(kJumbledFramesKey).toList();
        for (const QVariant &f : frames) {
            const QVariantList r = f.toList();
            if (f.typeId() != QMetaType::QVariantList || r.size() != 4 || !std::all_of(r.begin(), r.end(), isReal))
                return refuse(QStringLiteral("\"%1\" must hold arrays of x, y, width and height").arg(kJumbledFramesKey));
            doc.jumbledFrames.append(QRectF(PlistValue::doubleValue(r[0]), PlistValue::doubleValue(r[1]),
                                            PlistValue::doubleValue(r[2]), PlistValue::doubleValue(r[3])));
        }
    }

    for (auto it = map.constBegin(); it != map.constEnd(); ++it) {
        if (!knownKeys().contains(it.key()))
            doc.otherKeys.insert(it.key(), it.value());
    }
    result.document = std::move(doc);
    return result;
}

CollageDocument::ReadResult CollageDocument::read(const QString &path)
{
    const PropertyList::ReadResult plist = PropertyList::fromFile(path);
    if (!plist.ok()) {
        ReadResult result;
        result.error = plist.error;
        return result;
    }
    ReadResult result = fromPropertyList(plist.value, QFileInfo(path).absolutePath());
    if (!result.ok())
        result.error = QStringLiteral("'%1' is %2").arg(path, result.error);
    return result;
}

bool CollageDocument::write(const QString &path, QString *error) const
{
    const QVariantMap root = toPropertyList(QFileInfo(path).absolutePath());
    return PropertyList::writeFile(path, root, PropertyList::Format::Xml, error);
}

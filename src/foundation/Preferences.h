#pragma once

#include <QColor>
#include <QString>
#include <QVariantList>

class UserDefaults;

// One small reader per user-defaults key, each with the fallback used when the key has no
// object, and the few writers that belong with them. Every setting of the program is read here.
class Preferences
{
public:
    // Presence keys: only whether they exist matters; the first time, NO is written under them.
    static inline const QString FirstRun = QStringLiteral("FirstRun");
    static inline const QString FirstRunPreferences = QStringLiteral("FirstRunPreferences");
    static inline const QString FirstRunResult = QStringLiteral("FirstRunResult");
    static inline const QString FirstRunEditor = QStringLiteral("FirstRunEditor");
    static inline const QString FirstRunDisclosure = QStringLiteral("FirstRunDisclosure");
    static inline const QString FirstRunLoadFactoryImages = QStringLiteral("FirstRunLoadFactoryImages");

    static inline const QString AddTemplatesDisclosed = QStringLiteral("AddTemplatesDisclosed");
    static inline const QString DoNotShowWelcomeWindowAgain = QStringLiteral("DoNotShowWelcomeWindowAgain");
    static inline const QString DontShowAgain = QStringLiteral("DontShowAgain");
    static inline const QString CollageWidthIncrement = QStringLiteral("CollageWidthIncrement");
    static inline const QString CollageHeightIncrement = QStringLiteral("CollageHeightIncrement");
    static inline const QString MatchingMarginWidth = QStringLiteral("MatchingMarginWidth");
    static inline const QString BlendingMarginWidth = QStringLiteral("BlendingMarginWidth");
    static inline const QString InputImageScaling = QStringLiteral("InputImageScaling");
    static inline const QString MegapixelLimit = QStringLiteral("MegapixelLimit");
    static inline const QString InsetByCropping = QStringLiteral("InsetByCropping");
    static inline const QString AlwaysZoomToFit = QStringLiteral("AlwaysZoomToFit");
    static inline const QString CropResult = QStringLiteral("CropResult");
    static inline const QString UniformlyCrop = QStringLiteral("UniformlyCrop");
    static inline const QString UniformlyCropFit = QStringLiteral("UniformlyCropFit");
    static inline const QString AutoOpenStitchedImageFile = QStringLiteral("AutoOpenStitchedImageFile");
    static inline const QString RenderEmptyTiles = QStringLiteral("RenderEmptyTiles");
    // The folder of the last file saved, where the next save dialog opens.
    static inline const QString LastSaveFolder = QStringLiteral("LastSaveFolder");
    static inline const QString IconSize = QStringLiteral("IconSize");
    static inline const QString TessaryBackgroundColor = QStringLiteral("TessaryBackgroundColor");
    static inline const QString Bookmarks = QStringLiteral("Bookmarks");
    static inline const QString Aligments = QStringLiteral("Aligments");
    // Each photo's hand framing, beside "Aligments" (an empty dictionary for none).
    static inline const QString Framings = QStringLiteral("Framings");
    static inline const QString ImageBrowserSeletion = QStringLiteral("Image Browser Seletion");
    static inline const QString UserTemplates = QStringLiteral("UserTemplates");
    static inline const QString SelectedTemplateTableRow = QStringLiteral("SelectedTemplateTableRow");
    static inline const QString SelectedUserTemplateTableRow = QStringLiteral("SelectedUserTemplateTableRow");
    static inline const QString ImageCache = QStringLiteral("image cache");
    static inline const QString Templates = QStringLiteral("templates");

    // Layout values copied from the chosen template.
    static inline const QString ModuleSizeInPoints = QStringLiteral("moduleSizeInPoints");
    static inline const QString BorderWidth = QStringLiteral("borderWidth");
    static inline const QString ContentSizeWidth = QStringLiteral("contentSizeWidth");
    static inline const QString ContentSizeHeight = QStringLiteral("contentSizeHeight");
    static inline const QString SavedTessaryDataModules = QStringLiteral("savedTessaryDataModules");
    static inline const QString BackgroundColor = QStringLiteral("backgroundColor");
    static inline const QString BackgroundImage = QStringLiteral("backgroundImage");

    // The built-in row shown at the very first start.
    static constexpr qint64 kDefaultTemplateRow = 297;

    explicit Preferences(UserDefaults &defaults) : m_defaults(defaults) {}

    UserDefaults &defaults() const { return m_defaults; }

    // Presence keys.
    bool isPresent(const QString &presenceKey) const;
    // Writes NO under the key when it is absent; returns true when it was absent (the one-time
    // action is due now). On a store that cannot be written it stays due.
    bool markPresent(const QString &presenceKey);

    bool addTemplatesDisclosed() const;
    bool doNotShowWelcomeWindowAgain() const; // only a stored YES counts
    bool dontShowAgain() const;               // only a stored YES counts
    // Percent, widened through single precision; absent reads 5, a stored 0 reads 0.
    double collageWidthIncrement() const;
    double collageHeightIncrement() const;
    float matchingMarginWidth() const;
    qint64 blendingMarginWidth() const;
    qint64 inputImageScaling() const;
    bool megapixelLimit() const;
    bool insetByCropping() const;
    bool alwaysZoomToFit() const;
    bool cropResult() const;
    bool uniformlyCrop() const;
    bool uniformlyCropFit() const;
    bool autoOpenStitchedImageFile() const; // only a stored YES counts
    bool renderEmptyTiles() const;          // only a stored YES counts
    float iconSize() const;
    QColor tessaryBackgroundColor() const;  // clear when absent or unreadable
    bool setTessaryBackgroundColor(const QColor &color);
    qint64 imageBrowserSeletion() const;
    // Empty when absent or when the folder no longer exists.
    QString lastSaveFolder() const;
    bool setLastSaveFolder(const QString &folder);
    qint64 selectedTemplateTableRow() const; // 297 when absent; a stored -1 stands

    qint64 selectedUserTemplateTableRow() const;

    qint64 moduleSizeInPoints() const;
    qint64 borderWidth() const;
    float contentSizeWidth() const;
    float contentSizeHeight() const;
    QVariantList savedTessaryDataModules() const;

    // The preferences reset: the eight values written together, all or none; false when the
    // store could not be written. The homography slider, "AlwaysZoomToFit" and
    // "AutoOpenStitchedImageFile" are left alone.
    bool resetPreferences();

private:
    bool boolOr(const QString &key, bool fallback) const;

    UserDefaults &m_defaults;
};

#include "app/collage/CollageDocumentActions.h"

#include "app/MainWindow.h"
#include "foundation/AlertPresenter.h"
#include "foundation/Paths.h"
#include "foundation/Preferences.h"
#include "foundation/UserDefaults.h"
#include "photos/ImageBookmarks.h"
#include "photos/ImageBrowserController.h"
#include "model/LayoutEngine.h"
#include "templates/TemplateStore.h"
#include "app/collage/CollageControlBar.h"
#include "widgets/SaveFileDialog.h"
#include "app/templates/TemplateTabView.h"
#include "app/collage/TessaryView.h"

#include <QAction>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QSpinBox>

namespace {

const QString kNameFilter = QObject::tr("Tessary collages (*.tessary)");

QFileDialog *makeDialog(QWidget *parent, const QString &title)
{
    auto *dialog = new QFileDialog(parent, title);
    dialog->setObjectName(QStringLiteral("collageDocumentDialog"));
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setNameFilter(kNameFilter);
    dialog->setDirectory(Paths::documentsFolder());
    return dialog;
}

// Beeps and shows one alert with "OK".
void tell(AlertPresenter &alerts, const QString &message, const QString &informative, AlertPresenter::Style style)
{
    alerts.beep();
    AlertPresenter::Alert alert;
    alert.messageText = message;
    alert.informativeText = informative;
    alert.style = style;
    alerts.presentAlert(alert, {});
}

} // namespace

CollageDocumentActions::CollageDocumentActions(MainWindow &window, ImageBrowserController &browser,
                                               UserDefaults &defaults, AlertPresenter &alerts, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_browser(browser)
    , m_defaults(defaults)
    , m_alerts(alerts)
{
    if (QAction *a = window.action(QStringLiteral("saveCollage")))
        connect(a, &QAction::triggered, this, &CollageDocumentActions::saveCurrentCollage);
    if (QAction *a = window.action(QStringLiteral("saveCollageAs")))
        connect(a, &QAction::triggered, this, &CollageDocumentActions::saveCollageAs);
    if (QAction *a = window.action(QStringLiteral("openCollage")))
        connect(a, &QAction::triggered, this, [this] { askToSaveChanges([this] { chooseCollageToOpen(); }); });
    m_recentMenu = window.findChild<QMenu *>(QStringLiteral("openRecentMenu"));
    rebuildRecentMenu();

    // Whatever changes the collage is compared with the saved document.
    TessaryView &view = window.tessaryView();
    connect(&browser.imageBookmarks(), &ImageBookmarks::changed, this, &CollageDocumentActions::collageChanged);
    connect(&view, &TessaryView::layoutChanged, this, &CollageDocumentActions::collageChanged);
    connect(&view, &TessaryView::jumbledChanged, this, &CollageDocumentActions::collageChanged);
    connect(&view, &TessaryView::tessaryBackgroundColorChanged, this, &CollageDocumentActions::collageChanged);
    // The controls count even while a jumbled collage is not laid out again.
    connect(&view, &TessaryView::coordinateTransformChanged, this, &CollageDocumentActions::collageChanged);
    CollageControlBar &bar = window.controlBar();
    for (QComboBox *popUp : {bar.spacingTypePopUp(), bar.imageFrameStylePopUp()})
        connect(popUp, &QComboBox::currentIndexChanged, this, &CollageDocumentActions::collageChanged);
    for (QSpinBox *spacing : {bar.widthSpacing(), bar.heightSpacing()})
        connect(spacing, &QSpinBox::valueChanged, this, &CollageDocumentActions::collageChanged);
    connect(&window.templateTabView(), &TemplateTabView::templateChosen, this, &CollageDocumentActions::collageChanged);
}

CollageDocument CollageDocumentActions::currentCollage() const
{
    CollageDocument doc;
    doc.setTemplateFromDefaults(m_defaults);
    const ImageBookmarks &photos = m_browser.imageBookmarks();
    doc.setPhotos(photos.images(), photos.imageAlignments(), photos.framings());
    const TessaryView &view = m_window.tessaryView();
    doc.coordinateTransform = view.coordinateTransform();
    doc.spacingType = view.spacingType();
    doc.imageFrameStyle = view.imageFrameStyle();
    doc.backgroundColor = view.tessaryBackgroundColor();
    doc.jumbled = view.isJumbled();
    if (doc.jumbled) {
        const CollageLayout &layout = view.currentLayout();
        const QSizeF size = layout.contentSize;
        for (const TileLayout &tile : layout.tiles) {
            if (size.width() > 0 && size.height() > 0)
                doc.jumbledFrames.append(QRectF(tile.frame.x() / size.width(), tile.frame.y() / size.height(),
                                                tile.frame.width() / size.width(), tile.frame.height() / size.height()));
        }
    }
    return doc;
}

bool CollageDocumentActions::saveCollage(const QString &path)
{
    QString error;
    if (!currentCollage().write(path, &error)) {
        tell(m_alerts, QStringLiteral("The collage could not be saved."), error, AlertPresenter::Style::Warning);
        return false;
    }
    becomeCurrent(path);
    return true;
}

bool CollageDocumentActions::openCollage(const QString &path)
{
    const CollageDocument::ReadResult read = CollageDocument::read(path);
    if (!read.ok()) {
        tell(m_alerts, QStringLiteral("The collage could not be opened."), read.error, AlertPresenter::Style::Warning);
        return false;
    }
    apply(*read.document);
    becomeCurrent(path);
    if (!read.missingPhotos.isEmpty()) {
        const QString message = read.missingPhotos.size() == 1
            ? QStringLiteral("1 photo of the collage was not found.")
            : QStringLiteral("%1 photos of the collage were not found.").arg(read.missingPhotos.size());
        tell(m_alerts, message, QStringLiteral("Their tiles are left empty:\n%1").arg(read.missingPhotos.join(QLatin1Char('\n'))),
             AlertPresenter::Style::Informational);
    }
    return true;
}

void CollageDocumentActions::apply(const CollageDocument &doc)
{
    m_applying = true;
    TessaryView &view = m_window.tessaryView();
    // A jumbled collage is not laid out again; leave that state first.
    if (view.isJumbled())
        view.unjumble();
    if (!TemplateStore::setUserDefaultsFromDataDictionary(m_defaults, doc.templateData, &view.layoutEngine()))
        m_window.tessaryView().templateStore().reportWriteFailure(QStringLiteral("The template could not be applied."),
                                                                  m_defaults.errorString());
    m_defaults.setDouble(doc.widthIncrement, Preferences::CollageWidthIncrement);
    m_defaults.setDouble(doc.heightIncrement, Preferences::CollageHeightIncrement);

    // The photo list: the document's photos in order; a missing one is a blank module.
    QList<qsizetype> all;
    for (qsizetype i = 0; i < m_browser.count(); ++i)
        all.append(i);
    m_browser.removeItemsAtIndexes(all, /*keepFiles=*/true);
    {
        const ImageBookmarks::Batch batch(m_browser.imageBookmarks());
        for (const CollageDocument::Photo &photo : doc.photos) {
            const QString path = photo.path.isEmpty() ? m_browser.blankImage() : photo.path;
            ImageBookmarks &list = m_browser.imageBookmarks();
            const qsizetype before = list.count();
            list.addBookmarkForPath(path, photo.alignment);
            if (list.count() > before && !photo.framing.isNull())
                list.setFraming(photo.framing, list.count() - 1);
        }
    }

    // The controls, so they show what the collage now is; each relays the collage out.
    CollageControlBar &bar = m_window.controlBar();
    const QSignalBlocker blockWidth(bar.widthSpacing());
    const QSignalBlocker blockHeight(bar.heightSpacing());
    bar.widthSpacing()->setValue(int(doc.widthIncrement));
    bar.heightSpacing()->setValue(int(doc.heightIncrement));
    if (doc.spacingType < bar.spacingTypePopUp()->count())
        bar.spacingTypePopUp()->setCurrentIndex(doc.spacingType);
    if (doc.imageFrameStyle < bar.imageFrameStylePopUp()->count())
        bar.imageFrameStylePopUp()->setCurrentIndex(doc.imageFrameStyle);
    if (view.spacingType() != doc.spacingType)
        view.setSpacingType(doc.spacingType);
    if (view.imageFrameStyle() != doc.imageFrameStyle)
        view.setImageFrameStyle(doc.imageFrameStyle);
    view.setTessaryBackgroundColor(doc.backgroundColor);
    view.setCoordinateTransform(doc.coordinateTransform);
    view.setup();
    m_browser.reloadData();
    view.reloadData();
    const CollageLayout &layout = view.currentLayout();
    if (const QList<QRectF> frames = doc.jumbledFramesAt(layout.contentSize, qsizetype(layout.tiles.size())); !frames.isEmpty())
        view.jumbleTo(frames);
    m_applying = false;
}

void CollageDocumentActions::becomeCurrent(const QString &path)
{
    m_tracker.becomeCurrent(path, currentCollage());
    addRecent(m_tracker.path());
    updateTitle();
    emit documentStateChanged();
}

void CollageDocumentActions::collageChanged()
{
    if (m_applying || !m_tracker.hasDocument())
        return;
    if (!m_tracker.update(currentCollage()))
        return;
    updateTitle();
    emit documentStateChanged();
}

void CollageDocumentActions::updateTitle()
{
    if (!m_tracker.hasDocument()) {
        m_window.setWindowTitle(QStringLiteral("Tessary"));
        m_window.setWindowModified(false);
        return;
    }
    m_window.setWindowTitle(QStringLiteral("%1[*] — Tessary").arg(QFileInfo(m_tracker.path()).completeBaseName()));
    m_window.setWindowModified(m_tracker.isModified());
}

QStringList CollageDocumentActions::recentDocuments() const
{
    QStringList recent;
    for (const QVariant &v : m_defaults.objectForKey(kRecentKey).toList()) {
        if (v.typeId() == QMetaType::QString)
            recent.append(v.toString());
    }
    return recent;
}

void CollageDocumentActions::addRecent(const QString &path)
{
    QStringList recent = recentDocuments();
    recent.removeAll(path);
    recent.prepend(path);
    QVariantList stored;
    for (const QString &p : recent.mid(0, kMaxRecent))
        stored.append(p);
    m_defaults.setObject(stored, kRecentKey);
    rebuildRecentMenu();
}

void CollageDocumentActions::rebuildRecentMenu()
{
    if (!m_recentMenu)
        return;
    m_recentMenu->clear();
    const QStringList recent = recentDocuments();
    for (const QString &path : recent) {
        QAction *a = m_recentMenu->addAction(QFileInfo(path).fileName());
        a->setToolTip(path);
        a->setData(path);
        connect(a, &QAction::triggered, this, [this, path] { openCollageAskingFirst(path); });
    }
    m_recentMenu->setEnabled(!recent.isEmpty());
}

void CollageDocumentActions::saveCollageAs()
{
    // Asks before replacing, about the name with the suffix Qt adds.
    auto *dialog = new SaveFileDialog(&m_window, tr("Save Collage As"));
    dialog->setObjectName(QStringLiteral("collageDocumentDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setNameFilter(kNameFilter);
    dialog->setDirectory(Paths::documentsFolder());
    dialog->setDefaultSuffix(CollageDocument::kFileSuffix);
    if (m_tracker.hasDocument())
        dialog->selectFile(m_tracker.path());
    else
        dialog->selectFile(tr("Collage.tessary"));
    connect(dialog, &SaveFileDialog::targetChosen, this, [this](const QString &file) { saveCollage(file); });
    dialog->open();
}

void CollageDocumentActions::chooseCollageToOpen()
{
    QFileDialog *dialog = makeDialog(&m_window, tr("Open Collage"));
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString &file) { openCollage(file); });
    dialog->open();
}

void CollageDocumentActions::saveCurrentCollage()
{
    if (m_tracker.hasDocument())
        saveCollage(m_tracker.path());
    else
        saveCollageAs();
}

void CollageDocumentActions::openCollageAskingFirst(const QString &path)
{
    askToSaveChanges([this, path] { openCollage(path); });
}

void CollageDocumentActions::askToSaveChanges(const std::function<void()> &then)
{
    // The collage may have changed since the last signal (a photo's alignment, say).
    collageChanged();
    if (!m_tracker.isModified()) {
        then();
        return;
    }
    if (m_asking)
        return; // the question is already on the window
    m_asking = true;
    AlertPresenter::Alert alert;
    alert.messageText = tr("Do you want to save the changes to the collage “%1”?")
                            .arg(QFileInfo(m_tracker.path()).completeBaseName());
    alert.informativeText = tr("Your changes will be lost if you don't save them.");
    alert.defaultButton = tr("Save");
    alert.alternateButton = tr("Cancel");
    alert.otherButton = tr("Don't Save");
    m_alerts.presentAlert(alert, [this, then](int response) {
        m_asking = false;
        if (response == AlertPresenter::AlternateButton)
            return;
        if (response == AlertPresenter::DefaultButton && !saveCollage(m_tracker.path()))
            return;
        then();
    });
}

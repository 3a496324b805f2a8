#include "ResourceCatalog.h"

#include "AiffWriter.h"
#include "DiagramPainter.h"
#include "FlowerPainter.h"
#include "HarpSynth.h"
#include "ImageEncoding.h"
#include "LandscapePainter.h"
#include "ObjectPainter.h"
#include "SeascapePainter.h"
#include "TexturePainter.h"

namespace {

enum class Scene {
    Hills, Mountains, Lavender, Forest, Dunes,
    Sunset, Beach, Boats, Cloudscape, Night,
    Wood, Pebbles, Marble, SandRipples, Fabric, Leaves,
    Fruit, HotAirBalloons, PartyBalloons, Lanterns, Bokeh,
};

struct PhotoPlan
{
    Scene scene;
    int variant;
    int width;
    int height;
};

// The factory photos in order: neighbours differ in subject and shape, and the set mixes
// 4:3, 3:2, portrait, square and panoramic pictures of 1.5 to 6 megapixels.
constexpr PhotoPlan photoPlans[] = {
    {Scene::Hills, 0, 3000, 2000},          {Scene::Sunset, 0, 2400, 1600},
    {Scene::Fruit, 0, 1800, 1800},          {Scene::Mountains, 0, 2560, 1920},
    {Scene::HotAirBalloons, 0, 1536, 2048}, {Scene::Wood, 0, 1600, 1200},
    {Scene::Beach, 0, 3600, 1200},          {Scene::Leaves, 0, 1400, 1400},
    {Scene::Lavender, 0, 2400, 1600},       {Scene::Lanterns, 0, 1200, 1800},
    {Scene::Cloudscape, 0, 3000, 1000},     {Scene::Pebbles, 0, 1800, 1200},
    {Scene::Boats, 0, 2048, 1536},          {Scene::Forest, 0, 1600, 2400},
    {Scene::Dunes, 0, 4200, 1400},          {Scene::Fabric, 0, 1400, 1400},
    {Scene::Night, 0, 2400, 1600},          {Scene::PartyBalloons, 0, 1200, 1600},
    {Scene::Mountains, 1, 3600, 1200},      {Scene::Fruit, 1, 2048, 1536},
    {Scene::Marble, 0, 1800, 1800},         {Scene::Sunset, 1, 1600, 1200},
    {Scene::Bokeh, 0, 1800, 1200},          {Scene::Hills, 1, 2560, 1920},
    {Scene::Boats, 1, 1200, 1800},          {Scene::SandRipples, 0, 2200, 2200},
    {Scene::HotAirBalloons, 1, 3000, 2000}, {Scene::Leaves, 1, 1800, 1200},
    {Scene::Night, 1, 3000, 2000},          {Scene::Wood, 1, 1200, 1600},
    {Scene::Cloudscape, 1, 2400, 1600},     {Scene::Lanterns, 1, 2400, 1600},
    {Scene::Fabric, 1, 1600, 1200},         {Scene::Beach, 1, 1536, 2048},
    {Scene::Mountains, 2, 2048, 1536},      {Scene::Pebbles, 1, 1400, 1400},
    {Scene::Dunes, 1, 2400, 1600},          {Scene::Fruit, 2, 1200, 1600},
    {Scene::Hills, 2, 3600, 1200},          {Scene::Forest, 1, 1536, 2048},
    {Scene::Sunset, 2, 2000, 3000},         {Scene::Boats, 2, 2400, 800},
    {Scene::Wood, 2, 1800, 1800},           {Scene::Lavender, 1, 3000, 1000},
    {Scene::Fabric, 2, 1800, 1200},         {Scene::Bokeh, 1, 1600, 1200},
    {Scene::Mountains, 3, 4200, 1400},      {Scene::Hills, 3, 2048, 1536},
    {Scene::Cloudscape, 2, 1800, 1800},
};
static_assert(std::size(photoPlans) == ResourceCatalog::factoryPhotoCount);

QImage paintScene(const PhotoPlan &plan, quint32 seed)
{
    const SceneRequest request{QSize(plan.width, plan.height), seed, plan.variant};
    switch (plan.scene) {
    case Scene::Hills: return LandscapePainter::hills(request);
    case Scene::Mountains: return LandscapePainter::mountains(request);
    case Scene::Lavender: return LandscapePainter::lavender(request);
    case Scene::Forest: return LandscapePainter::forest(request);
    case Scene::Dunes: return LandscapePainter::dunes(request);
    case Scene::Sunset: return SeascapePainter::sunset(request);
    case Scene::Beach: return SeascapePainter::beach(request);
    case Scene::Boats: return SeascapePainter::boats(request);
    case Scene::Cloudscape: return SeascapePainter::cloudscape(request);
    case Scene::Night: return SeascapePainter::night(request);
    case Scene::Wood: return TexturePainter::wood(request);
    case Scene::Pebbles: return TexturePainter::pebbles(request);
    case Scene::Marble: return TexturePainter::marble(request);
    case Scene::SandRipples: return TexturePainter::sandRipples(request);
    case Scene::Fabric: return TexturePainter::fabric(request);
    case Scene::Leaves: return TexturePainter::leaves(request);
    case Scene::Fruit: return ObjectPainter::fruit(request);
    case Scene::HotAirBalloons: return ObjectPainter::hotAirBalloons(request);
    case Scene::PartyBalloons: return ObjectPainter::partyBalloons(request);
    case Scene::Lanterns: return ObjectPainter::lanterns(request);
    case Scene::Bokeh: return ObjectPainter::bokeh(request);
    }
    return {};
}

} // namespace

std::vector<ResourceJob> ResourceCatalog::all()
{
    std::vector<ResourceJob> jobs;
    addFactoryPhotos(jobs);
    addFlowers(jobs);
    addPictures(jobs);
    addSound(jobs);
    return jobs;
}

void ResourceCatalog::addFactoryPhotos(std::vector<ResourceJob> &jobs)
{
    for (int i = 0; i < factoryPhotoCount; ++i) {
        const PhotoPlan plan = photoPlans[i];
        const quint32 seed = 0x7e55a000U + quint32(i) * 7919U;
        jobs.push_back({QStringLiteral("images-%1.jpg").arg(i), double(plan.width) * plan.height / 1e6,
                        [plan, seed](QImage *picture) {
                            *picture = paintScene(plan, seed);
                            return ImageEncoding::jpeg(*picture);
                        }});
    }
}

void ResourceCatalog::addFlowers(std::vector<ResourceJob> &jobs)
{
    const QSize sizes[] = {QSize(1600, 1200), QSize(1200, 1600), QSize(1500, 1500)};
    for (int i = 0; i < flowerCount; ++i) {
        const SceneRequest request{sizes[i % 3], 0xf10e0000U + quint32(i) * 104729U, i};
        jobs.push_back({QStringLiteral("flower-%1.jpg").arg(i), double(request.size.width()) * request.size.height() / 1e6,
                        [request](QImage *picture) {
                            *picture = FlowerPainter::paint(request);
                            return ImageEncoding::jpeg(*picture);
                        }});
    }
}

void ResourceCatalog::addPictures(std::vector<ResourceJob> &jobs)
{
    using Paint = QImage (*)();
    using Encode = QByteArray (*)(const QImage &);
    const struct {
        const char *name;
        Paint paint;
        Encode encode;
    } pictures[] = {
        {"blank.png", DiagramPainter::blank, ImageEncoding::png},
        {"defaultImage.png", DiagramPainter::placeholder, ImageEncoding::png},
        {"ximage.png", DiagramPainter::cannotEdit, ImageEncoding::png},
        {"MatchingMarginWidth.tif", DiagramPainter::matchingMargin, ImageEncoding::tiff},
        {"BlendingMarginWidth.tif", DiagramPainter::blendingMargin, ImageEncoding::tiff},
        {"InputImageScaling.tif", DiagramPainter::inputScaling, ImageEncoding::tiff},
        {"HomographyScaling.tif", DiagramPainter::homographyScaling, ImageEncoding::tiff},
        {"CropResult.tif", DiagramPainter::cropResult, ImageEncoding::tiff},
        {"UniformlyCrop.png", DiagramPainter::uniformCrop, ImageEncoding::png},
        {"xcircle.tiff", DiagramPainter::crossedCircle, ImageEncoding::tiff},
    };
    for (const auto &picture : pictures) {
        const Paint paint = picture.paint;
        const Encode encode = picture.encode;
        jobs.push_back({QString::fromLatin1(picture.name), 0.05, [paint, encode](QImage *out) {
                            *out = paint();
                            return encode(*out);
                        }});
    }
}

void ResourceCatalog::addSound(std::vector<ResourceJob> &jobs)
{
    jobs.push_back({QStringLiteral("harp.aif"), 0.3, [](QImage *) {
                        return AiffWriter::write(HarpSynth::strummedChord(0x4a59U), HarpSynth::channels, HarpSynth::sampleRate);
                    }});
}

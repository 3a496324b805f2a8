#pragma once

#include "ResourceJob.h"

#include <vector>

// Every resource the application ships that is painted or synthesised here: the factory
// photos, the sample flowers, the placeholder and blank pictures, the help diagrams and the
// completion sound.
class ResourceCatalog
{
public:
    static std::vector<ResourceJob> all();
    static constexpr int factoryPhotoCount = 49;
    static constexpr int flowerCount = 9;

private:
    static void addFactoryPhotos(std::vector<ResourceJob> &jobs);
    static void addFlowers(std::vector<ResourceJob> &jobs);
    static void addPictures(std::vector<ResourceJob> &jobs);
    static void addSound(std::vector<ResourceJob> &jobs);
};

#include "CollageShape.h"

const std::vector<CollageShape> &CollageShape::all()
{
    static const std::vector<CollageShape> shapes = {
        {QStringLiteral("square"), 1.0},
        {QStringLiteral("4:3"), 4.0 / 3.0},
        {QStringLiteral("3:2"), 3.0 / 2.0},
        {QStringLiteral("16:9"), 16.0 / 9.0},
        {QStringLiteral("3:4"), 3.0 / 4.0},
        {QStringLiteral("2:3"), 2.0 / 3.0},
        {QStringLiteral("3:1"), 3.0},
        {QStringLiteral("4:1"), 4.0},
        {QStringLiteral("1:3"), 1.0 / 3.0},
    };
    return shapes;
}

CollageShape CollageShape::named(const QString &name)
{
    for (const CollageShape &shape : all()) {
        if (shape.name == name)
            return shape;
    }
    return {};
}

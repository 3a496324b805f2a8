#include "foundation/DisclosureFold.h"

double DisclosureFold::sheetHeight(double savedHeight, bool disclosed, double viewHeight, double viewOriginY)
{
    if (disclosed)
        return savedHeight;
    return savedHeight - viewHeight + viewOriginY * 0.5;
}

double DisclosureFold::verticalOrigin(double containerHeight, double viewTop, double viewHeight)
{
    return containerHeight - (viewTop + viewHeight);
}

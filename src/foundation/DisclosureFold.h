#pragma once

// The arithmetic of a sheet whose bottom part folds away under a disclosure button. The sheet
// keeps the frame it was laid out with (everything shown); folding takes the folding part's
// height off that and gives back half of the part's vertical origin, the distance from the
// sheet's bottom edge up to the part (measured upward from that edge).
class DisclosureFold
{
public:
    // The sheet's height: the saved height when disclosed, otherwise
    // savedHeight - viewHeight + viewOriginY * 0.5.
    static double sheetHeight(double savedHeight, bool disclosed, double viewHeight, double viewOriginY);
    // The vertical origin measured upward from the container's bottom edge, for a part whose
    // top and height are measured downward from the container's top edge.
    static double verticalOrigin(double containerHeight, double viewTop, double viewHeight);
};

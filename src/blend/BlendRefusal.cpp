#include "blend/BlendRefusal.h"

BlendRefusal BlendRefusal::check(PhotoBlender::Arrangement arrangement, qsizetype photoCount)
{
    BlendRefusal refusal;
    if (photoCount <= 0) {
        refusal.kind = Kind::Beep;
    } else if (arrangement == PhotoBlender::Arrangement::Square && PhotoBlender::squareSide(photoCount) == 0) {
        refusal.kind = Kind::Alert;
        refusal.alert.messageText = QStringLiteral("There must be enough images to make a perfect square.");
        refusal.alert.informativeText = QStringLiteral("4 = 2x2, 9 = 3x3 or 16 = 4x4");
        refusal.alert.style = AlertPresenter::Style::Critical;
    }
    return refusal;
}

#include "capture/ClipFrames.h"

#include "capture/SampleMeeting.h"
#include "themes/KelpClock.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp {

Recorder::Clip clipNamed(const QString &name, const QImage &customPicture)
{
    for (const Recorder::Clip &clip : Recorder::clips(customPicture)) {
        if (clip.name == name)
            return clip;
    }
    return {};
}

QImage blankFrame(double density)
{
    QImage image((QSizeF(Recorder::canvas) * density).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    return image;
}

QImage frameOf(const Recorder::Frame &frame, double t, double density)
{
    QImage image = blankFrame(density);
    QPainter painter(&image);
    frame(painter, t);
    return image;
}

OverlayScene recordedScene(const QString &theme, bool ring, const QImage &customPicture)
{
    return {MeetingContent{sampleMeeting(u"record"_s, Recorder::reference() + 52), {}},
            OverlayTheme::named(theme),
            {.ringCountdown = ring},
            {.animate = true, .customDim = 0.45, .customPicture = customPicture, .backdrop = KelpClock::backdrop}};
}

QImage pictureOf(const OverlayScene &scene, double t, double density)
{
    QImage image = blankFrame(density);
    QPainter painter(&image);
    scene.paint(painter, Recorder::canvas, Recorder::reference() + t);
    return image;
}

QRect differentPart(const QImage &a, const QImage &b, int tolerance)
{
    QRect result;
    for (int y = 0; y < a.height(); ++y) {
        const auto *one = reinterpret_cast<const QRgb *>(a.constScanLine(y));
        const auto *other = reinterpret_cast<const QRgb *>(b.constScanLine(y));
        for (int x = 0; x < a.width(); ++x) {
            const int most =
                std::max({std::abs(qRed(one[x]) - qRed(other[x])), std::abs(qGreen(one[x]) - qGreen(other[x])),
                          std::abs(qBlue(one[x]) - qBlue(other[x]))});
            if (most > tolerance)
                result |= QRect(x, y, 1, 1);
        }
    }
    return result;
}

} // namespace kelp

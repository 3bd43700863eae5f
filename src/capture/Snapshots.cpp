#include "capture/Snapshots.h"

#include "capture/ImageFile.h"
#include "capture/SampleMeeting.h"
#include "overlay/OverlayScene.h"
#include "shell/MenuBarIcon.h"
#include "themes/KelpClock.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace kelp::Snapshots {

namespace {

constexpr QSize canvas(1440, 900);
constexpr double secondsAhead = 47;
constexpr double customDim = 0.45;

constexpr int barIconSize = 36;
constexpr int bigIconSize = 288;
constexpr float lightBar = 0.93F;
constexpr float darkBar = 0.12F;

QImage still(const OverlayTheme &theme, bool ring, Instant now, const QImage &customPicture)
{
    const OverlayScene scene{MeetingContent{sampleMeeting(u"snapshot"_s, now + secondsAhead), {}},
                             theme,
                             {.ringCountdown = ring},
                             {.customDim = customDim, .customPicture = customPicture, .backdrop = KelpClock::backdrop}};
    QImage image(canvas, QImage::Format_RGB32);
    QPainter painter(&image);
    scene.paint(painter, canvas, now);
    return image;
}

QImage barIcon(int size, float white, const QColor &colour)
{
    QImage image(size, size, QImage::Format_RGB32);
    image.fill(QColor::fromRgbF(white, white, white));
    QPainter painter(&image);
    MenuBarIcon::paint(painter, QSizeF(size, size), {}, colour);
    return image;
}

} // namespace

void render(const QString &folder, Instant now, const QImage &customPicture)
{
    const auto save = [&](const QImage &image, const QString &name) {
        saveImage(image, folder + u'/' + name + u".png"_s);
    };
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        save(still(theme, false, now, customPicture), theme.id);
        save(still(theme, true, now, customPicture), theme.id + u"-ring"_s);
    }
    save(barIcon(barIconSize, lightBar, Qt::black), u"menubar-light"_s);
    save(barIcon(barIconSize, darkBar, Qt::white), u"menubar-dark"_s);
    save(barIcon(bigIconSize, lightBar, Qt::black), u"menubar-big"_s);
}

} // namespace kelp::Snapshots

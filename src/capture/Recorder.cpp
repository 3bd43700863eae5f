#include "capture/Recorder.h"

#include "base/Clock.h"
#include "base/Logging.h"
#include "capture/Hero.h"
#include "capture/ImageFile.h"
#include "capture/OverlayFilm.h"
#include "capture/Progress.h"
#include "capture/SampleMeeting.h"
#include "capture/SocialPicture.h"
#include "capture/VideoWriter.h"
#include "themes/KelpClock.h"

#include <QDateTime>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp::Recorder {

namespace {

constexpr double secondsAhead = 52;
constexpr double customDim = 0.45;
constexpr int jpegQuality = 82;

constexpr double themeSeconds = 8;
constexpr double themePoster = 1.5;

const auto pictureName = u"og"_s;

void warn(const QString &line)
{
    std::fprintf(stderr, "kelp: %s\n", line.toLocal8Bit().constData());
}

void print(Progress &progress, const QString &line)
{
    progress.clear();
    std::puts(line.toLocal8Bit().constData());
    std::fflush(stdout);
}

/// For people, beside what the output has to say: names that do not exist, and what is missing on this machine.
void complain(const QStringList &only, const std::vector<Clip> &known)
{
    QStringList names;
    for (const Clip &clip : known)
        names.append(clip.name);
    const bool wantsClip = only.isEmpty() || std::any_of(only.begin(), only.end(),
                                                         [&](const QString &name) { return names.contains(name); });
    names.append(pictureName);
    for (const QString &name : only) {
        if (!names.contains(name))
            warn(u"there is no \"%1\"; there are %2"_s.arg(name, names.join(u", "_s)));
    }
    if (const QString packages = wantsClip ? VideoWriter::missing() : QString(); !packages.isEmpty())
        warn(packages);
}

OverlayScene scene(const OverlayTheme &theme, bool ring, const QImage &customPicture)
{
    return {MeetingContent{sampleMeeting(u"record"_s, reference() + secondsAhead), {}},
            theme,
            {.ringCountdown = ring},
            {.animate = true, .customDim = customDim, .customPicture = customPicture, .backdrop = KelpClock::backdrop}};
}

Frame themeFrames(const OverlayTheme &theme, bool ring, const QImage &customPicture)
{
    return [film = std::make_shared<OverlayFilm>(scene(theme, ring, customPicture), canvas)](
               QPainter &painter, double t) { return film->paint(painter, reference() + t); };
}

} // namespace

Instant reference()
{
    return Instant::fromDateTime(QDateTime(QDate(2025, 10, 29), QTime(9, 59, 8)));
}

std::vector<Clip> clips(const QImage &customPicture)
{
    std::vector<Clip> all;
    all.push_back({u"hero"_s, Hero::seconds, Hero::poster, [customPicture] {
                       const auto hero = std::make_shared<Hero>(
                           scene(OverlayTheme::named(u"aurora"_s), false, customPicture), reference());
                       return [hero](QPainter &painter, double t) {
                           hero->paint(painter, t);
                           return true;
                       };
                   }});
    const auto add = [&](const QString &name, const OverlayTheme &theme, bool ring) {
        all.push_back({name, themeSeconds, themePoster,
                       [theme, ring, customPicture] { return themeFrames(theme, ring, customPicture); }});
    };
    for (const OverlayTheme &theme : OverlayTheme::all())
        add(theme.id, theme, false);
    add(u"ring"_s, OverlayTheme::named(u"space"_s), true);
    return all;
}

void record(const Clip &clip, const QString &folder, Progress &progress, const Clock &clock)
{
    const qint64 count = clip.frameCount();
    const QString path = folder + u'/' + clip.name;
    auto writer = VideoWriter::open(path + u".mp4"_s, pixels, framesPerSecond);
    if (!writer) {
        qCDebug(logCapture).noquote() << writer.error();
        progress.skip(count);
        return print(progress, u"Could not create "_s + clip.name + u".mp4"_s);
    }
    const Frame frame = clip.frames();
    QImage image(pixels, QImage::Format_RGB32);
    image.setDevicePixelRatio(density);
    for (qint64 i = 0; i < count; ++i) {
        QPainter painter(&image);
        const bool changed = frame(painter, static_cast<double>(i) / framesPerSecond);
        painter.end();
        if (i == std::llround(clip.poster * framesPerSecond))
            saveImage(image, path + u".jpg"_s, jpegQuality);
        if (!(changed ? (*writer)->append(image) : (*writer)->repeat())) {
            progress.skip(count - i - 1);
            break;
        }
        progress.step(clip.name, i, count, clock.now());
    }
    if (const auto finished = (*writer)->finish(); !finished)
        return print(progress, u"Video error: "_s + finished.error());
    print(progress, u"Wrote %1.mp4 (%2 frames)"_s.arg(clip.name).arg(count));
}

void run(const QString &folder, const QStringList &only, const QImage &customPicture, const Clock &clock)
{
    std::vector<Clip> wanted = clips(customPicture);
    complain(only, wanted);
    std::erase_if(wanted, [&](const Clip &clip) { return !only.isEmpty() && !only.contains(clip.name); });
    qint64 frames = 0;
    for (const Clip &clip : wanted)
        frames += clip.frameCount();
    Progress progress(frames, clock.now());
    for (const Clip &clip : wanted)
        record(clip, folder, progress, clock);
    if (only.isEmpty() || only.contains(pictureName))
        saveImage(socialPicture(), folder + u'/' + pictureName + u".jpg"_s, jpegQuality);
}

} // namespace kelp::Recorder

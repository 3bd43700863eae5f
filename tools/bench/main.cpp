// kelp-bench: shows the overlay on the displays there are, as Kelp does, and prints what it costs as one line of
// "name value" pairs. tools/bench/run starts it once per theme, so that nothing of another theme is in memory.

#include "OverlayMeter.h"

#include "base/Clock.h"
#include "base/Memory.h"
#include "overlay/OverlayController.h"
#include "overlay/OverlayView.h"
#include "platform/MusicPlayers.h"
#include "platform/Platform.h"
#include "platform/ScreenCover.h"
#include "platform/UrlOpener.h"
#include "preferences/Preferences.h"
#include "sound/ChildSoundPlayer.h"
#include "sound/MusicControl.h"
#include "sound/OverlayMusic.h"
#include "sound/OverlaySounds.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

using namespace Qt::StringLiterals;
using namespace kelp;

namespace {

/// Milliseconds of the processor, all threads.
double cpuTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// Memory that this process has written to and shares with none, in MB. What it has only read of libraries is left
/// aside: whether that counts as its own depends on who else runs.
double privateMemory()
{
    QFile rollup(u"/proc/self/smaps_rollup"_s);
    if (!rollup.open(QIODevice::ReadOnly))
        return 0;
    double kilobytes = 0;
    for (const QByteArray &line : rollup.readAll().split('\n')) {
        if (line.startsWith("Private_Dirty:"))
            kilobytes += line.simplified().split(' ').at(1).toDouble();
    }
    return kilobytes / 1024;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

struct Plan
{
    QString theme;
    QString countdown;
    QString picture;
    int rounds;
    double seconds;
    static constexpr int leadMinutes = 5; ///< how long a full ring drains
};

/// Lets events pass until `condition` holds. False when it takes longer than the machine could need.
template<typename Condition>
bool waitFor(Condition condition, double seconds = 10)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (static_cast<double>(timer.elapsed()) > seconds * 1000)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void letPass(double seconds)
{
    bool over = false;
    QTimer::singleShot(static_cast<int>(seconds * 1000), qApp, [&over] { over = true; });
    waitFor([&over] { return over; }, seconds + 10);
}

class Bench
{
public:
    Bench(OverlayMeter &meter, Platform &platform, const Plan &plan)
        : m_meter(meter),
          m_plan(plan),
          m_opener(platform.makeUrlOpener()),
          m_cover(platform.makeScreenCover()),
          m_players(platform.makeMusicPlayers(m_clock)),
          m_overlay(m_preferences, m_clock, *m_opener, *m_cover, m_sounds)
    {
        // Wakes the loop so that a condition is looked at again soon.
        m_pulse.setTimerType(Qt::PreciseTimer);
        m_pulse.setInterval(1);
        m_preferences.set(preference::sound, u"None"_s); // its cost is measured elsewhere
        m_preferences.set(preference::theme, plan.theme);
        m_preferences.set(preference::countdownStyle, plan.countdown);
        m_preferences.set(preference::leadMinutes, std::int64_t{plan.leadMinutes});
        m_preferences.set(preference::customImagePath, plan.picture);
    }

    bool run()
    {
        letPass(0.5);
        const double idle = privateMemory();
        std::vector<double> first;
        std::vector<double> onScreen;
        std::vector<double> firstCpu;
        std::vector<double> gone;
        double cold = 0;
        for (int round = 0; round < m_plan.rounds; ++round) {
            const std::optional<Shown> shown = show();
            if (!shown)
                return false;
            first.push_back(shown->painted);
            onScreen.push_back(shown->onScreen);
            firstCpu.push_back(shown->cpu);
            if (round == 0)
                cold = shown->painted;
            letPass(1.5); // the card has come up
            measureUp();
            const double way = hide();
            if (way < 0)
                return false;
            gone.push_back(way);
            letPass(0.2);
        }
        letPass(2);
        std::printf("cold %.1f first %.1f on-screen %.1f first-cpu %.1f gone %.0f idle %.1f up %.1f closed %.1f frames "
                    "%.1f frame %.2f share %.2f\n",
                    cold, median(first), median(onScreen), median(firstCpu), median(gone), idle, m_up, privateMemory(),
                    median(m_frames), median(m_frame), median(m_share));
        return true;
    }

private:
    /// Milliseconds from what is due to the first picture of every display.
    struct Shown
    {
        double painted;
        double onScreen; ///< the display server has worked through all that it was sent
        double cpu;
    };

    [[nodiscard]] static OverlayContent content(Instant now)
    {
        return MeetingContent{{.id = u"bench"_s,
                               .title = u"Weekly design review"_s,
                               .start = now + 60 * Plan::leadMinutes,
                               .end = now + 3600,
                               .joinURL = MeetingLink::fromText(u"https://meet.google.com/abc-defg-hij"_s),
                               .attendeeCount = 5,
                               .calendarName = u"Work"_s},
                              {}};
    }

    [[nodiscard]] static bool isGone()
    {
        const QWidgetList windows = QApplication::topLevelWidgets();
        return std::none_of(windows.begin(), windows.end(), [](const QWidget *window) {
            return qobject_cast<const OverlayView *>(window) && window->isVisible();
        });
    }

    std::optional<Shown> show()
    {
        m_overlay.prepare(content(m_clock.now())); // as it happens some seconds before a meeting
        letPass(0.5);
        QElapsedTimer timer;
        timer.start();
        m_meter.reset();
        const double before = cpuTime();
        m_overlay.show(content(m_clock.now()));
        const bool all = waitFor([this] { return m_meter.painted() == QGuiApplication::screens().size(); });
        const double cpu = cpuTime() - before;
        QGuiApplication::sync();
        const Shown shown{m_meter.firstPictures(), static_cast<double>(timer.nsecsElapsed()) / 1e6, cpu};
        return all ? std::optional(shown) : std::nullopt;
    }

    /// Milliseconds until the last window is gone; less than 0 when one stays.
    double hide()
    {
        QElapsedTimer timer;
        timer.start();
        m_overlay.hide(true);
        m_pulse.start();
        const bool isOver = waitFor([] { return isGone(); });
        m_pulse.stop();
        return isOver ? static_cast<double>(timer.nsecsElapsed()) / 1e6 : -1;
    }

    void measureUp()
    {
        m_meter.reset();
        const double before = cpuTime();
        QElapsedTimer timer;
        timer.start();
        letPass(m_plan.seconds);
        const double used = cpuTime() - before;
        const double passed = static_cast<double>(timer.nsecsElapsed()) / 1e6;
        m_frames.push_back(m_meter.paints() / passed * 1000);
        m_frame.push_back(m_meter.paints() > 0 ? used / m_meter.paints() : 0);
        m_share.push_back(used / passed * 100);
        m_up = privateMemory();
    }

    OverlayMeter &m_meter;
    Plan m_plan;
    SystemClock m_clock;
    Preferences m_preferences;
    std::unique_ptr<UrlOpener> m_opener;
    std::unique_ptr<ScreenCover> m_cover;
    std::unique_ptr<MusicPlayers> m_players;
    MusicControl m_music{*m_players};
    OverlayMusic m_overlayMusic{m_preferences, m_music};
    ChildSoundPlayer m_soundPlayer{m_clock};
    OverlaySounds m_sounds{m_preferences, m_clock, m_soundPlayer, m_overlayMusic, {}};
    OverlayController m_overlay;
    QTimer m_pulse;
    double m_up = 0;
    std::vector<double> m_frames; // a second
    std::vector<double> m_frame;  // milliseconds of the processor for each
    std::vector<double> m_share;  // of a processor, in per cent
};

} // namespace

int main(int argc, char **argv)
{
    memory::keepPicturesApart();
    Platform::prepare();
    OverlayMeter application(argc, argv);
    QApplication::setApplicationName(u"Kelp"_s);
    QApplication::setQuitOnLastWindowClosed(false);
    QCommandLineParser parser;
    parser.addOptions({{u"theme"_s, u"The theme to show."_s, u"id"_s, u"midnight"_s},
                       {u"countdown"_s, u"pill or ring."_s, u"style"_s, u"pill"_s},
                       {u"picture"_s, u"The user's own picture."_s, u"file"_s},
                       {u"rounds"_s, u"How often it is shown."_s, u"count"_s, u"5"_s},
                       {u"seconds"_s, u"How long it is watched each time."_s, u"seconds"_s, u"2"_s}});
    parser.process(application);
    const Plan plan{parser.value(u"theme"_s), parser.value(u"countdown"_s), parser.value(u"picture"_s),
                    parser.value(u"rounds"_s).toInt(), parser.value(u"seconds"_s).toDouble()};
    const std::unique_ptr<Platform> platform = Platform::make();
    return Bench(application, *platform, plan).run() ? 0 : 1;
}

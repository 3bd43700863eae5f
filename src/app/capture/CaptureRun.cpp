#include "app/capture/CaptureRun.h"

#include "app/CommandLine.h"
#include "base/AtomicFile.h"
#include "base/Clock.h"
#include "base/Folders.h"
#include "base/Logging.h"
#include "capture/DesktopScene.h"
#include "capture/Recorder.h"
#include "capture/Snapshots.h"
#include "preferences/Preferences.h"
#include "themes/KelpClock.h"
#include "themes/ThemeImages.h"

#include <QGuiApplication>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// No window system, no bus, and nothing of how the user has set up Qt.
void leaveTheDesktop()
{
    for (const char *name :
         {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "QT_SCALE_FACTOR",
          "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI", "QT_ACCESSIBILITY", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON"})
        qunsetenv(name);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
}

void takeTimeFromEnvironment()
{
    const QString text = qEnvironmentVariable("KELP_CAPTURE_TIME");
    if (text.isEmpty())
        return;
    KelpClock::override = Instant::parse(text);
    if (!KelpClock::override)
        qCWarning(logCapture).noquote() << "KELP_CAPTURE_TIME is not a time:" << text;
}

/// All that is read of the user's settings is which picture is behind their own theme.
QImage customPicture()
{
    AtomicFile file(folders::configuration() + u"/preferences.json"_s);
    return ThemeImages::custom(Preferences(file));
}

} // namespace

int runCapture(char *program, const CommandLine &commandLine)
{
    leaveTheDesktop();
    // Qt has options of its own; clip names and folders are none of them.
    int count = 1;
    char *arguments[] = {program, nullptr};
    const QGuiApplication application(count, arguments);
    takeTimeFromEnvironment();
    KelpClock::backdrop = DesktopScene().picture(Recorder::density);
    const SystemClock clock;
    if (commandLine.mode == CommandLine::Mode::snapshot)
        Snapshots::render(commandLine.folder, KelpClock::shown(clock.now()), customPicture());
    else
        Recorder::run(commandLine.folder, commandLine.clipNames, customPicture(), clock);
    return 0;
}

} // namespace kelp

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "base/Clock.h"
#include "base/Folders.h"
#include "base/Memory.h"
#include "platform/Platform.h"
#include "platform/SingleInstance.h"
#include "ui/KelpStyle.h"

#include <QApplication>
#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace kelp;

namespace {

/// Lets another program take the place of this process, which keeps its arguments. Returns the exit status only where
/// that fails.
int become(const QString &program, char **argv)
{
    ::execv(QFile::encodeName(program).constData(), argv);
    std::fprintf(stderr, "Kelp cannot start %s: %s\n", qUtf8Printable(program), std::strerror(errno));
    return 1;
}

int runApplication(int &argc, char **argv)
{
    memory::keepPicturesApart();
    Platform::prepare();
    QApplication application(argc, argv);
    QApplication::setStyle(new KelpStyle);
    QApplication::setApplicationName(u"Kelp"_s);
    QApplication::setDesktopFileName(u"app.kelp.Kelp"_s);
    // Kelp lives on when its panel is closed.
    QApplication::setQuitOnLastWindowClosed(false);

    SystemClock clock;
    const std::unique_ptr<Platform> platform = Platform::make();
    const std::unique_ptr<SingleInstance> instance = platform->makeSingleInstance(clock);
    std::unique_ptr<AppDelegate> delegate;
    QObject::connect(instance.get(), &SingleInstance::second, &application, [] {
        std::puts("Kelp is running already.");
        QCoreApplication::quit();
    });
    QObject::connect(instance.get(), &SingleInstance::first, &application, [&] {
        delegate = std::make_unique<AppDelegate>(clock, *platform);
        QObject::connect(instance.get(), &SingleInstance::activated, delegate.get(), &AppDelegate::toggleMainWindow);
        delegate->finishLaunching();
    });
    instance->claim();
    return QApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    const CommandLine commandLine = CommandLine::parse(argc, argv);
    switch (commandLine.mode) {
    case CommandLine::Mode::snapshot:
    case CommandLine::Mode::record:
        return become(folders::program(u"kelp-capture"_s), argv);
    case CommandLine::Mode::help:
        std::fputs(CommandLine::help().toLocal8Bit().constData(), stdout);
        return 0;
    case CommandLine::Mode::version:
        std::puts("Kelp " KELP_VERSION);
        return 0;
    case CommandLine::Mode::application:
        return runApplication(argc, argv);
    }
}

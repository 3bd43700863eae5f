#include "app/AppDelegate.h"
#include "app/CaptureRun.h"
#include "app/CommandLine.h"
#include "base/Clock.h"
#include "base/Memory.h"
#include "platform/Platform.h"
#include "platform/SingleInstance.h"
#include "ui/KelpStyle.h"

#include <QApplication>

#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;
using namespace kelp;

namespace {

QStringList textsOf(int argc, char **argv)
{
    QStringList texts;
    for (int i = 0; i < argc; ++i)
        texts.append(QString::fromLocal8Bit(argv[i]));
    return texts;
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
    const CommandLine commandLine = CommandLine::parse(textsOf(argc, argv));
    switch (commandLine.mode) {
    case CommandLine::Mode::snapshot:
    case CommandLine::Mode::record:
        return runCapture(argv[0], commandLine);
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

// kelp-bench-idle: wakes up as often as an idle Kelp and does nothing. What that costs here is what a machine's own
// figure for the idle Kelp has to be read against.

#include <QApplication>
#include <QTimer>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QTimer timer;
    int ticks = 0;
    QObject::connect(&timer, &QTimer::timeout, &application, [&ticks] { ++ticks; });
    timer.start(5000);
    return QApplication::exec();
}

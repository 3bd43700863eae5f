#pragma once

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QScreen>
#include <QWidget>

#include <cstdio>
#include <cstring>

namespace kelp::test {

/// How many pixels of the picture, or of that part of it, are in the bright green that tests put behind the overlay.
[[nodiscard]] inline int uncovered(const QImage &picture, const QRect &part = {})
{
    const QRect looked = part.isNull() ? picture.rect() : part;
    if (picture.isNull() || !picture.rect().contains(looked))
        return -1;
    int count = 0;
    for (int y = looked.top(); y <= looked.bottom(); ++y) {
        for (int x = looked.left(); x <= looked.right(); ++x) {
            const QRgb each = picture.pixel(x, y);
            count += qGreen(each) > 200 && qRed(each) < 60 && qBlue(each) < 60;
        }
    }
    return count;
}

/// Another application for tests of the overlay: a full-screen window in bright green that writes the keys it gets to
/// its standard output, a line each. A test's program becomes one when it is started with "--bright-client", and a
/// panel at the top of the second screen with "--bright-panel".
class BrightClient final : public QWidget
{
public:
    static constexpr auto argument = "--bright-client";

    static constexpr auto panelArgument = "--bright-panel";

    [[nodiscard]] static bool isAsked(int argc, char **argv)
    {
        return argc == 2 && (std::strcmp(argv[1], argument) == 0 || std::strcmp(argv[1], panelArgument) == 0);
    }
    [[nodiscard]] static int run(int argc, char **argv)
    {
        QApplication application(argc, argv);
        BrightClient client;
        if (std::strcmp(argv[1], panelArgument) == 0)
            client.showAsPanel();
        else
            client.showFullScreen();
        return QApplication::exec();
    }

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        std::printf("%s\n", qPrintable(QKeySequence(event->key()).toString()));
        std::fflush(stdout);
    }

private:
    BrightClient()
    {
        QPalette green;
        green.setColor(QPalette::Window, QColor(0, 255, 0));
        setPalette(green);
        setWindowTitle(QStringLiteral("work"));
    }
    void showAsPanel()
    {
        const QRect screen = QGuiApplication::screens().constLast()->geometry();
        setAttribute(Qt::WA_X11NetWmWindowTypeDock);
        setGeometry(screen.x(), screen.y(), screen.width(), 30);
        show();
    }
};

} // namespace kelp::test

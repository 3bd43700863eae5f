#include "Canvas.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

using namespace kelp::pictures;

namespace {

constexpr int height = 1600;
constexpr int width = 2560;
constexpr int quality = 92;

struct Picture
{
    const char *name;
    void (*paint)(Canvas &);
};
constexpr Picture pictures[] = {{"zen", paintZen}, {"space", paintSpace}, {"lofi", paintLofi}};

} // namespace

/// kelp-pictures FOLDER [NAME...] paints the built-in pictures. KELP_PICTURE_HEIGHT asks for a smaller sketch.
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2) {
        std::fputs("usage: kelp-pictures FOLDER [zen|space|lofi]...\n", stderr);
        return 2;
    }
    const int sketch = qEnvironmentVariableIntValue("KELP_PICTURE_HEIGHT");
    const int rows = sketch > 0 ? sketch : height;
    for (const Picture &picture : pictures) {
        const QString name = QString::fromLatin1(picture.name);
        if (arguments.size() > 2 && !arguments.contains(name))
            continue;
        Canvas canvas(rows * width / height, rows);
        picture.paint(canvas);
        const QString path = arguments[1] + u'/' + name + QStringLiteral(".jpg");
        if (!canvas.finished().save(path, "JPEG", quality)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}

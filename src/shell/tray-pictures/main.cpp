// kelp-tray-pictures FOLDER: writes every picture of the tray as <name>.svg and <name>-symbolic.svg, for the build.

#include "shell/TrayPictures.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace kelp;

namespace {

bool write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.flush())
        return true;
    std::fprintf(stderr, "kelp-tray-pictures: %s: %s\n", qUtf8Printable(path), qUtf8Printable(file.errorString()));
    return false;
}

} // namespace

int main(int argc, char **argv)
{
    const QGuiApplication application(argc, argv); // fonts need it
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 2) {
        std::fputs("Usage: kelp-tray-pictures FOLDER\n", stderr);
        return 2;
    }
    const QDir folder(arguments.at(1));
    if (!folder.mkpath(u"."_s)) {
        std::fprintf(stderr, "kelp-tray-pictures: %s cannot be made\n", qUtf8Printable(folder.path()));
        return 1;
    }
    for (const QString &name : TrayPictures::names()) {
        if (!write(folder.filePath(name + u".svg"_s), TrayPictures::svg(name)) ||
            !write(folder.filePath(name + symbolicSuffix + u".svg"_s), TrayPictures::symbolicSvg(name)))
            return 1;
    }
    return 0;
}

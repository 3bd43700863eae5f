#include "base/Folders.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp::folders {

namespace {

/// `place` is below the prefix that Kelp is installed in.
QString companion(const QString &place, const QString &name)
{
    const QString folder = QFileInfo(QFile::symLinkTarget(u"/proc/self/exe"_s)).path();
    const QString installed = QFileInfo(folder).path() + u'/' + place + u"/kelp/"_s + name;
    return QFile::exists(installed) ? installed : folder + u'/' + name;
}

} // namespace

QString configuration()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/Kelp"_s;
}

QString data()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/Kelp"_s;
}

bool isUsualConfiguration()
{
    const passwd *user = ::getpwuid(::getuid());
    return user && configuration() == QFile::decodeName(user->pw_dir) + u"/.config/Kelp"_s;
}

QString program(const QString &name)
{
    return companion(u"libexec"_s, name);
}

QString shared(const QString &name)
{
    return companion(u"share"_s, name);
}

} // namespace kelp::folders

#include "base/Folders.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace kelp::folders {

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
    const QString folder = QFileInfo(QFile::symLinkTarget(u"/proc/self/exe"_s)).path();
    const QString installed = folder + u"/../libexec/kelp/"_s + name;
    return QFile::exists(installed) ? installed : folder + u'/' + name;
}

} // namespace kelp::folders

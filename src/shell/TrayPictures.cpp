#include "shell/TrayPictures.h"

#include "base/Folders.h"
#include "shell/MenuBarIcon.h"
#include "shell/StatusTitle.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString prefix = u"app.kelp.Kelp"_s;
const QString pausedName = prefix + u"-paused"_s;
constexpr int mostMinutes = 60;

/// For hosts that do not tint, nearly all of which are dark: light with a dark rim, which keeps it apart from a light
/// ground and is not to be seen on a dark one.
const MenuBarIcon::Colours anyGround{QColor(0xf4, 0xf4, 0xf4), QColor(0, 0, 0, 0xa0)};
/// What GTK's own symbolic icons have.
const MenuBarIcon::Colours tinted{QColor(0x2e, 0x34, 0x36), {}};

QString pictureName(const QString &title)
{
    const QString text = title.trimmed();
    return text.isEmpty() ? prefix : prefix + u'-' + text;
}

MenuBarIcon::Content content(const QString &name)
{
    if (name == pausedName)
        return {true, {}};
    QString text = name.sliced(prefix.size());
    text.remove(u'-');
    if (text.endsWith(u'm'))
        text.chop(1); // a picture has no room for the unit
    return {false, text};
}

} // namespace

QStringList TrayPictures::names()
{
    QStringList names{pictureName({}), pausedName, pictureName(statusTitle(0, false))};
    for (int minutes = 1; minutes <= mostMinutes; ++minutes)
        names.append(pictureName(statusTitle(minutes * 60, false)));
    return names;
}

QByteArray TrayPictures::svg(const QString &name)
{
    return MenuBarIcon::svg(content(name), anyGround);
}

QByteArray TrayPictures::symbolicSvg(const QString &name)
{
    return MenuBarIcon::svg(content(name), tinted);
}

QString TrayPictures::folder() const
{
    const QString folder = folders::shared(u"tray"_s);
    return QFile::exists(folder + u'/' + prefix + u".svg"_s) ? folder : QString();
}

QImage TrayPictures::image(const QString &name, int pixels) const
{
    return MenuBarIcon::make(pixels, content(name), anyGround);
}

StatusLook statusLook(std::optional<double> secondsUntilStart, bool isPaused)
{
    if (isPaused)
        return {pausedName, pausedName, {}, u"Kelp paused"_s};
    const QString title = statusTitle(secondsUntilStart, isPaused);
    return {pictureName({}), pictureName(title), title, u"Kelp"_s};
}

} // namespace kelp

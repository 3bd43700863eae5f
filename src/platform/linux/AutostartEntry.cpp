#include "platform/linux/AutostartEntry.h"

#include "base/AtomicFile.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>

#include <glib.h>

#include <algorithm>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString fileName = u"/app.kelp.Kelp.desktop"_s;
constexpr qint64 largestEntry = 64 * 1024; // bytes; real ones have a few hundred

using Keys = QHash<QByteArray, QByteArray>;

/// The keys of the group [Desktop Entry]; nothing where there is no such file.
std::optional<Keys> read(const QString &path)
{
    if (QFileInfo(path).size() > largestEntry)
        return Keys();
    const auto content = AtomicFile(path).read();
    if (!content)
        return Keys();
    if (!*content)
        return {};
    Keys keys;
    bool inGroup = false;
    for (const QByteArray &line : (*content)->split('\n')) {
        const QByteArray text = line.trimmed();
        if (text.startsWith('['))
            inGroup = text == "[Desktop Entry]";
        else if (const auto equals = text.indexOf('='); inGroup && equals > 0 && !text.startsWith('#'))
            keys.insert(text.left(equals).trimmed(), text.mid(equals + 1).trimmed());
    }
    return keys;
}

/// Whether one of the desktop's names ("ubuntu:GNOME") is in the list ("GNOME;KDE;").
bool names(const QByteArray &list)
{
    const QList<QByteArray> desktops = qgetenv("XDG_CURRENT_DESKTOP").split(':');
    const QList<QByteArray> listed = list.split(';');
    return std::any_of(desktops.begin(), desktops.end(),
                       [&](const QByteArray &each) { return !each.isEmpty() && listed.contains(each); });
}

bool starts(const Keys &keys)
{
    return !keys.value("Exec").isEmpty() && keys.value("Hidden") != "true" &&
           keys.value("X-GNOME-Autostart-enabled", "true") != "false" &&
           (!keys.contains("OnlyShowIn") || names(keys.value("OnlyShowIn"))) && !names(keys.value("NotShowIn"));
}

/// Whether the program that a key Exec names exists: where Kelp has been moved or removed since, nothing will start.
bool hasProgram(QByteArray exec)
{
    exec.replace("\\\\", "\\"); // the first of the two levels of escapes
    char **arguments = nullptr;
    if (!g_shell_parse_argv(exec.constData(), nullptr, &arguments, nullptr))
        return false;
    const QByteArray program = QByteArray(arguments[0]).replace("%%", "%");
    g_strfreev(arguments);
    char *const found = g_find_program_in_path(program.constData());
    g_free(found);
    return found != nullptr;
}

/// A path as the key Exec wants it: quoted, with two levels of escapes and no field codes.
QByteArray quoted(const QString &path)
{
    QString inner;
    for (const QChar each : path) {
        if (u"\"`$\\"_s.contains(each))
            inner += u'\\';
        inner += each == u'%' ? u"%%"_s : QString(each);
    }
    return u"\"%1\""_s.arg(inner.replace(u'\\', u"\\\\"_s)).toUtf8();
}

} // namespace

AutostartEntry::AutostartEntry(QString program, QStringList folders)
    : m_program(std::move(program)), m_folders(std::move(folders))
{
}

AutostartEntry::AutostartEntry()
    : m_program(QCoreApplication::applicationFilePath()),
      m_folders(QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation))
{
    for (QString &folder : m_folders)
        folder += u"/autostart"_s;
}

QString AutostartEntry::path() const
{
    return m_folders.first() + fileName;
}

bool AutostartEntry::isEnabled() const
{
    for (const QString &folder : m_folders) {
        if (const std::optional<Keys> keys = read(folder + fileName))
            return starts(*keys) && hasProgram(keys->value("Exec"));
    }
    return false;
}

Result<void, QString> AutostartEntry::setEnabled(bool enabled)
{
    AtomicFile::sweep(m_folders.first());
    AtomicFile file(path());
    const auto done = enabled          ? file.write(entry())
                      : systemHasOne() ? file.write(entry() + "Hidden=true\n")
                                       : file.remove();
    if (!done)
        return Failure(done.error().description());
    return {};
}

QByteArray AutostartEntry::entry() const
{
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Kelp\n"
           "Comment=Covers every display shortly before each meeting of your calendar\n"
           "Icon=app.kelp.Kelp\n"
           "Terminal=false\n"
           "Exec=" +
           quoted(m_program) + '\n';
}

bool AutostartEntry::systemHasOne() const
{
    return std::any_of(std::next(m_folders.begin()), m_folders.end(),
                       [](const QString &folder) { return read(folder + fileName).has_value(); });
}

} // namespace kelp

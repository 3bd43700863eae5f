#include "settings/FileChooser.h"

#include "themes/ThemeImages.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// The ends of the names of all files of the types that begin so.
QStringList patternsOf(const QString &typePrefix)
{
    QStringList patterns;
    for (const QMimeType &type : QMimeDatabase().allMimeTypes()) {
        if (type.name().startsWith(typePrefix))
            patterns += type.globPatterns();
    }
    patterns.removeDuplicates();
    patterns.sort();
    return patterns;
}

QString standardFolder(QStandardPaths::StandardLocation location)
{
    const QString folder = QStandardPaths::writableLocation(location);
    return QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

} // namespace

FileChooser::Request FileChooser::image()
{
    QStringList patterns;
    for (const QString &format : ThemeImages::formats())
        patterns.append(u"*."_s + format);
    return {u"Choose a background for the meeting overlay"_s, u"Images"_s, patterns,
            standardFolder(QStandardPaths::PicturesLocation)};
}

FileChooser::Request FileChooser::sound()
{
    QStringList patterns = patternsOf(u"audio/"_s);
    // Lists of sounds are none.
    for (const QString &list : {u"*.m3u"_s, u"*.m3u8"_s, u"*.vlc"_s, u"*.pls"_s, u"*.ram"_s, u"*.wax"_s})
        patterns.removeAll(list);
    return {u"Choose a sound for the meeting overlay"_s, u"Audio"_s, patterns,
            standardFolder(QStandardPaths::MusicLocation)};
}

void FileChooser::ask(QWidget &window, const Request &request, QObject *context,
                      std::function<void(std::optional<QString>)> answer)
{
    auto *dialog = new QFileDialog(&window, request.message, request.folder);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(u"%1 (%2)"_s.arg(request.kind, request.patterns.join(u' ')));
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    QObject::connect(dialog, &QFileDialog::finished, context, [dialog, answer = std::move(answer)](int result) {
        const QStringList files = dialog->selectedFiles();
        answer(result == QDialog::Accepted && files.size() == 1 ? std::optional(files.first()) : std::nullopt);
    });
    dialog->open();
}

} // namespace kelp

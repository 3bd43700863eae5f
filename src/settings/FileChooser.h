#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class QObject;
class QWidget;

namespace kelp::FileChooser {

struct Request
{
    QString message;      ///< what the file is for
    QString kind;         ///< name of the kind of files that are offered
    QStringList patterns; ///< of their names, "*.png"
    QString folder;       ///< where to begin; empty = wherever
};

/// Pictures that Kelp can show, and sounds that it can play.
[[nodiscard]] Request image();
[[nodiscard]] Request sound();

/// Asks for one file in the desktop's own dialog and returns at once. `answer` gets its path, or nothing where the user
/// cancels, unless `context` is destroyed before.
void ask(QWidget &window, const Request &request, QObject *context, std::function<void(std::optional<QString>)> answer);

} // namespace kelp::FileChooser

#include "sound/SoundFileName.h"

#include <algorithm>

namespace kelp {

SoundFileName SoundFileName::of(const QString &path)
{
    const QString name = path.mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString extension = name.mid(dot + 1);
    const bool isPlain = std::none_of(extension.begin(), extension.end(), [](QChar each) {
        return each.isSpace() || each.category() == QChar::Other_Control || each.category() == QChar::Other_Format;
    });
    if (dot <= 0 || extension.isEmpty() || !isPlain)
        return {name, {}};
    return {name.left(dot), extension};
}

} // namespace kelp

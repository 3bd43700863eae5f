#pragma once

#include <QString>

/// A text made from the number of a save: up to 40 KB, so that a save takes one write or several.
inline QString savedFiller(qint64 number)
{
    return QString(static_cast<qsizetype>(number % 11) * 4000, QChar(static_cast<char16_t>(u'a' + number % 26)));
}

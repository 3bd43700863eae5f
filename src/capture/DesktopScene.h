#pragma once

#include "ui/Arrangement.h"

#include <QColor>
#include <QImage>
#include <QSizeF>
#include <QString>

#include <array>

class QPainter;

namespace kelp {

/// The desktop of somebody at work, for clips and for stills of themes that blur it: a menu bar, a document, a mailbox
/// and a dock before a calm sea.
class DesktopScene
{
public:
    static constexpr QSizeF size{1440, 900}; ///< points
    /// The tiles of the dock: red, green and blue, 0…1.
    static constexpr std::array<std::array<float, 3>, 10> dockColors{{{0.16F, 0.50F, 0.93F},
                                                                      {0.20F, 0.74F, 0.61F},
                                                                      {0.98F, 0.55F, 0.28F},
                                                                      {0.55F, 0.43F, 0.90F},
                                                                      {0.95F, 0.34F, 0.42F},
                                                                      {0.98F, 0.76F, 0.27F},
                                                                      {0.25F, 0.64F, 0.86F},
                                                                      {0.37F, 0.42F, 0.52F},
                                                                      {0.91F, 0.45F, 0.68F},
                                                                      {0.13F, 0.60F, 0.55F}}};

    DesktopScene();

    /// Paints all of it over a picture of `size`; `typed` is what has been written of the last note in the document,
    /// with the caret behind it where that shows.
    void paint(QPainter &painter, const QString &typed = {}, bool caret = false) const;

    /// All of it at that density.
    [[nodiscard]] QImage picture(double density, const QString &typed = {}) const;

    /// What is where, as the tags of the mock desktop name it.
    [[nodiscard]] const Arrangement &arrangement() const { return m_arrangement; }

private:
    void paintNote(QPainter &painter, const QString &typed, bool caret) const;

    Arrangement m_arrangement;
    mutable QImage m_still; ///< all that does not change
};

} // namespace kelp

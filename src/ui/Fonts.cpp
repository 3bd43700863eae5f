#include "ui/Fonts.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

/// From this size on a family's display cut is the better drawing, and large bold text wants to be set a little
/// tighter.
constexpr int displaySize = 28;

QStringList families(FontDesign design, int size)
{
    // Emoji come before the rest of the fallbacks, some of which hold black-and-white ones.
    switch (design) {
    case FontDesign::Default:
        break;
    case FontDesign::Rounded:
        return {u"Quicksand"_s, u"Nunito"_s, u"Varela Round"_s, u"Inter"_s, u"Noto Color Emoji"_s, u"sans-serif"_s};
    case FontDesign::Serif:
        return {u"Source Serif 4"_s, u"Source Serif Pro"_s, u"Noto Serif"_s,
                u"DejaVu Serif"_s,   u"Noto Color Emoji"_s, u"serif"_s};
    case FontDesign::Monospaced:
        return {u"JetBrains Mono"_s, u"Noto Color Emoji"_s, u"DejaVu Sans Mono"_s, u"monospace"_s};
    }
    QStringList list{u"Inter"_s,     u"Noto Color Emoji"_s, u"Cantarell"_s,
                     u"Noto Sans"_s, u"DejaVu Sans"_s,      u"sans-serif"_s};
    if (size >= displaySize)
        list.prepend(u"Inter Display"_s);
    return list;
}

} // namespace

QFont designFont(FontDesign design, int size, QFont::Weight weight)
{
    QFont font(families(design, size));
    font.setPixelSize(size);
    // The rounded family's plain cut has thinner strokes than those of the others.
    const bool isThin = design == FontDesign::Rounded && weight == QFont::Normal;
    font.setWeight(isThin ? QFont::Medium : weight);
    font.setHintingPreference(QFont::PreferNoHinting); // outlines at their true places on every density
    if (size >= displaySize && design != FontDesign::Monospaced)
        font.setLetterSpacing(QFont::PercentageSpacing, 99);
    return font;
}

} // namespace kelp

#include "ui/DesktopPalette.h"

#include <QApplication>
#include <QStyle>

namespace kelp {

namespace {

const QColor usualAccent(0x2F, 0x6F, 0xDE);

QColor translucent(QColor colour, int alpha)
{
    colour.setAlpha(alpha);
    return colour;
}

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

} // namespace

QPalette ownPalette(bool dark, const std::optional<QColor> &accent)
{
    const QColor window(dark ? QColor(0x24, 0x24, 0x27) : QColor(0xF6, 0xF6, 0xF7));
    const QColor text(dark ? QColor(0xF4, 0xF4, 0xF5) : QColor(0x1E, 0x1E, 0x21));
    const QColor base(dark ? QColor(0x1B, 0x1B, 0x1E) : QColor(Qt::white));
    const QColor button(dark ? QColor(0x3A, 0x3A, 0x3E) : QColor(0xE8, 0xE8, 0xEA));
    QPalette palette(text, button, button.lighter(120), button.darker(160), button.darker(120), text, Qt::white, base,
                     window);
    palette.setColor(QPalette::ToolTipBase, dark ? QColor(0x3A, 0x3A, 0x3E) : QColor(0x2B, 0x2B, 0x2E));
    palette.setColor(QPalette::ToolTipText, QColor(0xF4, 0xF4, 0xF5));
    palette.setColor(QPalette::PlaceholderText, translucent(text, 140));
    const QColor highlight = accent.value_or(usualAccent);
    palette.setColor(QPalette::Highlight, highlight);
    palette.setColor(QPalette::HighlightedText, highlight.lightness() > 170 ? Qt::black : Qt::white);
    palette.setColor(QPalette::Link, highlight);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, translucent(text, 110));
    return palette;
}

bool isPaletteFor(const QPalette &palette, std::optional<bool> dark)
{
    const bool isDesktops =
        palette.color(QPalette::Window) != QApplication::style()->standardPalette().color(QPalette::Window);
    return isDesktops && dark.value_or(isDark(palette)) == isDark(palette);
}

void applyDesktopPalette(std::optional<bool> dark, const std::optional<QColor> &accent)
{
    // A palette that resolves nothing lets the desktop's through.
    QApplication::setPalette(QPalette());
    if (!isPaletteFor(QApplication::palette(), dark))
        QApplication::setPalette(ownPalette(dark.value_or(false), accent));
}

} // namespace kelp

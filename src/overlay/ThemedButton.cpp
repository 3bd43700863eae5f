#include "overlay/ThemedButton.h"

#include <algorithm>
#include <utility>

namespace kelp {

namespace {

constexpr int labelSize = 18;
constexpr double symbolSize = 22;
constexpr double focusOutset = 4;

Shape shape(ButtonLook look)
{
    return look == ButtonLook::Terminal ? Shape::rounded(3) : Shape::capsule();
}

QColor brightened(const QColor &colour, double amount)
{
    const auto raised = [amount](float part) { return std::min(1.0F, part + static_cast<float>(amount)); };
    return QColor::fromRgbF(raised(colour.redF()), raised(colour.greenF()), raised(colour.blueF()), colour.alphaF());
}

/// The frame behind a secondary button's label.
Element secondaryFrame(const OverlayTheme &theme, double hover, Element label)
{
    const Shape outline = shape(theme.button);
    if (theme.button == ButtonLook::Pill)
        return filled(outline, faded(theme.text, 0.14 + 0.10 * hover), std::move(label));
    return filled(outline, faded(theme.text, 0.1),
                  outlined(outline, QPen(faded(theme.text, 0.6), 1.5), 0, std::move(label)));
}

Element withFocusRing(const OverlayTheme &theme, bool focused, Element button)
{
    if (!focused)
        return button;
    return outlined(shape(theme.button), QPen(faded(theme.text, 0.9), 2), focusOutset, std::move(button));
}

} // namespace

QColor faded(QColor colour, double opacity)
{
    colour.setAlphaF(colour.alphaF() * static_cast<float>(opacity));
    return colour;
}

Element themedButton(const QString &label, const QString &symbolName, const OverlayTheme &theme, bool isPrimary,
                     const ButtonState &state)
{
    const double raise = isPrimary ? 0.08 * state.hover : 0;
    const QColor ink = brightened(isPrimary ? theme.accentText : theme.text, raise);
    const Text words = text(label).font(designFont(theme.font, labelSize, QFont::DemiBold)).colour(ink);
    const Element content =
        symbolName.isEmpty() ? Element(words) : horizontal(9, {symbol(symbolName, symbolSize, ink), words});
    const Element room = padded({28, 14, 28, 14}, content);
    const Element framed = isPrimary ? filled(shape(theme.button), brightened(theme.accent, raise), room)
                                     : secondaryFrame(theme, state.hover, room);
    return scaled(state.scale, withFocusRing(theme, state.focused, framed));
}

Element plainButton(const QString &label, int size, const OverlayTheme &theme, const ButtonState &state)
{
    const QColor ink = faded(theme.accent, 0.85 + 0.15 * state.hover);
    const Element words =
        padded({4, 3, 4, 3}, text(label).font(designFont(theme.font, size, QFont::DemiBold)).colour(ink));
    const Element framed = filled(Shape::rounded(6), faded(theme.accent, 0.14 * state.hover), words);
    if (!state.focused)
        return framed;
    return outlined(Shape::rounded(6), QPen(faded(theme.text, 0.9), 2), 1, framed);
}

} // namespace kelp

#include "settings/PanelLabel.h"

#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/PlainText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int leastWidth = 24;
constexpr int widest = 4000; // more than any panel has

/// The text as it is drawn: line ends stay where several lines are allowed.
QString drawn(const QString &text, bool isSingleLine)
{
    if (isSingleLine)
        return flattened(text);
    QStringList lines;
    for (const QString &line : text.split(u'\n'))
        lines.append(flattened(line));
    return lines.join(QChar::LineSeparator);
}

} // namespace

QColor inkColour(Ink ink, const QPalette &palette)
{
    const DesktopColours colours = DesktopColours::of(palette);
    switch (ink) {
    case Ink::Primary:
        return colours.primary;
    case Ink::Secondary:
        return colours.secondary;
    case Ink::Accent:
        return colours.accentInk;
    case Ink::Warning:
        return colours.warningInk;
    case Ink::Danger:
        return colours.dangerInk;
    }
    Q_UNREACHABLE();
}

PanelLabel::PanelLabel(int pixelSize, QFont::Weight weight, Ink ink, QWidget *parent) : QLabel(parent), m_ink(ink)
{
    setFont(designFont(FontDesign::Default, pixelSize, weight));
    // Names and errors come from elsewhere: never markup.
    setTextFormat(Qt::PlainText);
}

void PanelLabel::setMaximumLines(int lines)
{
    m_maximumLines = lines;
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(lines != 1);
    setSizePolicy(policy);
    updateGeometry();
}

void PanelLabel::setInk(Ink ink)
{
    if (std::exchange(m_ink, ink) != ink)
        update();
}

PanelLabel::Broken PanelLabel::broken(int width) const
{
    const QString all = drawn(text(), m_maximumLines == 1);
    if (m_maximumLines == 1) {
        const QString line = fontMetrics().elidedText(all, Qt::ElideRight, width);
        return {{line}, line != all};
    }
    QTextLayout layout(all, font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    Broken result;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        const int start = line.textStart();
        if (m_maximumLines > 0 && result.lines.size() == m_maximumLines - 1 && start + line.textLength() < all.size()) {
            result.lines.append(fontMetrics().elidedText(all.mid(start), Qt::ElideRight, width));
            result.cut = true;
            break;
        }
        result.lines.append(all.mid(start, line.textLength()).remove(QChar::LineSeparator).trimmed());
    }
    layout.endLayout();
    return result;
}

QSize PanelLabel::sizeHint() const
{
    const QString all = drawn(text(), m_maximumLines == 1);
    const int width = std::min(fontMetrics().horizontalAdvance(all) + 1, widest);
    const QMargins margins = contentsMargins();
    const int outer = width + margins.left() + margins.right();
    return {outer, heightForWidth(outer)};
}

QSize PanelLabel::minimumSizeHint() const
{
    return {std::min(leastWidth, sizeHint().width()), heightForWidth(widest)};
}

int PanelLabel::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    const int inner = width - margins.left() - margins.right();
    const int lines = m_maximumLines == 1 ? 1 : std::max(1, static_cast<int>(broken(inner).lines.size()));
    return fontMetrics().lineSpacing() * lines + margins.top() + margins.bottom();
}

bool PanelLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        if (isCut())
            showPlainTip(static_cast<QHelpEvent *>(event)->globalPos(), text(), this);
        else
            event->ignore();
        return true;
    }
    return QLabel::event(event);
}

void PanelLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(inkColour(m_ink, palette()));
    painter.setFont(font());
    const QRect inner = contentsRect();
    const QStringList lines = broken(inner.width()).lines;
    const int step = fontMetrics().lineSpacing();
    int top = inner.top() + (inner.height() - step * static_cast<int>(lines.size())) / 2;
    const int side = layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft;
    for (const QString &line : lines) {
        painter.setLayoutDirection(line.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
        painter.drawText(QRect(inner.left(), top, inner.width(), step),
                         side | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine, line);
        top += step;
    }
}

void showPlainTip(const QPoint &globalPosition, const QString &text, QWidget *widget)
{
    // A tip takes what looks like markup for markup.
    QToolTip::showText(globalPosition, u"<p>%1</p>"_s.arg(flattened(text).toHtmlEscaped()), widget);
}

} // namespace kelp

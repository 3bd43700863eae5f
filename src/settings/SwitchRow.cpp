#include "settings/SwitchRow.h"

#include "settings/Rows.h"
#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/KelpStyle.h"
#include "ui/Symbols.h"

#include <QKeyEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double trackWidth = 34;
constexpr double trackHeight = 20;
constexpr int rowHeight = 36;
constexpr Spring spring{0.22, 0.9};

QColor between(const QColor &a, const QColor &b, double share)
{
    const double part = std::clamp(share, 0.0, 1.0);
    const auto mix = [part](int x, int y) { return static_cast<int>(x + (y - x) * part); };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

} // namespace

SwitchRow::SwitchRow(const QString &label, QWidget *parent) : QCheckBox(label, parent)
{
    setFont(designFont(FontDesign::Default, 13));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
    connect(&m_motion, &QVariantAnimation::valueChanged, this, [this](const QVariant &seconds) {
        const double way = spring.position(seconds.toDouble());
        m_knob = isChecked() ? way : 1 - way;
        update();
    });
}

void SwitchRow::setNote(const QString &note)
{
    if (m_note == note)
        return;
    m_note = note;
    setToolTip(note);
    setAccessibleDescription(note);
    update();
}

void SwitchRow::reflect(bool on)
{
    if (isChecked() == on)
        return;
    const QSignalBlocker blocker(this);
    setChecked(on);
    m_motion.stop();
    m_knob = on ? 1 : 0;
    update();
}

void SwitchRow::nextCheckState()
{
    QCheckBox::nextCheckState();
    slide();
}

void SwitchRow::slide()
{
    m_motion.stop();
    if (!style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) || !isVisible()) {
        m_knob = isChecked() ? 1 : 0;
        return;
    }
    m_motion.setStartValue(0.0);
    m_motion.setEndValue(spring.settlingTime());
    m_motion.setDuration(static_cast<int>(spring.settlingTime() * 1000));
    m_motion.start();
}

QSize SwitchRow::sizeHint() const
{
    return {2 * rowInset + fontMetrics().horizontalAdvance(text()) + 8 + static_cast<int>(trackWidth), rowHeight};
}

void SwitchRow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QCheckBox::keyPressEvent(event);
}

void SwitchRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const QRect inner = rect().adjusted(rowInset, 0, -rowInset, 0);
    painter.setLayoutDirection(layoutDirection());
    painter.setFont(font());
    painter.setPen(colours.primary);
    painter.drawText(inner, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine, text());
    if (!m_note.isEmpty()) {
        const int x = inner.left() + fontMetrics().horizontalAdvance(text()) + 6;
        paintSymbol(painter, QStyle::visualRect(layoutDirection(), rect(), QRect(x, (height() - 13) / 2, 13, 13)),
                    u"info-circle"_s, colours.secondary);
    }

    const double x = mirrored ? inner.left() : inner.right() + 1 - trackWidth;
    const QRectF track(x, (height() - trackHeight) / 2, trackWidth, trackHeight);
    paintBox(painter, track, trackHeight / 2, between(colours.trackOff, colours.accent, m_knob), Qt::transparent);
    if (underMouse())
        paintBox(painter, track, trackHeight / 2, colours.hover, Qt::transparent);
    constexpr double inset = 2;
    constexpr double size = trackHeight - 2 * inset;
    const double way = (trackWidth - trackHeight) * (mirrored ? 1 - m_knob : m_knob);
    const QRectF knob(std::clamp(track.left() + inset + way, track.left() + 1, track.right() - 1 - size),
                      track.top() + inset, size, size);
    paintBox(painter, knob.translated(0, 0.6), size / 2, QColor(0, 0, 0, 40), Qt::transparent);
    paintBox(painter, knob, size / 2, Qt::white, Qt::transparent);
    if (hasFocus())
        paintFocusRing(painter, track.adjusted(-1, -1, 1, 1), trackHeight / 2 + 1, palette());
}

} // namespace kelp

#include "overlay/CardButton.h"

#include <QFocusEvent>

#include <cmath>

namespace kelp {

namespace {

constexpr Spring hoverSpring{0.25, 1.0};
constexpr Spring pressSpring{0.15, 1.0};

} // namespace

CardButton::CardButton(const QString &label, QWidget *parent) : QAbstractButton(parent), m_spring(hoverSpring)
{
    setAccessibleName(label);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus); // a click does not leave a focus ring behind
    connect(this, &QAbstractButton::pressed, this, [this] { moveWith(pressSpring); });
    connect(this, &QAbstractButton::released, this, [this] { moveWith(pressSpring); });
    connect(&m_motion, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &seconds) { advance(seconds.toDouble(), m_spring); });
}

void CardButton::enterEvent(QEnterEvent *event)
{
    QAbstractButton::enterEvent(event);
    m_hovered = true;
    moveWith(hoverSpring);
}

void CardButton::leaveEvent(QEvent *event)
{
    QAbstractButton::leaveEvent(event);
    m_hovered = false;
    moveWith(hoverSpring);
}

void CardButton::focusInEvent(QFocusEvent *event)
{
    QAbstractButton::focusInEvent(event);
    m_state.focused = true;
    Q_EMIT stateChanged();
}

void CardButton::focusOutEvent(QFocusEvent *event)
{
    QAbstractButton::focusOutEvent(event);
    m_state.focused = false;
    moveWith(pressSpring); // losing the focus lets go of a button held down with the space bar
    Q_EMIT stateChanged();
}

void CardButton::moveWith(Spring spring)
{
    m_motion.stop();
    m_from = m_state;
    m_spring = spring;
    if (!m_moves || !isVisible()) {
        advance(spring.settlingTime(), spring);
        return;
    }
    m_motion.setStartValue(0.0);
    m_motion.setEndValue(spring.settlingTime());
    m_motion.setDuration(static_cast<int>(std::lround(spring.settlingTime() * 1000)));
    m_motion.start();
}

void CardButton::advance(double seconds, Spring spring)
{
    const double part = seconds >= spring.settlingTime() ? 1 : spring.position(seconds);
    const auto between = [part](double from, double to) { return from + (to - from) * part; };
    m_state.hover = between(m_from.hover, m_hovered ? 1.0 : 0.0);
    m_state.scale = between(m_from.scale, ButtonState::targetScale(isDown(), m_hovered));
    Q_EMIT stateChanged();
}

} // namespace kelp

#pragma once

#include "overlay/ThemedButton.h"
#include "ui/Spring.h"

#include <QAbstractButton>
#include <QVariantAnimation>

namespace kelp {

/// A real button that paints nothing: it lies over its picture on the card and gives it hover, press, keyboard focus
/// and a voice. What it feels goes into the next painting of the card as its `state`.
class CardButton final : public QAbstractButton
{
    Q_OBJECT

public:
    CardButton(const QString &label, QWidget *parent);

    [[nodiscard]] const ButtonState &state() const { return m_state; }
    /// Without motion a state shows at once.
    void setMotion(bool moves) { m_moves = moves; }

Q_SIGNALS:
    void stateChanged();

protected:
    void paintEvent(QPaintEvent *) override {}
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void moveWith(Spring spring);
    void advance(double seconds, Spring spring);

    ButtonState m_state;
    ButtonState m_from;
    bool m_hovered = false;
    bool m_moves = true;
    Spring m_spring;
    QVariantAnimation m_motion; ///< its value is the time in seconds
};

} // namespace kelp

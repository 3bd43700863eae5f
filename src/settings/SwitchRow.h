#pragma once

#include "ui/Spring.h"

#include <QCheckBox>
#include <QVariantAnimation>

namespace kelp {

/// A label with a switch at the right; the whole row switches.
class SwitchRow final : public QCheckBox
{
    Q_OBJECT

public:
    explicit SwitchRow(const QString &label, QWidget *parent = nullptr);

    /// Something the user should know of this switch: a symbol beside the label, with the text as its tip. Empty =
    /// none.
    void setNote(const QString &note);
    /// Shows the state without a signal and without motion.
    void reflect(bool on);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
    void keyPressEvent(QKeyEvent *event) override;
    void nextCheckState() override;
    void paintEvent(QPaintEvent *event) override;

private:
    void slide();

    QString m_note;
    double m_knob = 0; ///< 0 = off, 1 = on; a spring may overshoot
    QVariantAnimation m_motion{this};
};

} // namespace kelp

#pragma once

#include <QCheckBox>
#include <QColor>

namespace kelp {

/// A calendar: a check box, its colour and its name. Clicking anywhere in the row toggles it.
class CalendarRow final : public QCheckBox
{
    Q_OBJECT

public:
    CalendarRow(const QString &name, const QColor &color, QWidget *parent = nullptr);

    /// Shows the state without a signal.
    void reflect(bool on);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return {60, sizeHint().height()}; }

protected:
    bool event(QEvent *event) override;
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QRect nameFrame() const;

    QString m_name; ///< somebody else's: never a button's text, in which "&" means something
    QColor m_color;
};

} // namespace kelp

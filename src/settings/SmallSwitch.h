#pragma once

#include <QCheckBox>

namespace kelp {

/// A small switch with its label beside it.
class SmallSwitch final : public QCheckBox
{
    Q_OBJECT

public:
    explicit SmallSwitch(const QString &label, QWidget *parent = nullptr);

    /// Shows the state without a signal.
    void show(bool on);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};

} // namespace kelp

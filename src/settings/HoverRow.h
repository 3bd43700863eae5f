#pragma once

#include <QPushButton>

class QHBoxLayout;

namespace kelp {

/// A row as wide as the panel that can be clicked anywhere; what it shows is laid out in `row`. Labels in it let the
/// pointer through.
class HoverRow : public QPushButton
{
    Q_OBJECT

public:
    static constexpr int leastHeight = 28;

    explicit HoverRow(QWidget *parent = nullptr);

    [[nodiscard]] QHBoxLayout &row() { return *m_row; }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QHBoxLayout *m_row;
};

} // namespace kelp

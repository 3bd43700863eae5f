#pragma once

#include <QComboBox>

namespace kelp {

/// A choice among a few. The wheel scrolls the panel, not the choice.
class Picker final : public QComboBox
{
    Q_OBJECT

public:
    explicit Picker(QWidget *parent = nullptr);

    void showPopup() override;
    void hidePopup() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};

} // namespace kelp

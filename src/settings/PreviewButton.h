#pragma once

#include <QPushButton>

namespace kelp {

/// The way to see the overlay as it will be: as wide as its column and not to be overlooked.
class PreviewButton final : public QPushButton
{
    Q_OBJECT

public:
    explicit PreviewButton(QWidget *parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace kelp

#pragma once

#include <QPushButton>

namespace kelp {

/// A button with a text.
class TextButton final : public QPushButton
{
    Q_OBJECT

public:
    enum class Look {
        Prominent,   ///< filled with the accent colour
        Quiet,       ///< on a faint ground
        Plain,       ///< only the text, in the accent colour
        Destructive, ///< filled with red
    };

    TextButton(const QString &text, Look look, QWidget *parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Look m_look;
};

} // namespace kelp

#pragma once

#include <QPushButton>

namespace kelp {

/// A 12-point symbol in a square of 22 points, all of which can be clicked. `help` is its tip and its name.
class IconButton : public QPushButton
{
    Q_OBJECT

public:
    IconButton(const QString &symbol, const QString &help, QWidget *parent = nullptr);

    /// A click opens this menu, which becomes the button's. (QPushButton's own menus open in a nested event loop.)
    void openOnClick(QMenu *menu);
    [[nodiscard]] QMenu *opened() const { return m_menu; }

    [[nodiscard]] QSize sizeHint() const override { return {22, 22}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
    QMenu *m_menu = nullptr;
};

} // namespace kelp

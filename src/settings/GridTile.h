#pragma once

#include <QRadioButton>

namespace kelp {

/// A choice in the grid of themes: a picture with a ring around it when it is chosen, and a name below. What is chosen
/// is decided elsewhere; a click only asks for it.
class GridTile : public QRadioButton
{
    Q_OBJECT

public:
    static constexpr int ringRoom = 4; ///< around the picture, for the ring
    static constexpr int nameHeight = 20;

    /// `id` is the value of the preference that the tile stands for.
    GridTile(QString id, const QString &name, QWidget *parent);

    [[nodiscard]] const QString &id() const { return m_id; }
    /// Whether reaching it with the arrow keys chooses it.
    [[nodiscard]] virtual bool isChosenByArrows() const { return true; }

    /// Where the picture lies.
    [[nodiscard]] QRectF pictureFrame() const;
    [[nodiscard]] static QSize sizeFor(const QSizeF &picture);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    virtual void paintPicture(QPainter &painter, const QRectF &frame) = 0;
    /// The text below the picture; empty where the picture holds it.
    [[nodiscard]] virtual QString caption() const { return text(); }
    /// A symbol above a text, both in the middle.
    void paintNote(QPainter &painter, const QRectF &frame, const QString &symbol, double symbolSize,
                   const QString &text);
    [[nodiscard]] bool showsFocus() const { return hasFocus() && m_byKeyboard; }

    void nextCheckState() override {}
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

    static constexpr double radius = 9;

private:
    void paintCaption(QPainter &painter, const QRectF &picture);

    QString m_id;
    bool m_byKeyboard = false; ///< how the focus came here
};

} // namespace kelp

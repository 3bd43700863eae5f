#pragma once

#include "overlay/OverlayScene.h"
#include "themes/ThemeBackgroundView.h"
#include "ui/Arrangement.h"

#include <QHash>
#include <QPixmap>
#include <QVariantAnimation>
#include <QWidget>

#include <vector>

class QLabel;

namespace kelp {

class CardButton;

/// What fills one screen: the theme's background and the card in the middle, kept as one picture of which only what
/// changes is painted again. Over the card lie unpainted buttons, and unpainted labels for screen readers.
class OverlayView final : public QWidget
{
    Q_OBJECT

public:
    OverlayView(OverlayScene scene, Instant now);
    ~OverlayView() override;

    /// The time that the card shows.
    void setNow(Instant now);
    /// Without motion the card is there at once and buttons do not move. Set before showing.
    void setMotion(bool moves);
    /// Lets the card come up, once, from now on.
    void playEntrance();
    /// Blends the whole view with `behind`; `shown` (0…1) is the view's part.
    void setBlend(const QPixmap &behind, double shown);

Q_SIGNALS:
    void joinPressed();
    void snoozePressed();
    void dismissPressed();
    void joinPreviousPressed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;

private:
    void layOut();
    void createChildren();
    void placeChildren();
    void addButton(const QString &tag, const QString &label);
    void buttonChanged(const QString &tag);
    [[nodiscard]] Arrangement arranged() const;
    void paintCard(const QRectF &dirty);
    [[nodiscard]] QRectF cardPicture() const;
    [[nodiscard]] QTransform entranceTransform() const;

    OverlayScene m_scene;
    Instant m_now;
    bool m_moves = true;

    ThemeBackgroundView m_background;
    Arrangement m_arrangement;
    QPointF m_cardPosition;
    QPixmap m_card;

    std::vector<QLabel *> m_labels; ///< the countdown's first where there is one, then those of the texts in order
    QHash<QString, CardButton *> m_buttons;

    double m_entrance = 1; ///< 0 = about to come up; a spring, so it passes 1 before it settles there
    QVariantAnimation m_entranceMotion;
    QPixmap m_behind;
    double m_shown = 1;
};

} // namespace kelp

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

    /// The time that the card shows. Only what looks different is painted again.
    void setNow(Instant now);
    /// Seconds until the card looks different, more than 0; infinite where it stands still.
    [[nodiscard]] double untilChange() const;
    /// The time that the background shows; what moves of it is painted again.
    void setFrameTime(Instant shown);
    /// What of the background moves, in points; nothing where it stands still.
    [[nodiscard]] QRectF movingPart() const { return m_background.movingPart(size()); }
    /// Seconds: new frames more often than that show nothing new.
    [[nodiscard]] double leastInterval() const { return m_background.leastInterval(); }
    /// The theme's picture, decoded while the view was shown already.
    void setPicture(const QImage &picture);
    /// Without motion the card is there at once and buttons do not move. Set before showing.
    void setMotion(bool moves);
    /// Lets the card come up, once, from now on.
    void playEntrance();
    /// How far the card has come up: 0 not at all, 1 it is there; a spring passes 1 before it settles.
    void setEntrance(double part);
    /// Blends the whole view with `behind`, or with what lies under a translucent window where that is null; `shown`
    /// (0…1) is the view's part.
    void setBlend(const QPixmap &behind, double shown);

    /// Whether it has been painted since it was made.
    [[nodiscard]] bool isSeen() const { return m_isSeen; }

Q_SIGNALS:
    /// It has been painted for the first time, and reaches the screen when this returns to the event loop.
    void seen();
    void joinPressed();
    void snoozePressed();
    void dismissPressed();
    void joinPreviousPressed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool event(QEvent *event) override;

private:
    void layOut();
    void createChildren();
    void placeChildren();
    void addButton(const QString &tag, const QString &label);
    void buttonChanged(const QString &tag);
    void arrange();
    void paintCard(const QRectF &dirty);
    void paintCardIn(QPainter &painter) const;
    [[nodiscard]] QRectF cardPicture() const;
    [[nodiscard]] QTransform entranceTransform() const;

    OverlayScene m_scene;
    Instant m_now;
    Instant m_frameTime;
    bool m_moves = true;

    ThemeBackgroundView m_background;
    Arrangement m_arrangement;
    QPointF m_cardPosition;
    QImage m_card;

    std::vector<QLabel *> m_labels; ///< the countdown's first where there is one, then those of the texts in order
    QHash<QString, CardButton *> m_buttons;

    double m_entrance = 1; ///< 0 = about to come up; a spring, so it passes 1 before it settles there
    QVariantAnimation m_entranceMotion;
    QPixmap m_behind;
    double m_shown = 1;
    bool m_isSeen = false;
};

} // namespace kelp

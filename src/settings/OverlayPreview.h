#pragma once

#include "settings/PreviewPicture.h"

#include <QVariantAnimation>
#include <QWidget>

#include <memory>
#include <optional>

namespace kelp {

class Clock;

/// The overlay, live and small: it counts down and moves as the real one does. Another theme is faded in. While it is
/// hidden it keeps nothing and does nothing.
class OverlayPreview final : public QWidget
{
    Q_OBJECT

public:
    /// Width over height.
    static constexpr double aspect = 1.6;

    explicit OverlayPreview(Clock &clock, QWidget *parent = nullptr);

    void setScene(const OverlayScene &scene);
    /// A symbol and a text over the lower edge; an empty text takes them away.
    void setCaption(const QString &symbol, const QString &text);
    /// Without motion the theme stands still and is there at once.
    void setMotion(bool moves) { m_moves = moves; }

protected:
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void render();
    void wait();
    void placeCaption();

    Clock &m_clock;
    bool m_moves = true;
    std::optional<OverlayScene> m_scene;
    std::unique_ptr<PreviewPicture> m_picture; ///< while it is shown
    QImage m_shown;
    bool m_isStale = true;
    QImage m_before; ///< what is faded away
    QVariantAnimation m_fade;
    QWidget *m_caption;
    std::unique_ptr<QObject> m_waiting; ///< context of the next frame
};

} // namespace kelp

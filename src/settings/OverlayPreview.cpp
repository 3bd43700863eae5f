#include "settings/OverlayPreview.h"

#include "base/Clock.h"
#include "settings/CaptionPill.h"
#include "settings/Pictures.h"
#include "themes/KelpClock.h"
#include "ui/DesktopColours.h"

#include <QPainter>
#include <QWindow>

#include <algorithm>
#include <cmath>

namespace kelp {

namespace {

constexpr double radius = 12;
constexpr double leastInterval = 1.0 / 20; // seconds between frames: a small picture needs no more
constexpr double longestWait = 1;          // so that a clock that is set is noticed
constexpr int fadeTime = 260;              // ms
constexpr int captionDistance = 14;        // from the lower edge

} // namespace

OverlayPreview::OverlayPreview(Clock &clock, QWidget *parent)
    : QWidget(parent), m_clock(clock), m_caption(new CaptionPill(this))
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_caption->hide();
    m_fade.setStartValue(0.0);
    m_fade.setEndValue(1.0);
    m_fade.setDuration(fadeTime);
    m_fade.setEasingCurve(QEasingCurve::InOutSine);
    connect(&m_fade, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    connect(&m_fade, &QVariantAnimation::finished, this, [this] {
        m_before = {};
        update();
    });
}

void OverlayPreview::setScene(const OverlayScene &scene)
{
    if (m_scene == scene)
        return;
    const bool isOther = m_scene && m_scene->theme != scene.theme;
    m_scene = scene;
    if (!isVisible())
        return;
    if (isOther && m_moves) {
        m_before = m_shown;
        m_fade.stop();
        m_fade.start();
    }
    m_picture = std::make_unique<PreviewPicture>(scene);
    m_isStale = true;
    update();
}

void OverlayPreview::setCaption(const QString &symbol, const QString &text)
{
    static_cast<CaptionPill *>(m_caption)->show(symbol, text);
    m_caption->setVisible(!text.isEmpty());
    placeCaption();
}

void OverlayPreview::placeCaption()
{
    m_caption->adjustSize();
    m_caption->move((width() - m_caption->width()) / 2, height() - captionDistance - m_caption->height());
}

void OverlayPreview::showEvent(QShowEvent *)
{
    if (m_scene)
        m_picture = std::make_unique<PreviewPicture>(*m_scene);
    m_isStale = true;
}

void OverlayPreview::hideEvent(QHideEvent *)
{
    m_waiting.reset();
    m_fade.stop();
    m_before = {};
    m_shown = {};
    m_picture.reset();
}

void OverlayPreview::resizeEvent(QResizeEvent *)
{
    m_isStale = true;
    placeCaption();
}

void OverlayPreview::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange)
        wait(); // it moves only where the user is looking
    QWidget::changeEvent(event);
}

void OverlayPreview::render()
{
    m_isStale = false;
    const QSize pixels = (QSizeF(size()) * devicePixelRatioF()).toSize();
    if (!m_picture || pixels.isEmpty())
        return;
    m_shown = m_picture->paint(KelpClock::shown(m_clock.now()), pixels);
    wait();
}

void OverlayPreview::wait()
{
    m_waiting.reset();
    if (!m_picture || !isVisible())
        return;
    const double least = isActiveWindow() ? leastInterval : longestWait;
    m_waiting = std::make_unique<QObject>();
    m_clock.after(std::clamp(m_picture->untilChange(), least, longestWait), m_waiting.get(), [this] {
        m_isStale = true;
        const QWindow *window = this->window()->windowHandle();
        if (window && window->isExposed())
            update();
        else
            wait(); // minimized, or on another workspace
    });
}

void OverlayPreview::paintEvent(QPaintEvent *)
{
    if (m_isStale)
        render();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF frame = rect();
    paintRounded(painter, frame, radius, m_shown);
    if (!m_before.isNull()) {
        painter.setOpacity(1 - m_fade.currentValue().toDouble());
        paintRounded(painter, frame, radius, m_before);
        painter.setOpacity(1);
    }
    paintEdge(painter, frame, radius, DesktopColours::of(palette()));
}

} // namespace kelp

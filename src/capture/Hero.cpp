#include "capture/Hero.h"

#include "overlay/CardTags.h"
#include "ui/Blur.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

// Seconds from the beginning.
constexpr double arrival = 1.6;
constexpr double fade = 2; // 60 frames
constexpr double cardArrival = 2.5;
constexpr double setOut = 5.4;
constexpr double there = 6.7;
constexpr double pressed = 7.1;
constexpr double released = 7.3;
constexpr double leave = 7.5;

/// A fade goes in two ramps: first the desktop only dims, then the overlay takes over.
constexpr double dimmed = 0.45;
constexpr double dimmedAfter = 0.4; // of the fade

const auto sentence = u"Ask Mira about the launch date before the de"_s;
constexpr double writtenBefore = 14; // letters
constexpr double lettersPerSecond = 19;

constexpr double softRadius = 26; // points
constexpr int softCoarse = 2;     // a blurred picture has no detail to lose

constexpr QPointF resting(842, 668);

double smooth(double part)
{
    const double x = std::clamp(part, 0.0, 1.0);
    return x * x * (3 - 2 * x);
}

/// 0 → 0.45 → 1.
double ramps(double part)
{
    return part < dimmedAfter ? dimmed * smooth(part / dimmedAfter)
                              : dimmed + (1 - dimmed) * smooth((part - dimmedAfter) / (1 - dimmedAfter));
}

QString written(double t)
{
    // People do not write in time with a clock.
    const double writing = std::min(t, arrival);
    const double letters = writtenBefore + lettersPerSecond * writing + 0.8 * std::sin(9 * writing);
    return sentence.left(std::clamp<qsizetype>(static_cast<qsizetype>(letters), 0, sentence.size()));
}

bool hasCaret(double t)
{
    constexpr double blink = 1.06;
    return t < arrival || std::fmod(t - arrival, blink) < blink / 2;
}

void paintPointer(QPainter &painter, QPointF tip)
{
    QPainterPath arrow;
    arrow.moveTo(0, 0);
    for (const QPointF &corner : {QPointF(0, 17.2), QPointF(4.0, 13.6), QPointF(6.7, 19.8), QPointF(9.5, 18.6),
                                  QPointF(6.9, 12.6), QPointF(12.3, 12.2)})
        arrow.lineTo(corner);
    arrow.closeSubpath();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(tip);
    painter.scale(1.15, 1.15);
    painter.strokePath(arrow.translated(0.6, 1.4),
                       QPen(QColor(0, 0, 0, 50), 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.strokePath(arrow, QPen(Qt::white, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.fillPath(arrow, QColor(18, 20, 24));
    painter.restore();
}

} // namespace

Hero::Hero(const OverlayScene &scene, Instant reference)
    : m_reference(reference), m_film(scene, DesktopScene::size), m_join(m_film.frameOf(tag::join, reference).center())
{
}

void Hero::paint(QPainter &painter, double t)
{
    const double covered = cover(t);
    if (covered < 1)
        paintDesktop(painter, t, covered);
    if (covered > 0)
        paintOverlay(painter, t, covered);
    paintPointer(painter, pointer(t));
}

/// The desktop, which gets out of focus while the overlay comes: two texts in one place would be hard to read.
void Hero::paintDesktop(QPainter &painter, double t, double covered)
{
    m_desktop.paint(painter, written(t), hasCaret(t));
    if (covered == 0)
        return;
    if (m_soft.isNull()) {
        const QImage desktop = m_desktop.picture(1, written(arrival));
        const QImage small =
            desktop.scaled(desktop.size() / softCoarse, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        m_soft = blurred(small.convertToFormat(QImage::Format_ARGB32_Premultiplied), softRadius / softCoarse);
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setOpacity(smooth(covered / dimmed));
    painter.drawImage(QRectF(QPointF(), DesktopScene::size), m_soft);
    painter.setOpacity(1);
}

double Hero::cover(double t)
{
    return t < leave ? ramps((t - arrival) / fade) : ramps(1 - (t - leave) / fade);
}

void Hero::paintOverlay(QPainter &painter, double t, double opacity)
{
    const Instant shown = m_reference + t;
    if (opacity < 1) {
        const double density = painter.device()->devicePixelRatioF();
        if (m_cover.isNull()) {
            m_cover = QImage((DesktopScene::size * density).toSize(), QImage::Format_RGB32);
            m_cover.setDevicePixelRatio(density);
        }
        QPainter background(&m_cover);
        m_film.paintBackground(background, shown);
        background.end();
        painter.setOpacity(opacity);
        painter.drawImage(QPointF(), m_cover);
        painter.setOpacity(1);
    } else {
        m_film.paintBackground(painter, shown);
    }
    // The card comes with the second ramp and goes with the first.
    const double cardOpacity = t < leave ? 1 : std::clamp((opacity - dimmed) / (1 - dimmed), 0.0, 1.0);
    if (t >= cardArrival && cardOpacity > 0)
        m_film.paintCard(painter, shown, buttons(t), Entrance::at(t - cardArrival), cardOpacity);
}

ButtonStates Hero::buttons(double t) const
{
    constexpr double quick = 0.2; // seconds
    const double hover = smooth((t - there + quick) / quick);
    if (hover == 0)
        return {};
    const double press = smooth((t - pressed) / 0.12) * (1 - smooth((t - released) / 0.18));
    const double hovered = std::lerp(1, ButtonState::targetScale(false, true), hover);
    return {{tag::join, {.hover = hover, .scale = std::lerp(hovered, ButtonState::targetScale(true, true), press)}}};
}

QPointF Hero::pointer(double t) const
{
    const double part = smooth(smooth((t - setOut) / (there - setOut)));
    const QPointF target = m_join + QPointF(18, 4);
    // In a slight bow, as a hand moves.
    const QPointF bow = QPointF(-46, -14) * std::sin(part * 3.14159265);
    return resting + (target - resting) * part + bow;
}

} // namespace kelp

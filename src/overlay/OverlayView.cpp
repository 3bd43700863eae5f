#include "overlay/OverlayView.h"

#include "overlay/CardButton.h"
#include "overlay/CardTags.h"
#include "ui/Spring.h"

#include <QEvent>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace kelp {

namespace {

constexpr double bleed = OverlayScene::bleed;

constexpr Spring entranceSpring{0.7, 0.75};
constexpr double entranceDelay = 0.05; // seconds
constexpr double entranceScale = 0.94;

/// A text for screen readers; the card's picture shows it to everyone else.
class SpokenLabel final : public QLabel
{
public:
    explicit SpokenLabel(QWidget *parent) : QLabel(parent)
    {
        setTextFormat(Qt::PlainText);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
    }

protected:
    void paintEvent(QPaintEvent *) override {}
};

} // namespace

OverlayView::OverlayView(OverlayScene scene, Instant now)
    : m_scene(std::move(scene)), m_now(now), m_background(m_scene.theme)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setWindowTitle(QStringLiteral("Kelp"));
    setAccessibleName(QStringLiteral("Meeting reminder"));
    createChildren();
    setFocus(); // not the first button: nothing is chosen until the user presses Tab
    connect(&m_entranceMotion, &QVariantAnimation::valueChanged, this, [this](const QVariant &seconds) {
        const QRectF before = entranceTransform().mapRect(cardPicture());
        m_entrance = entranceSpring.position(seconds.toDouble() - entranceDelay);
        update(before.united(entranceTransform().mapRect(cardPicture())).toAlignedRect());
    });
    connect(&m_entranceMotion, &QVariantAnimation::finished, this, [this] {
        m_entrance = 1;
        update();
    });
}

OverlayView::~OverlayView()
{
    // A button that loses the focus while the window goes would ask for a card that is gone already.
    for (CardButton *button : std::as_const(m_buttons))
        button->disconnect(this);
}

void OverlayView::setNow(Instant now)
{
    m_now = now;
    const Arrangement before = std::exchange(m_arrangement, arranged());
    const auto countdown = m_arrangement.frameOf(tag::countdown);
    if (m_arrangement.size() == before.size() && countdown && countdown == before.frameOf(tag::countdown)) {
        placeChildren();
        paintCard(*countdown);
    } else {
        layOut();
    }
}

void OverlayView::setMotion(bool moves)
{
    m_moves = moves;
    for (CardButton *button : std::as_const(m_buttons))
        button->setMotion(moves);
}

void OverlayView::playEntrance()
{
    if (!m_moves)
        return;
    m_entrance = 0;
    const double seconds = entranceDelay + entranceSpring.settlingTime();
    m_entranceMotion.setStartValue(0.0);
    m_entranceMotion.setEndValue(seconds);
    m_entranceMotion.setDuration(static_cast<int>(std::lround(seconds * 1000)));
    m_entranceMotion.start();
}

void OverlayView::setBlend(const QPixmap &behind, double shown)
{
    m_behind = behind;
    m_shown = shown;
    update();
}

void OverlayView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_shown < 1) {
        painter.fillRect(rect(), Qt::black);
        painter.drawPixmap(rect(), m_behind);
        painter.setOpacity(m_shown);
    }
    m_background.paint(painter, size());
    painter.setOpacity(m_shown * std::clamp(m_entrance, 0.0, 1.0));
    painter.setTransform(entranceTransform(), true);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(cardPicture().topLeft(), m_card);
}

void OverlayView::resizeEvent(QResizeEvent *)
{
    layOut();
}

bool OverlayView::event(QEvent *event)
{
    if (event->type() == QEvent::ScreenChangeInternal) // the density may be another one
        layOut();
    return QWidget::event(event);
}

Arrangement OverlayView::arranged() const
{
    ButtonStates states;
    for (auto each = m_buttons.begin(); each != m_buttons.end(); ++each)
        states.insert(each.key(), each.value()->state());
    return m_scene.card(size(), m_now, states);
}

void OverlayView::layOut()
{
    m_arrangement = arranged();
    m_cardPosition = OverlayScene::cardPosition(size(), m_arrangement);
    placeChildren();
    m_card = QPixmap((cardPicture().size() * devicePixelRatioF()).toSize());
    m_card.setDevicePixelRatio(devicePixelRatioF());
    m_card.fill(Qt::transparent);
    paintCard(cardPicture().translated(-m_cardPosition));
    update();
}

/// Labels come before buttons: screen readers read in the order of creation.
void OverlayView::createChildren()
{
    m_arrangement = arranged();
    const auto labels = m_arrangement.texts().size() + (m_arrangement.frameOf(tag::countdown) ? 1 : 0);
    while (m_labels.size() < labels)
        m_labels.push_back(new SpokenLabel(this));
    for (const Arrangement::Tagged &each : m_arrangement.tagged()) {
        if (each.tag != tag::countdown)
            addButton(each.tag, each.label);
    }
    const auto forward = [this](const QString &name, void (OverlayView::*signal)()) {
        if (CardButton *button = m_buttons.value(name))
            connect(button, &QAbstractButton::clicked, this, signal);
    };
    forward(tag::join, &OverlayView::joinPressed);
    forward(tag::snooze, &OverlayView::snoozePressed);
    forward(tag::dismiss, &OverlayView::dismissPressed);
    forward(tag::joinPrevious, &OverlayView::joinPreviousPressed);
}

void OverlayView::addButton(const QString &tag, const QString &label)
{
    auto *button = new CardButton(label, this);
    m_buttons.insert(tag, button);
    connect(button, &CardButton::stateChanged, this, [this, tag] { buttonChanged(tag); });
}

void OverlayView::placeChildren()
{
    auto label = m_labels.begin();
    const auto place = [&](const QString &words, const QRectF &frame) {
        (*label)->setText(words);
        (*label++)->setGeometry(frame.translated(m_cardPosition).toAlignedRect());
    };
    for (const Arrangement::Tagged &each : m_arrangement.tagged()) {
        if (each.tag == tag::countdown)
            place(each.label, each.frame);
    }
    for (const Arrangement::Text &each : m_arrangement.texts())
        place(each.text, each.frame);
    for (const Arrangement::Tagged &each : m_arrangement.tagged()) {
        if (CardButton *button = m_buttons.value(each.tag))
            button->setGeometry(each.frame.translated(m_cardPosition).toAlignedRect());
    }
}

void OverlayView::buttonChanged(const QString &tag)
{
    m_arrangement = arranged();
    paintCard(m_arrangement.frameOf(tag).value_or(QRectF()).adjusted(-bleed / 2, -bleed / 2, bleed / 2, bleed / 2));
}

QRectF OverlayView::cardPicture() const
{
    return m_arrangement.frame().translated(m_cardPosition).adjusted(-bleed, -bleed, bleed, bleed);
}

/// `dirty` is in the card's own coordinates.
void OverlayView::paintCard(const QRectF &dirty)
{
    if (m_card.isNull())
        return;
    QPainter painter(&m_card);
    painter.translate(bleed, bleed);
    const QRectF whole = dirty.toAlignedRect();
    painter.setClipRect(whole);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(whole, Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    m_arrangement.paint(painter, whole);
    update(entranceTransform().mapRect(whole.translated(m_cardPosition)).toAlignedRect());
}

QTransform OverlayView::entranceTransform() const
{
    const double scale = entranceScale + (1 - entranceScale) * m_entrance;
    const QPointF centre = cardPicture().center();
    return QTransform::fromTranslate(-centre.x(), -centre.y()) * QTransform::fromScale(scale, scale) *
           QTransform::fromTranslate(centre.x(), centre.y());
}

} // namespace kelp

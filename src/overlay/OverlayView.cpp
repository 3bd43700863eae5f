#include "overlay/OverlayView.h"

#include "base/Memory.h"
#include "overlay/CardButton.h"
#include "overlay/CardTags.h"
#include "overlay/Entrance.h"
#include "themes/PaintTarget.h"
#include "themes/Pieces.h"
#include "ui/BlankImage.h"

#include <QBackingStore>
#include <QCloseEvent>
#include <QEvent>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace kelp {

namespace {

constexpr double bleed = OverlayScene::bleed;

/// A text for screen readers; the card's picture shows it to everyone else.
class SpokenLabel final : public QLabel
{
public:
    explicit SpokenLabel(QWidget *parent) : QLabel(parent)
    {
        setTextFormat(Qt::PlainText);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
        setUpdatesEnabled(false); // or a new text would have all that lies under the label painted again
    }

protected:
    void paintEvent(QPaintEvent *) override {}
};

/// All of a new window's memory is about to be written.
void populate(QBackingStore *store)
{
    const QPaintDevice *device = store ? store->paintDevice() : nullptr;
    if (!device || device->devType() != QInternal::Image)
        return;
    const auto *image = static_cast<const QImage *>(device);
    memory::populate(const_cast<uchar *>(image->constBits()), static_cast<std::size_t>(image->sizeInBytes()));
}

} // namespace

OverlayView::OverlayView(OverlayScene scene, Instant now)
    : m_scene(std::move(scene)), m_now(now), m_frameTime(now), m_background(m_scene.theme, m_scene.background)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    setWindowTitle(QStringLiteral("Kelp"));
    setAccessibleName(QStringLiteral("Meeting reminder"));
    createChildren();
    setFocus(); // not the first button: nothing is chosen until the user presses Tab
    connect(&m_entranceMotion, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &seconds) { setEntrance(Entrance::at(seconds.toDouble()).part); });
    connect(&m_entranceMotion, &QVariantAnimation::finished, this, [this] { setEntrance(1); });
}

OverlayView::~OverlayView()
{
    // A button that loses the focus while the window goes would ask for a card that is gone already.
    for (CardButton *button : std::as_const(m_buttons))
        button->disconnect(this);
}

void OverlayView::setNow(Instant now)
{
    const Instant then = std::exchange(m_now, now);
    for (const QRectF &part : m_arrangement.changed(then, now))
        paintCard(part);
    const QString countdown = m_scene.countdown(now);
    if (countdown.isEmpty())
        return;
    // Every second: all but the digits that turn is left alone where the countdown only says something else.
    const std::optional<QRectF> turned = m_arrangement.turnDigits(tag::countdown, countdown);
    if (!turned)
        return layOut();
    if (turned->isEmpty())
        return;
    m_labels.front()->setText(countdown);
    paintCard(*turned);
}

double OverlayView::untilChange() const
{
    return std::min(m_scene.untilNextCountdown(m_now), m_arrangement.untilChange(m_now, devicePixelRatioF()));
}

void OverlayView::setFrameTime(Instant shown)
{
    update(m_background.changed(size(), m_frameTime, shown));
    m_frameTime = shown;
}

void OverlayView::setPicture(const QImage &picture)
{
    m_background.setPicture(picture);
    update();
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
    const double seconds = Entrance::duration();
    m_entranceMotion.setStartValue(0.0);
    m_entranceMotion.setEndValue(seconds);
    m_entranceMotion.setDuration(static_cast<int>(std::lround(seconds * 1000)));
    m_entranceMotion.start();
}

void OverlayView::setEntrance(double part)
{
    const QRectF before = entranceTransform().mapRect(cardPicture());
    m_entrance = part;
    update(before.united(entranceTransform().mapRect(cardPicture())).toAlignedRect());
}

void OverlayView::setBlend(const QPixmap &behind, double shown)
{
    m_behind = behind;
    m_shown = shown;
    update();
}

void OverlayView::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    if (!m_isSeen)
        populate(backingStore());
    if (m_shown < 1) {
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        if (m_behind.isNull())
            painter.fillRect(rect(), Qt::transparent);
        else
            painter.drawPixmap(rect(), m_behind);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.setOpacity(m_shown);
        if (m_shown == 0)
            return;
    }
    FreePainter free(painter, size());
    m_background.paint(free.painter(), size(), m_frameTime, event->region());
    // Once the card has come up, only what of it has to be painted again.
    if (m_entrance == 1) {
        const QRegion part = event->region() & cardPicture().toAlignedRect();
        forEachSmallPiece(free.painter(), part, [&](const QRectF &) { paintCardIn(free.painter()); });
    } else {
        paintCardIn(painter);
    }
    if (!std::exchange(m_isSeen, true))
        Q_EMIT seen();
}

/// Faded, blurred and scaled as far as the entrance has come.
void OverlayView::paintCardIn(QPainter &painter) const
{
    Entrance{m_entrance}.paint(painter, cardPicture(), m_card, m_shown);
}

void OverlayView::resizeEvent(QResizeEvent *)
{
    layOut();
}

/// Desktops have keys that close a window: that is an answer.
void OverlayView::closeEvent(QCloseEvent *event)
{
    // Under Wayland it looks like our own wish, as when Kelp quits; ignoring that would keep Kelp from quitting.
    if (event->spontaneous())
        event->ignore(); // there is a fade
    Q_EMIT dismissPressed();
}

bool OverlayView::event(QEvent *event)
{
    // The density may be another one. Before the card is drawn for the first time, it waits for the size.
    if (event->type() == QEvent::ScreenChangeInternal && !m_card.isNull())
        layOut();
    return QWidget::event(event);
}

void OverlayView::arrange()
{
    ButtonStates states;
    for (auto each = m_buttons.begin(); each != m_buttons.end(); ++each)
        states.insert(each.key(), each.value()->state());
    const Arrangement before = std::exchange(m_arrangement, m_scene.card(size(), m_now, states));
    m_arrangement.inheritGlows(before);
}

void OverlayView::layOut()
{
    arrange();
    m_cardPosition = OverlayScene::cardPosition(size(), m_arrangement);
    placeChildren();
    m_card = transparentImage(cardPicture().size(), devicePixelRatioF());
    paintCard(cardPicture().translated(-m_cardPosition));
    update();
}

/// Labels come before buttons: screen readers read in the order of creation.
void OverlayView::createChildren()
{
    arrange();
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
    arrange();
    paintCard(m_arrangement.frameOf(tag).value_or(QRectF()).adjusted(-bleed, -bleed, bleed, bleed));
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
    m_arrangement.paint(painter, m_now, whole);
    update(entranceTransform().mapRect(whole.translated(m_cardPosition)).toAlignedRect());
}

QTransform OverlayView::entranceTransform() const
{
    return Entrance{m_entrance}.transform(cardPicture());
}

} // namespace kelp

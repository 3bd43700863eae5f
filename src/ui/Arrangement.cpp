#include "ui/Arrangement.h"

#include "ui/Digits.h"
#include "ui/Glow.h"

#include <QPainter>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

bool differsInDigitsOnly(const QString &a, const QString &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](QChar left, QChar right) {
        return left == right || (Digits::isDigit(left) && Digits::isDigit(right));
    });
}

} // namespace

std::optional<QRectF> Arrangement::frameOf(const QString &tag) const
{
    const auto found =
        std::find_if(m_tagged.begin(), m_tagged.end(), [&](const Tagged &each) { return each.tag == tag; });
    return found == m_tagged.end() ? std::nullopt : std::optional(found->frame);
}

QRectF Arrangement::bounds() const
{
    QRectF result;
    for (const Painting &painting : m_paintings)
        result |= painting.placement.mapRect(painting.bounds);
    return result;
}

QString Arrangement::words() const
{
    QStringList result;
    for (const Painting &painting : m_paintings)
        result.append(painting.words);
    return result.join(u'\n');
}

void Arrangement::paint(QPainter &painter, Instant now, const QRectF &dirty) const
{
    for (const Painting &painting : m_paintings) {
        if (!dirty.isEmpty() && !painting.placement.mapRect(painting.bounds).intersects(dirty))
            continue;
        painter.save();
        painter.setTransform(painting.placement, true);
        painting.picture.paint(painter, now);
        painter.restore();
    }
}

double Arrangement::untilChange(Instant now, double density) const
{
    double result = std::numeric_limits<double>::infinity();
    for (const Painting &painting : m_paintings) {
        if (painting.picture.untilChange)
            result = std::min(result, painting.picture.untilChange(now, density));
    }
    return result;
}

std::vector<QRectF> Arrangement::changed(Instant from, Instant to) const
{
    std::vector<QRectF> result;
    for (const Painting &painting : m_paintings) {
        const QRectF own = painting.picture.changed ? painting.picture.changed(from, to) : QRectF();
        if (own.isEmpty())
            continue;
        // What overlaps is one part: a shape and its light are not painted twice.
        QRectF part = painting.placement.mapRect(own);
        std::erase_if(result, [&](const QRectF &other) {
            const bool overlaps = other.intersects(part);
            if (overlaps)
                part |= other;
            return overlaps;
        });
        result.push_back(part);
    }
    return result;
}

void Arrangement::inheritGlows(const Arrangement &before)
{
    for (std::size_t i = 0; i < std::min(m_glows.size(), before.m_glows.size()); ++i)
        m_glows[i]->inherit(*before.m_glows[i]);
}

std::optional<QRectF> Arrangement::turnDigits(const QString &tag, const QString &label)
{
    const auto found =
        std::find_if(m_tagged.begin(), m_tagged.end(), [&](const Tagged &each) { return each.tag == tag; });
    if (found == m_tagged.end() || !differsInDigitsOnly(found->label, label))
        return {};
    const Place &place = m_places[static_cast<std::size_t>(found - m_tagged.begin())];
    const std::span parts(m_paintings.data() + place.paintings, place.paintingCount);
    // Digits that do not run stay as they are, and so does a light around those that do.
    const bool allRun = std::all_of(parts.begin(), parts.end(), [](const Painting &each) {
        return each.pictureOf || std::none_of(each.words.begin(), each.words.end(), Digits::isDigit);
    });
    if (!allRun)
        return {};
    QRectF different;
    auto digit = label.begin();
    for (Painting &each : parts) {
        if (!each.pictureOf)
            continue;
        digit = std::find_if(digit, label.end(), Digits::isDigit);
        if (digit == label.end())
            break;
        if (each.words != *digit) {
            each.words = *digit;
            each.picture = each.pictureOf(*digit);
            different |= each.placement.mapRect(each.bounds);
        }
        ++digit;
    }
    found->label = label;
    return different;
}

void Arrangement::addPicture(const QRectF &bounds, Picture picture, const QString &words)
{
    m_paintings.push_back({{}, bounds, std::move(picture), words});
}

void Arrangement::addPainting(const QRectF &bounds, std::function<void(QPainter &)> paint, const QString &words)
{
    addPicture(bounds, {[paint = std::move(paint)](QPainter &painter, Instant) { paint(painter); }}, words);
}

void Arrangement::addDigit(const QRectF &bounds, QChar digit, std::function<Picture(QChar)> pictureOf)
{
    Picture picture = pictureOf(digit);
    m_paintings.push_back({{}, bounds, std::move(picture), digit, std::move(pictureOf)});
}

void Arrangement::addGlow(std::shared_ptr<Glow> glow)
{
    m_glows.push_back(std::move(glow));
}

void Arrangement::addText(const QString &text)
{
    m_texts.push_back({text, frame()});
}

void Arrangement::addChild(const Arrangement &child, const QTransform &placement)
{
    for (const Place &place : child.m_places)
        m_places.push_back({place.paintings + m_paintings.size(), place.paintingCount});
    for (const Painting &painting : child.m_paintings) {
        m_paintings.push_back(painting);
        m_paintings.back().placement *= placement;
    }
    for (const Text &each : child.m_texts)
        m_texts.push_back({each.text, placement.mapRect(each.frame)});
    for (const Tagged &each : child.m_tagged)
        m_tagged.push_back({each.tag, each.label, placement.mapRect(each.frame)});
    m_glows.insert(m_glows.end(), child.m_glows.begin(), child.m_glows.end());
}

void Arrangement::addChild(const Arrangement &child, QPointF position)
{
    addChild(child, QTransform::fromTranslate(position.x(), position.y()));
}

void Arrangement::becomeTagged(const QString &tag)
{
    QStringList words;
    for (const Text &each : m_texts)
        words.append(each.text);
    m_texts.clear();
    m_tagged.push_back({tag, words.join(u' '), frame()});
    m_places.push_back({0, m_paintings.size()});
}

} // namespace kelp

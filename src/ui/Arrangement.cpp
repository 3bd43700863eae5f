#include "ui/Arrangement.h"

#include <QPainter>
#include <QStringList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

std::optional<QRectF> Arrangement::frameOf(const QString &tag) const
{
    const auto found =
        std::find_if(m_tagged.begin(), m_tagged.end(), [&](const Tagged &each) { return each.tag == tag; });
    return found == m_tagged.end() ? std::nullopt : std::optional(found->frame);
}

void Arrangement::paint(QPainter &painter, const QRectF &dirty) const
{
    for (const Painting &painting : m_paintings) {
        if (!dirty.isEmpty() && !painting.placement.mapRect(painting.bounds).intersects(dirty))
            continue;
        painter.save();
        painter.setTransform(painting.placement, true);
        painting.paint(painter);
        painter.restore();
    }
}

void Arrangement::addPainting(const QRectF &bounds, std::function<void(QPainter &)> paint)
{
    m_paintings.push_back({{}, bounds, std::move(paint)});
}

void Arrangement::addText(const QString &text)
{
    m_texts.push_back({text, frame()});
}

void Arrangement::addChild(const Arrangement &child, const QTransform &placement)
{
    for (const Painting &painting : child.m_paintings)
        m_paintings.push_back({painting.placement * placement, painting.bounds, painting.paint});
    for (const Text &each : child.m_texts)
        m_texts.push_back({each.text, placement.mapRect(each.frame)});
    for (const Tagged &each : child.m_tagged)
        m_tagged.push_back({each.tag, each.label, placement.mapRect(each.frame)});
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
}

} // namespace kelp

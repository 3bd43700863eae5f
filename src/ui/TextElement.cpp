#include "ui/Blink.h"
#include "ui/Digits.h"
#include "ui/ElementNode.h"
#include "ui/PlainText.h"
#include "ui/TextFit.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString cursorSign = u"_"_s;

class TextNode final : public Element::Node
{
public:
    TextNode(QString text, Text::Style style) : m_text(std::move(text)), m_style(std::move(style)) {}

    [[nodiscard]] Arrangement arrange(double maxWidth) const override
    {
        return m_style.fixedDigits ? arrangeDigits() : arrangeLines(maxWidth);
    }

private:
    [[nodiscard]] Arrangement arrangeLines(double maxWidth) const
    {
        const QString whole = m_style.cursor ? m_text + cursorSign : m_text;
        FittedText fitted = fitText(whole, m_style.font, maxWidth, m_style.lines, m_style.shrink, m_style.height);
        Arrangement result(
            QSizeF(std::ceil(fitted.width), fitted.lineHeight * static_cast<double>(fitted.lines.size())));
        const double cursorWidth = takeCursor(fitted) ? advanceOf(cursorSign, fitted.font) : 0;
        std::vector<QPointF> starts;
        for (const double width : fitted.widths) {
            starts.emplace_back((result.size().width() - width) / 2,
                                fitted.ascent + fitted.lineHeight * static_cast<double>(starts.size()));
        }
        if (cursorWidth > 0) {
            // A sign without a direction stands where the text ends: on the left of one that runs from right to left.
            const double end = fitted.widths.back();
            QPointF &last = starts.back();
            last.rx() -= cursorWidth / 2;
            addCursor(result, fitted.font, last + QPointF(fitted.rightToLeft ? 0 : end, 0), cursorWidth);
            last.rx() += fitted.rightToLeft ? cursorWidth : 0;
        }
        result.addText(withoutIsolates(m_text));
        // The strokes of slanted letters reach beyond their advance widths. Above and below it is told exactly: what
        // lies there, as a countdown, is painted often, and all that reaches into it with it.
        const double aside = fitted.font.pixelSize() / 2.0;
        addWords(result, result.frame().adjusted(-aside, -fitted.rise - 1, aside, fitted.sink + 1), fitted.font, m_text,
                 [fitted, starts](QPainter &painter) {
                     painter.setLayoutDirection(fitted.rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
                     for (qsizetype i = 0; i < fitted.lines.size(); ++i)
                         painter.drawText(starts[static_cast<std::size_t>(i)], fitted.lines[i]);
                 });
        return result;
    }

    /// Whether there was a cursor: it is gone where the text was cut.
    [[nodiscard]] bool takeCursor(FittedText &fitted) const
    {
        if (!m_style.cursor || !fitted.lines.last().endsWith(cursorSign))
            return false;
        fitted.lines.last().chop(1);
        fitted.widths.back() = advanceOf(fitted.lines.last(), fitted.font);
        return true;
    }

    void addCursor(Arrangement &result, const QFont &font, QPointF position, double width) const
    {
        const QFontMetricsF metrics(font);
        const QRectF box(position.x() - 2, position.y() - metrics.ascent(), width + 4, metrics.height());
        result.addPicture(
            box,
            {.paint =
                 [font, position, colour = *m_style.cursor](QPainter &painter, Instant now) {
                     if (!Blink::isLit(now))
                         return;
                     painter.setFont(font);
                     painter.setPen(colour);
                     painter.drawText(position, cursorSign);
                 },
             .untilChange = [](Instant now, double) { return Blink::untilTurn(now); },
             .changed = [box](Instant from,
                              Instant to) { return Blink::isLit(from) == Blink::isLit(to) ? QRectF() : box; }},
            m_text);
    }

    [[nodiscard]] Arrangement arrangeDigits() const
    {
        const QFontMetricsF metrics(m_style.font);
        const double height = std::ceil(metrics.height());
        const std::shared_ptr<const Digits> digits = Digits::of(m_style.font, m_style.colour);
        // Each for itself: of a clock, few change at a time. Digits and the letters of English have no accents.
        const double reach = m_style.font.pixelSize() / 8.0;
        const auto bounds = [&](double x, double width) {
            return QRectF(x, 0, width, height).adjusted(-reach, -reach, reach, reach);
        };
        Arrangement result;
        double x = 0;
        for (qsizetype start = 0; start < m_text.size();) {
            qsizetype end = start + 1;
            if (Digits::isDigit(m_text[start])) {
                result.addDigit(bounds(x, digits->cell()), m_text[start], [digits, x](QChar digit) -> Picture {
                    return {[=](QPainter &painter, Instant) { digits->paint(painter, digit.unicode(), {x, 0}); }};
                });
                x += digits->cell();
            } else {
                while (end < m_text.size() && !Digits::isDigit(m_text[end]))
                    ++end;
                const QString between = m_text.mid(start, end - start);
                const double width = advanceOf(between, m_style.font);
                addWords(
                    result, bounds(x, width), m_style.font, between,
                    [between, at = QPointF(x, metrics.ascent())](QPainter &painter) { painter.drawText(at, between); });
                x += width;
            }
            start = end;
        }
        result.setSize(QSizeF(std::ceil(x), height));
        result.addText(withoutIsolates(m_text));
        return result;
    }

    /// Something painted that says `words` and stays within `bounds`.
    void addWords(Arrangement &result, const QRectF &bounds, const QFont &font, const QString &words,
                  std::function<void(QPainter &)> draw) const
    {
        result.addPainting(
            bounds,
            [font, colour = m_style.colour, draw = std::move(draw)](QPainter &painter) {
                painter.setRenderHint(QPainter::TextAntialiasing);
                painter.setFont(font);
                painter.setPen(colour);
                draw(painter);
            },
            words);
    }

    QString m_text;
    Text::Style m_style;
};

} // namespace

Text::Text(const QString &text) : m_text(flattened(text)) {}

Text Text::font(const QFont &font) const
{
    Text copy = *this;
    copy.m_style.font = font;
    return copy;
}

Text Text::colour(const QColor &colour) const
{
    Text copy = *this;
    copy.m_style.colour = colour;
    return copy;
}

Text Text::lines(int count) const
{
    Text copy = *this;
    copy.m_style.lines = count;
    return copy;
}

Text Text::shrink(double least) const
{
    Text copy = *this;
    copy.m_style.shrink = least;
    return copy;
}

Text Text::height(double most) const
{
    Text copy = *this;
    copy.m_style.height = most;
    return copy;
}

Text Text::fixedDigits() const
{
    Text copy = *this;
    copy.m_style.fixedDigits = true;
    return copy;
}

Text Text::cursor(const QColor &colour) const
{
    Text copy = *this;
    copy.m_style.cursor = colour;
    return copy;
}

Text::operator Element() const
{
    return Element(std::make_shared<TextNode>(m_text, m_style));
}

Text text(const QString &text)
{
    return Text(text);
}

} // namespace kelp

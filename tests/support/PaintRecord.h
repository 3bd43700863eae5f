#pragma once

#include <QImage>
#include <QList>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainterPath>
#include <QString>

#include <algorithm>

namespace kelp::test {

/// Paint on it, and it tells what was painted with which values.
class PaintRecord final : public QPaintDevice, QPaintEngine
{
public:
    struct Words
    {
        QString text; ///< what is drawn side by side in one font and colour, without isolating marks
        QFont font;
        QColor colour;
        QPointF start; ///< on the base line
        int pieces = 1;
    };
    struct Frame
    {
        QPainterPath path;
        QColor fill;
    };
    struct Image
    {
        QRectF frame;
        QImage image;
    };

    PaintRecord() : QPaintEngine(AllFeatures) {}

    /// The first words that are just these, or null.
    [[nodiscard]] const Words *find(const QString &text) const
    {
        const auto found =
            std::find_if(words.begin(), words.end(), [&](const Words &each) { return each.text == text; });
        return found == words.end() ? nullptr : &*found;
    }

    QList<Words> words;
    QList<Frame> frames;
    QList<Image> images;

    [[nodiscard]] QPaintEngine *paintEngine() const override { return const_cast<PaintRecord *>(this); }
    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    void updateState(const QPaintEngineState &) override {}
    [[nodiscard]] Type type() const override { return User; }

    void drawTextItem(const QPointF &point, const QTextItem &item) override
    {
        const QPointF start = state->transform().map(point);
        QString text = item.text();
        text.removeIf([](QChar each) { return each >= QChar(0x2066) && each <= QChar(0x2069); });
        Words next{text, item.font(), state->pen().color(), start};
        if (!words.isEmpty()) {
            Words &last = words.last();
            if (last.font == next.font && last.colour == next.colour && last.start.y() == start.y() &&
                start.x() > last.start.x()) {
                last.text += text;
                ++last.pieces;
                return;
            }
        }
        words.append(next);
    }
    void drawPath(const QPainterPath &path) override
    {
        frames.append({state->transform().map(path), state->brush().color()});
    }
    void drawImage(const QRectF &frame, const QImage &image, const QRectF &, Qt::ImageConversionFlags) override
    {
        images.append({state->transform().mapRect(frame), image});
    }
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override {}

protected:
    [[nodiscard]] int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
        case PdmHeight:
            return 4000;
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return 96;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 0;
        }
    }
};

} // namespace kelp::test

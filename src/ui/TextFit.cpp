#include "ui/TextFit.h"

#include <QCache>
#include <QFontMetricsF>
#include <QGlyphRun>
#include <QRawFont>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <optional>

namespace kelp {

namespace {

enum class Breaking { BetweenWords, Anywhere };

QTextOption option(bool rightToLeft, Breaking breaking)
{
    QTextOption result;
    result.setTextDirection(rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    result.setWrapMode(breaking == Breaking::BetweenWords ? QTextOption::WordWrap
                                                          : QTextOption::WrapAtWordBoundaryOrAnywhere);
    return result;
}

/// The first `maxLines` lines; nothing where a line is wider than `width`.
struct Broken
{
    QStringList lines;
    bool complete = true; ///< the lines hold the whole text
    qsizetype lastStart = 0;
};

std::optional<Broken> breakLines(const QString &text, const QFont &font, double width, int maxLines, bool rightToLeft,
                                 Breaking breaking)
{
    QTextLayout layout(text, font);
    layout.setTextOption(option(rightToLeft, breaking));
    layout.setCacheEnabled(true);
    Broken result;
    bool fits = true;
    qsizetype end = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        if (result.lines.size() == maxLines) {
            result.complete = false;
            break;
        }
        line.setLineWidth(width);
        fits = fits && line.naturalTextWidth() <= width + 0.01;
        result.lastStart = line.textStart();
        end = line.textStart() + line.textLength();
        result.lines.append(text.mid(line.textStart(), line.textLength()).trimmed());
    }
    layout.endLayout();
    result.complete = result.complete && end >= text.size();
    return fits ? std::optional(result) : std::nullopt;
}

bool fits(const QString &text, const QFont &font, double width, int maxLines, bool rightToLeft)
{
    const auto broken = breakLines(text, font, width, maxLines, rightToLeft, Breaking::BetweenWords);
    return broken && broken->complete;
}

QFont sized(QFont font, int size)
{
    font.setPixelSize(size);
    return font;
}

double lineHeight(const QFont &font)
{
    return std::ceil(QFontMetricsF(font).height());
}

/// The greatest size at which the text fits unbroken, and into `height` if there is any.
std::optional<int> fittingSize(const QString &text, const QFont &font, double width, int maxLines, double shrink,
                               double height, bool rightToLeft)
{
    const auto fitsAt = [&](int size) {
        const double lines = std::floor(height / lineHeight(sized(font, size)));
        return lines >= 1 &&
               fits(text, sized(font, size), width, static_cast<int>(std::min<double>(lines, maxLines)), rightToLeft);
    };
    int most = font.pixelSize();
    int least = std::clamp(static_cast<int>(std::ceil(most * shrink)), 1, most);
    if (fitsAt(most))
        return most;
    if (!fits(text, sized(font, least), width, maxLines, rightToLeft))
        return {};
    while (most - least > 1) {
        const int middle = (least + most) / 2;
        (fitsAt(middle) ? least : most) = middle;
    }
    return least;
}

/// The narrowest width that needs no more lines: no single word is left alone on the last line.
QStringList balancedLines(const QString &text, const QFont &font, double width, bool rightToLeft, int count)
{
    double tooNarrow = width / count / 2;
    double enough = width;
    while (enough - tooNarrow > 2) {
        const double middle = (tooNarrow + enough) / 2;
        (fits(text, font, middle, count, rightToLeft) ? enough : tooNarrow) = middle;
    }
    return breakLines(text, font, enough, count, rightToLeft, Breaking::BetweenWords)->lines;
}

QStringList cutLines(const QString &text, const QFont &font, double width, int maxLines, bool rightToLeft)
{
    Broken broken = breakLines(text, font, width, maxLines, rightToLeft, Breaking::Anywhere).value_or(Broken{});
    if (broken.lines.isEmpty())
        return {text};
    if (!broken.complete)
        broken.lines.last() = QFontMetricsF(font).elidedText(text.mid(broken.lastStart), Qt::ElideRight, width);
    return broken.lines;
}

/// All that one line paints, from where it starts on its baseline. QFontMetricsF::tightBoundingRect leaves out that
/// accents are moved up.
QRectF inkOf(const QString &line, const QFont &font)
{
    QTextLayout layout(line, font);
    layout.beginLayout();
    const QTextLine only = layout.createLine();
    layout.endLayout();
    QRectF result;
    for (const QGlyphRun &run : layout.glyphRuns()) {
        const QList<quint32> glyphs = run.glyphIndexes();
        const QList<QPointF> positions = run.positions();
        for (qsizetype i = 0; i < glyphs.size(); ++i)
            result |= run.rawFont().boundingRect(glyphs[i]).translated(positions[i]);
    }
    return result.translated(0, only.isValid() ? -only.ascent() : 0);
}

FittedText fit(const QString &text, const QFont &font, double width, int maxLines, double shrink, double height)
{
    FittedText result;
    result.rightToLeft = text.isRightToLeft();
    const std::optional<int> size = fittingSize(text, font, width, maxLines, shrink, height, result.rightToLeft);
    if (size) {
        result.font = sized(font, *size);
        const auto broken = breakLines(text, result.font, width, maxLines, result.rightToLeft, Breaking::BetweenWords);
        const int count = static_cast<int>(broken->lines.size());
        result.lines = count > 1 ? balancedLines(text, result.font, width, result.rightToLeft, count) : broken->lines;
    } else {
        result.font = sized(font, std::max(1, static_cast<int>(std::ceil(font.pixelSize() * shrink))));
        result.lines = cutLines(text, result.font, width, maxLines, result.rightToLeft);
    }
    result.lineHeight = lineHeight(result.font);
    const QFontMetricsF metrics(result.font);
    result.ascent = metrics.ascent();
    const double bottom = result.lineHeight * static_cast<double>(result.lines.size());
    double baseline = result.ascent;
    for (const QString &line : result.lines) {
        result.widths.push_back(metrics.horizontalAdvance(line));
        result.width = std::max(result.width, result.widths.back());
        const QRectF ink = inkOf(line, result.font);
        result.rise = std::max(result.rise, -(baseline + ink.top()));
        result.sink = std::max(result.sink, baseline + ink.bottom() - bottom);
        baseline += result.lineHeight;
    }
    return result;
}

/// All that the result depends on.
struct Question
{
    QString text;
    QFont font;
    double width = 0;
    int maxLines = 0;
    double shrink = 0;
    double height = 0;

    friend bool operator==(const Question &, const Question &) = default;
};

size_t qHash(const Question &question, size_t seed = 0)
{
    return qHashMulti(seed, question.text, question.font, question.width, question.maxLines, question.shrink,
                      question.height);
}

/// The answers last asked for. Two cards' worth: one for each of two displays of different size.
template<typename Answer>
class LastAnswers
{
public:
    template<typename Find>
    const Answer &answer(const Question &question, const Find &find)
    {
        if (const Answer *known = m_answers.object(question))
            return *known;
        auto *found = new Answer(find());
        m_answers.insert(question, found);
        return *found;
    }

private:
    QCache<Question, Answer> m_answers{64};
};

} // namespace

FittedText fitText(const QString &text, const QFont &font, double width, int maxLines, double shrink, double height)
{
    static thread_local LastAnswers<FittedText> answers;
    return answers.answer({text, font, width, maxLines, shrink, height},
                          [&] { return fit(text, font, width, maxLines, shrink, height); });
}

double advanceOf(const QString &text, const QFont &font)
{
    static thread_local LastAnswers<double> answers;
    return answers.answer({text, font}, [&] { return QFontMetricsF(font).horizontalAdvance(text); });
}

} // namespace kelp

#include "settings/CaptionPill.h"

#include "ui/Fonts.h"
#include "ui/KelpStyle.h"
#include "ui/Symbols.h"

#include <QLabel>
#include <QPainter>

namespace kelp {

namespace {

constexpr int pillHeight = 30;
constexpr int inset = 13;
constexpr int symbolSize = 14;
constexpr int gap = 7;

/// A text for screen readers; everyone else sees it painted.
class SpokenText final : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent *) override {}
};

} // namespace

CaptionPill::CaptionPill(QWidget *parent) : QWidget(parent), m_text(new SpokenText(this))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFont(designFont(FontDesign::Default, 13, QFont::Medium));
    m_text->setTextFormat(Qt::PlainText);
}

void CaptionPill::show(const QString &symbol, const QString &text)
{
    m_symbol = symbol;
    m_text->setText(text);
    m_text->setGeometry(QRect(QPoint(), sizeHint()));
    update();
}

QSize CaptionPill::sizeHint() const
{
    return {2 * inset + symbolSize + gap + fontMetrics().horizontalAdvance(m_text->text()) + 1, pillHeight};
}

void CaptionPill::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBox(painter, rect(), pillHeight / 2.0, QColor(20, 20, 22, 200), QColor(255, 255, 255, 46));
    QRect symbol(inset, (height() - symbolSize) / 2, symbolSize, symbolSize);
    QRect text = rect().adjusted(inset + symbolSize + gap, 0, -inset + 2, 0);
    symbol = QStyle::visualRect(layoutDirection(), rect(), symbol);
    text = QStyle::visualRect(layoutDirection(), rect(), text);
    paintSymbol(painter, symbol, m_symbol, Qt::white);
    painter.setFont(font());
    painter.setPen(Qt::white);
    painter.drawText(text, Qt::AlignLeading | Qt::AlignVCenter | Qt::TextSingleLine, m_text->text());
}

} // namespace kelp

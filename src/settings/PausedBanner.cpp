#include "settings/PausedBanner.h"

#include "settings/PanelTexts.h"
#include "settings/SymbolView.h"
#include "settings/TextButton.h"
#include "ui/DesktopColours.h"
#include "ui/KelpStyle.h"

#include <QHBoxLayout>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace kelp {

PausedBanner::PausedBanner(QWidget *parent)
    : QWidget(parent), m_text(new PanelLabel(13, QFont::Medium, Ink::Primary, this))
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(12, 4, 5, 4);
    row->setSpacing(8);
    auto *resume = new TextButton(u"Resume"_s, TextButton::Look::Quiet, this);
    connect(resume, &TextButton::clicked, this, &PausedBanner::resumed);
    row->addWidget(new SymbolView(u"pause-circle-fill"_s, 16, Ink::Accent, this));
    row->addWidget(m_text, 1);
    row->addWidget(resume);
}

void PausedBanner::present(Instant until, Instant now)
{
    m_text->setText(u"Paused until "_s + panel::pauseEnd(until, now));
}

void PausedBanner::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const DesktopColours colours = DesktopColours::of(palette());
    QColor fill = colours.accentInk;
    fill.setAlphaF(colours.dark ? 0.2F : 0.12F);
    paintBox(painter, rect(), 10, fill, Qt::transparent);
}

} // namespace kelp

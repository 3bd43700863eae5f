#include "settings/SegmentedPicker.h"

#include "ui/DesktopColours.h"
#include "ui/Fonts.h"
#include "ui/KelpStyle.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>

namespace kelp {

namespace {

constexpr int trackHeight = 30;
constexpr int inset = 2; // of a segment in the track
constexpr double radius = 7;

class Segment final : public QRadioButton
{
public:
    using QRadioButton::QRadioButton;

protected:
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }

    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            click();
        else
            QRadioButton::keyPressEvent(event);
    }

    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const DesktopColours colours = DesktopColours::of(palette());
        const QRectF frame = rect();
        if (isChecked()) {
            paintBox(painter, frame.translated(0, 0.8), radius - inset + 1, QColor(0, 0, 0, 28), Qt::transparent);
            const QColor knob = colours.dark ? QColor(0x63, 0x63, 0x68) : QColor(Qt::white);
            paintBox(painter, frame, radius - inset + 1, knob, colours.hairline);
        } else if (underMouse()) {
            paintBox(painter, frame, radius - inset + 1, colours.hover, Qt::transparent);
        }
        QFont shown = font();
        shown.setWeight(isChecked() ? QFont::DemiBold : QFont::Medium);
        painter.setFont(shown);
        painter.setPen(isChecked() || underMouse() ? colours.primary : colours.secondary);
        painter.drawText(frame, Qt::AlignCenter | Qt::TextSingleLine, text());
        if (hasFocus())
            paintFocusRing(painter, frame.adjusted(1, 1, -1, -1), radius - inset, palette());
    }
};

} // namespace

SegmentedPicker::SegmentedPicker(const QList<Choice> &choices, QWidget *parent) : QWidget(parent), m_choices(choices)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(inset + 2, inset + 1, inset + 2, inset + 1);
    row->setSpacing(2);
    for (const Choice &each : choices) {
        auto *segment = new Segment(each.text, this);
        segment->setFont(designFont(FontDesign::Default, 13));
        segment->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        segment->setAttribute(Qt::WA_Hover);
        m_segments.append(segment);
        row->addWidget(segment, 1);
        connect(segment, &QRadioButton::clicked, this, [this, value = each.value] { Q_EMIT chosen(value); });
    }
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize SegmentedPicker::sizeHint() const
{
    return {160, trackHeight};
}

void SegmentedPicker::show(const QString &value)
{
    for (int i = 0; i < m_segments.size(); ++i) {
        // An exclusive group would not let go of its last choice.
        m_segments[i]->setAutoExclusive(false);
        m_segments[i]->setChecked(m_choices[i].value == value);
    }
    for (QRadioButton *each : std::as_const(m_segments))
        each->setAutoExclusive(true);
}

void SegmentedPicker::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintBox(painter, QRectF(rect()).adjusted(2, 0, -2, 0), radius + 1, DesktopColours::of(palette()).hover,
             Qt::transparent);
}

} // namespace kelp

#include "settings/AppearanceOptions.h"

#include "preferences/Preferences.h"
#include "settings/ChoicePicker.h"
#include "settings/InsetScrollArea.h"
#include "settings/OptionGroup.h"
#include "settings/OptionSlider.h"
#include "settings/PanelLabel.h"
#include "settings/PreviewButton.h"
#include "settings/SegmentedPicker.h"
#include "settings/SmallSwitch.h"
#include "settings/SoundOptions.h"
#include "settings/TextButton.h"
#include "ui/DesktopColours.h"

#include <QPainter>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr int margin = 16;
constexpr int groupDistance = 20;
constexpr OptionSlider::Range dimRange{0.0, 0.85};

PanelLabel *makeLabel(const QString &text, int size, QFont::Weight weight, Ink ink, QWidget *parent)
{
    auto *label = new PanelLabel(size, weight, ink, parent);
    label->setMaximumLines(0);
    label->setText(text);
    return label;
}

} // namespace

AppearanceOptions::AppearanceOptions(Preferences &preferences, Clock &clock, PreviewSounds sounds, QWidget *parent)
    : QWidget(parent), m_preferences(preferences), m_clock(clock), m_sounds(std::move(sounds))
{
    setFixedWidth(columnWidth);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    auto *scroll = new InsetScrollArea({margin, margin, margin, margin}, this);
    fill(scroll->column());
    column->addWidget(scroll, 1);
    column->addWidget(makeFooter());
    follow();
}

void AppearanceOptions::fill(QVBoxLayout &column)
{
    column.setSpacing(groupDistance);
    column.addWidget(makeLabel(u"Overlay"_s, 20, QFont::Bold, Ink::Primary, this));
    for (QWidget *each : std::initializer_list<QWidget *>{makeImage(), makeCountdown(), makeShow(), makeSnooze(),
                                                          makeSound(), makeCover()})
        column.addWidget(each);
    column.addStretch(1);
}

QWidget *AppearanceOptions::makeImage()
{
    m_image = new OptionGroup(u"Your image"_s, this);
    auto *change = new TextButton(u"Change image…"_s, TextButton::Look::Quiet, m_image);
    m_dim = new OptionSlider(m_clock, u"Darken the image"_s, dimRange, u"sun-max"_s, u"moon-fill"_s, m_image);
    m_image->add(change);
    m_image->add(m_dim);
    m_image->addNote(u"Darken the image so text stays readable."_s);
    connect(change, &QPushButton::clicked, this, &AppearanceOptions::imageWanted);
    connect(m_dim, &OptionSlider::moved, this, &AppearanceOptions::dimMoved);
    connect(m_dim, &OptionSlider::chosen, this,
            [this](double value) { m_preferences.set(preference::customDim, value); });
    return m_image;
}

QWidget *AppearanceOptions::makeCountdown()
{
    auto *group = new OptionGroup(u"Countdown"_s, this);
    m_countdown = new SegmentedPicker({{u"Pill"_s, u"pill"_s}, {u"Big ring"_s, u"ring"_s}}, group);
    m_countdown->setAccessibleName(u"Countdown"_s);
    group->add(m_countdown);
    connect(m_countdown, &SegmentedPicker::chosen, this,
            [this](const QString &value) { m_preferences.set(preference::countdownStyle, value); });
    return group;
}

QWidget *AppearanceOptions::makeShow()
{
    auto *group = new OptionGroup(u"Show"_s, this);
    m_attendees = new SmallSwitch(u"Number of people"_s, group);
    m_calendar = new SmallSwitch(u"Calendar name"_s, group);
    group->addRow({m_attendees, m_calendar}, 4);
    connect(m_attendees, &QCheckBox::toggled, this,
            [this](bool on) { m_preferences.set(preference::showAttendees, on); });
    connect(m_calendar, &QCheckBox::toggled, this,
            [this](bool on) { m_preferences.set(preference::showCalendar, on); });
    return group;
}

QWidget *AppearanceOptions::makeSnooze()
{
    auto *group = new OptionGroup(u"Snooze for"_s, this);
    m_snooze = new ChoicePicker(u"Snooze for"_s, group);
    for (const qint64 minutes : {1, 2, 5, 10})
        m_snooze->addChoice(u"%1 min"_s.arg(minutes), minutes);
    group->add(m_snooze);
    group->nameAfterGroup(m_snooze);
    connect(m_snooze, &ChoicePicker::chosen, this,
            [this](const QVariant &value) { m_preferences.set(preference::snoozeMinutes, value.toLongLong()); });
    return group;
}

QWidget *AppearanceOptions::makeSound()
{
    m_sound = new SoundOptions(m_preferences, m_clock, m_sounds, this);
    connect(m_sound, &SoundOptions::adopted, this, &AppearanceOptions::setError);
    return m_sound;
}

QWidget *AppearanceOptions::makeCover()
{
    auto *group = new OptionGroup(u"Cover"_s, this);
    m_cover = new ChoicePicker(u"Cover"_s, group);
    m_cover->addChoice(u"All displays"_s, u"all"_s);
    m_cover->addChoice(u"Main display"_s, u"primary"_s);
    group->add(m_cover);
    group->nameAfterGroup(m_cover);
    connect(m_cover, &ChoicePicker::chosen, this,
            [this](const QVariant &value) { m_preferences.set(preference::displays, value.toString()); });
    return group;
}

QWidget *AppearanceOptions::makeFooter()
{
    auto *footer = new QWidget(this);
    auto *column = new QVBoxLayout(footer);
    column->setContentsMargins(margin, 8, margin, margin - 2);
    column->setSpacing(6);
    auto *preview = new PreviewButton(footer);
    m_error = makeLabel({}, 12, QFont::Normal, Ink::Danger, footer);
    m_error->hide();
    column->addWidget(preview);
    auto *note = new PanelLabel(11, QFont::Normal, Ink::Secondary, footer);
    note->setText(u"Esc closes the preview."_s);
    column->addWidget(note, 0, Qt::AlignHCenter);
    column->addWidget(m_error);
    connect(preview, &QPushButton::clicked, this, &AppearanceOptions::previewRequested);
    return footer;
}

void AppearanceOptions::follow()
{
    m_image->setVisible(m_preferences.get(preference::theme) == u"custom");
    m_dim->show(m_preferences.get(preference::customDim));
    m_countdown->show(m_preferences.get(preference::countdownStyle));
    m_attendees->show(m_preferences.get(preference::showAttendees));
    m_calendar->show(m_preferences.get(preference::showCalendar));
    m_snooze->show(static_cast<qint64>(m_preferences.get(preference::snoozeMinutes)));
    m_cover->show(m_preferences.get(preference::displays));
    m_sound->follow();
}

void AppearanceOptions::setError(const QString &error)
{
    m_error->setText(error);
    m_error->setVisible(!error.isEmpty());
}

void AppearanceOptions::settle()
{
    m_dim->settle();
    m_sound->settle();
}

void AppearanceOptions::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const DesktopColours colours = DesktopColours::of(palette());
    painter.fillRect(rect(), colours.group);
    const double line = 1 / painter.device()->devicePixelRatioF();
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    painter.fillRect(QRectF(mirrored ? width() - line : 0, 0, line, height()), colours.hairline);
}

} // namespace kelp

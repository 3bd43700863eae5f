#include "settings/SoundOptions.h"

#include "base/Clock.h"
#include "preferences/Preferences.h"
#include "settings/ChoicePicker.h"
#include "settings/FileChooser.h"
#include "settings/IconButton.h"
#include "settings/OptionGroup.h"
#include "settings/OptionSlider.h"
#include "settings/PanelLabel.h"
#include "settings/SmallSwitch.h"
#include "settings/TextButton.h"
#include "sound/MusicControl.h"
#include "sound/OverlaySounds.h"
#include "ui/Fonts.h"
#include "ui/PlainText.h"

#include <QLineEdit>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QString none = u"None"_s;
const QString custom = u"custom"_s;
const QString spotify = u"spotify"_s;

constexpr OptionSlider::Range volumeRange{0.1, 1.0};
constexpr double spotifyWatch = 2; // seconds

} // namespace

SoundOptions::SoundOptions(Preferences &preferences, Clock &clock, PreviewSounds sounds, QWidget *parent)
    : QWidget(parent), m_preferences(preferences), m_clock(clock), m_sounds(std::move(sounds))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    m_group = new OptionGroup(u"Sound"_s, this);
    column->addWidget(m_group);
    build();
    follow();
}

void SoundOptions::build()
{
    addPicker();
    m_change = new TextButton(u"Change file…"_s, TextButton::Look::Quiet, m_group);
    m_group->add(m_change);
    addSpotifyLink();
    m_volume =
        new OptionSlider(m_clock, u"Volume"_s, volumeRange, u"speaker-fill"_s, u"speaker-wave-3-fill"_s, m_group);
    m_group->add(m_volume);
    m_pauseMusic = new SmallSwitch(u"Pause my music"_s, m_group);
    m_group->add(m_pauseMusic);
    m_group->addNote(u"Pauses Spotify and Apple Music when the overlay opens."_s);

    connect(m_choice, &ChoicePicker::chosen, this, [this](const QVariant &value) { choose(value.toString()); });
    connect(m_play, &QPushButton::clicked, this, [this] { play(m_preferences.get(preference::sound)); });
    connect(m_stop, &QPushButton::clicked, this, [this] { m_sounds.stop(); });
    connect(m_change, &QPushButton::clicked, this, &SoundOptions::pickSound);
    connect(m_link, &QLineEdit::textEdited, this,
            [this](const QString &text) { m_preferences.set(preference::spotifyLink, text); });
    connect(m_volume, &OptionSlider::chosen, this,
            [this](double value) { m_preferences.set(preference::soundVolume, value); });
    connect(m_pauseMusic, &QCheckBox::toggled, this,
            [this](bool on) { m_preferences.set(preference::pauseMusic, on); });
}

void SoundOptions::addPicker()
{
    m_choice = new ChoicePicker(u"Sound"_s, m_group);
    m_choice->addChoice(none, none);
    m_choice->addSection(u"Kelp chimes"_s);
    for (const QString &each : OverlaySounds::chimes())
        m_choice->addChoice(each, each);
    m_choice->addSection(u"Mac sounds"_s);
    for (const QString &each : OverlaySounds::system())
        m_choice->addChoice(each, each);
    m_choice->addSection(u"Your own"_s);
    m_choice->addChoice(u"Audio file…"_s, custom);
    m_choice->addChoice(u"Spotify song"_s, spotify);
    m_play = new IconButton(u"play-fill"_s, u"Play sound"_s, m_group);
    m_stop = new IconButton(u"stop-fill"_s, u"Stop"_s, m_group);
    m_group->addRow({m_choice, m_play, m_stop}, 4);
    m_group->nameAfterGroup(m_choice);
}

void SoundOptions::addSpotifyLink()
{
    m_spotify = new QWidget(m_group);
    auto *column = new QVBoxLayout(m_spotify);
    column->setContentsMargins({});
    column->setSpacing(4);
    m_link = new QLineEdit(m_spotify);
    m_link->setFont(designFont(FontDesign::Default, 13));
    m_link->setTextMargins(6, 0, 6, 0);
    m_link->setPlaceholderText(u"Paste a Spotify song or playlist link"_s);
    m_link->setAccessibleName(u"Spotify link"_s);
    m_linkNote = new PanelLabel(11, QFont::Normal, Ink::Secondary, m_spotify);
    m_linkNote->setMaximumLines(0);
    column->addWidget(m_link);
    column->addWidget(m_linkNote);
    m_group->add(m_spotify);
}

void SoundOptions::follow()
{
    const QString choice = m_preferences.get(preference::sound);
    const bool hasFile = !m_preferences.get(preference::customSoundPath).isEmpty();
    const QString name = isolated(flattened(m_preferences.get(preference::customSoundName)));
    m_choice->rename(custom, hasFile ? u"File: "_s + name : u"Audio file…"_s);
    m_choice->setAsks(custom, !hasFile);
    m_choice->show(choice);
    m_play->setEnabled(choice != none);
    m_stop->setEnabled(choice != none);
    m_change->setVisible(choice == custom);
    m_spotify->setVisible(choice == spotify);
    m_volume->setVisible(choice != none);
    m_volume->show(m_preferences.get(preference::soundVolume));
    m_pauseMusic->show(m_preferences.get(preference::pauseMusic));
    if (const QString link = m_preferences.get(preference::spotifyLink); m_link->text() != link)
        m_link->setText(link);
    updateSpotify();
}

void SoundOptions::updateSpotify()
{
    if (m_preferences.get(preference::sound) != spotify || !isVisible())
        return m_watching.reset();
    if (!m_watching) {
        // It may be installed meanwhile, and the desktop may take a moment to tell.
        m_watching = std::make_unique<QObject>();
        m_clock.every(spotifyWatch, m_watching.get(), [this] { updateSpotify(); });
    }
    const QString link = m_preferences.get(preference::spotifyLink);
    const auto note = [this](const QString &text, Ink ink) {
        m_linkNote->setText(text);
        m_linkNote->setInk(ink);
    };
    if (!m_sounds.isSpotifyInstalled())
        note(u"Spotify isn't installed, so Kelp will play Glass instead."_s, Ink::Warning);
    else if (!link.isEmpty() && !MusicControl::spotifyURI(link))
        note(u"That doesn't look like a Spotify link. In Spotify: Share → Copy link."_s, Ink::Warning);
    else
        note(u"Plays in the Spotify app, and stops when you join, snooze or dismiss."_s, Ink::Secondary);
}

void SoundOptions::choose(const QString &choice)
{
    if (choice != custom)
        m_adopting.reset(); // a file that is still being taken in is no longer wanted
    if (choice == m_preferences.get(preference::sound))
        return;
    if (choice == custom && m_preferences.get(preference::customSoundPath).isEmpty())
        return pickSound(); // kept once there is a file
    m_preferences.set(preference::sound, choice);
    if (choice == spotify)
        m_sounds.stop();
    else
        play(choice);
}

void SoundOptions::play(const QString &choice)
{
    m_turn = m_sounds.play(choice);
}

void SoundOptions::pickSound()
{
    FileChooser::ask(*window(), FileChooser::sound(), this, [this](const std::optional<QString> &path) {
        if (path)
            adopt(*path);
        else
            follow();
    });
}

void SoundOptions::adopt(const QString &path)
{
    m_adopting = std::make_unique<QObject>();
    m_sounds.adopt(path, m_adopting.get(), [this](const Result<void, QString> &result) {
        if (result) {
            m_preferences.set(preference::sound, custom);
            if (isVisible()) // it may have taken longer than the user stayed
                play(custom);
        }
        follow();
        Q_EMIT adopted(result ? QString() : u"Couldn't use that sound: "_s + result.error());
    });
}

void SoundOptions::settle()
{
    m_volume->settle();
    if (m_turn)
        m_sounds.stopTurn(*std::exchange(m_turn, {}));
}

void SoundOptions::showEvent(QShowEvent *)
{
    updateSpotify();
}

void SoundOptions::hideEvent(QHideEvent *)
{
    m_watching.reset();
}

} // namespace kelp

#pragma once

#include "settings/PreviewSounds.h"

#include <QWidget>

#include <memory>
#include <optional>

class QLineEdit;
class QPushButton;

namespace kelp {

class ChoicePicker;
class Clock;
class OptionGroup;
class OptionSlider;
class PanelLabel;
class Preferences;
class SmallSwitch;

/// Which sound an overlay makes, how loud, and what happens to the user's music. A choice is heard at once.
class SoundOptions final : public QWidget
{
    Q_OBJECT

public:
    SoundOptions(Preferences &preferences, Clock &clock, PreviewSounds sounds, QWidget *parent = nullptr);

    /// Shows what is stored.
    void follow();
    /// Keeps what a drag has not yet kept, and stops what is still heard of what was played from here.
    void settle();

Q_SIGNALS:
    /// A sound could be taken in (an empty text) or not (why).
    void adopted(const QString &error);

protected:
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void build();
    void addPicker();
    void addSpotifyLink();
    void choose(const QString &choice);
    void play(const QString &choice);
    void pickSound();
    void adopt(const QString &path);
    void updateSpotify();

    Preferences &m_preferences;
    Clock &m_clock;
    PreviewSounds m_sounds;
    OptionGroup *m_group;
    ChoicePicker *m_choice;
    QPushButton *m_play;
    QPushButton *m_stop;
    QPushButton *m_change;
    QWidget *m_spotify;
    QLineEdit *m_link;
    PanelLabel *m_linkNote;
    OptionSlider *m_volume;
    SmallSwitch *m_pauseMusic;
    std::optional<quint64> m_turn;       ///< of the last sound that was played from here
    std::unique_ptr<QObject> m_adopting; ///< context of taking in the file that was picked last
    std::unique_ptr<QObject> m_watching; ///< context of looking for Spotify while it matters
};

} // namespace kelp

#pragma once

#include "settings/PreviewSounds.h"

#include <QWidget>

class QVBoxLayout;

namespace kelp {

class ChoicePicker;
class Clock;
class OptionGroup;
class OptionSlider;
class PanelLabel;
class Preferences;
class SegmentedPicker;
class SmallSwitch;
class SoundOptions;

/// The column of the overlay's options, and the way to see all of it full screen.
class AppearanceOptions final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int columnWidth = 300;

    AppearanceOptions(Preferences &preferences, Clock &clock, PreviewSounds sounds, QWidget *parent = nullptr);

    /// Shows what is stored.
    void follow();
    /// An empty text takes the error away.
    void setError(const QString &error);
    /// Keeps what a drag has not yet kept, and falls silent.
    void settle();

Q_SIGNALS:
    void imageWanted();
    /// How dark the user's picture is to be looks so now; it is kept a little later.
    void dimMoved(double dim);
    void previewRequested();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void fill(QVBoxLayout &column);
    [[nodiscard]] QWidget *makeFooter();
    [[nodiscard]] QWidget *makeImage();
    [[nodiscard]] QWidget *makeCountdown();
    [[nodiscard]] QWidget *makeShow();
    [[nodiscard]] QWidget *makeSnooze();
    [[nodiscard]] QWidget *makeSound();
    [[nodiscard]] QWidget *makeCover();

    Preferences &m_preferences;
    Clock &m_clock;
    PreviewSounds m_sounds;
    OptionGroup *m_image = nullptr;
    OptionSlider *m_dim = nullptr;
    SegmentedPicker *m_countdown = nullptr;
    SmallSwitch *m_attendees = nullptr;
    SmallSwitch *m_calendar = nullptr;
    ChoicePicker *m_snooze = nullptr;
    SoundOptions *m_sound = nullptr;
    ChoicePicker *m_cover = nullptr;
    PanelLabel *m_error = nullptr;
};

} // namespace kelp

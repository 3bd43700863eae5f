#pragma once

#include "calendar/Meeting.h"
#include "overlay/OverlayScene.h"
#include "settings/PreviewSounds.h"

#include <QHash>
#include <QWidget>

#include <functional>

namespace kelp {

class AppearanceOptions;
class Clock;
class CustomPicture;
class OverlayPreview;
class Preferences;
class ThemeGrid;
class Thumbnails;

/// The window in which the user chooses how the overlay looks and sounds: a live preview above the themes, and a column
/// of options. Whatever is chosen is kept at once, and what is changed elsewhere is shown.
///
/// Closed, it keeps no pictures and does nothing.
class AppearanceView final : public QWidget
{
    Q_OBJECT

public:
    static constexpr QSize usualSize{960, 680};

    struct Services
    {
        Preferences &preferences;
        Clock &clock;
        PreviewSounds sounds;
    };

    explicit AppearanceView(Services services, QWidget *parent = nullptr);
    ~AppearanceView() override;

    /// Shows a sample meeting in the overlay itself.
    std::function<void()> onPreview;

    /// Without motion ("reduce animation") the preview stands still.
    void setMotion(bool moves);
    /// Takes its usual size, in the middle of `available`, or what fits into that.
    void fit(const QRect &available);
    /// Comes into the middle of the first of `screens` where its upper edge is on none of them: the screen that it was
    /// on may be gone. Else it stays where it is.
    void returnTo(const QList<QRect> &screens);

    /// What the previews show: a meeting that begins in just under a minute.
    [[nodiscard]] static Meeting sampleMeeting(Instant now);

protected:
    bool event(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void build();
    void follow();
    void updatePreview(double dim);
    void updateThumbnails();
    [[nodiscard]] OverlayScene scene(const OverlayTheme &theme, double dim) const;
    void place(const QSize &size, const QRect &available);
    void pickImage();
    void adoptImage(const QString &path);

    Services m_services;
    bool m_moves = true;
    Meeting m_sample;
    Instant m_opened; ///< what the thumbnails show
    CustomPicture *m_picture;
    Thumbnails *m_thumbnails;
    QHash<QString, OverlayScene> m_made; ///< what the grid's thumbnails show, by theme
    QSize m_madeSize;                    ///< pixels
    OverlayPreview *m_preview;
    ThemeGrid *m_grid;
    AppearanceOptions *m_options;
};

} // namespace kelp

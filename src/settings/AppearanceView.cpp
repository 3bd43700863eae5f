#include "settings/AppearanceView.h"

#include "base/AtomicFile.h"
#include "base/Clock.h"
#include "preferences/Preferences.h"
#include "settings/AppearanceOptions.h"
#include "settings/CustomPicture.h"
#include "settings/FileChooser.h"
#include "settings/OverlayPreview.h"
#include "settings/ThemeGallery.h"
#include "settings/ThemeGrid.h"
#include "settings/Thumbnails.h"
#include "themes/KelpClock.h"
#include "themes/ThemeImages.h"

#include <QHBoxLayout>
#include <QKeyEvent>

#include <algorithm>
#include <utility>
#include <variant>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr QSize leastSize(740, 500);
constexpr int frameRoom = 40; // around the window, for its title bar and edges

const QString randomID = u"random"_s;
const QString customID = u"custom"_s;

} // namespace

AppearanceView::AppearanceView(Services services, QWidget *parent)
    : QWidget(parent),
      m_services(std::move(services)),
      m_sample(sampleMeeting(m_services.clock.now())),
      m_opened(m_services.clock.now()),
      m_picture(new CustomPicture(this)),
      m_thumbnails(new Thumbnails(m_services.clock, this)),
      m_preview(new OverlayPreview(m_services.clock)),
      m_grid(new ThemeGrid),
      m_options(new AppearanceOptions(m_services.preferences, m_services.clock, m_services.sounds))
{
    setWindowTitle(u"Kelp Appearance"_s);
    build();
    connect(&m_services.preferences, &Preferences::changed, this, &AppearanceView::follow);
    connect(m_picture, &CustomPicture::changed, this, &AppearanceView::follow);
    connect(m_grid, &ThemeGrid::themeChosen, this,
            [this](const QString &id) { m_services.preferences.set(preference::theme, id); });
    connect(m_grid, &ThemeGrid::imageWanted, this, &AppearanceView::pickImage);
    connect(m_grid, &ThemeGrid::pictureSizeChanged, this, &AppearanceView::updateThumbnails);
    connect(m_options, &AppearanceOptions::imageWanted, this, &AppearanceView::pickImage);
    connect(m_options, &AppearanceOptions::dimMoved, this, &AppearanceView::updatePreview);
    connect(m_options, &AppearanceOptions::previewRequested, this, [this] {
        if (onPreview)
            onPreview();
    });
    connect(m_thumbnails, &Thumbnails::made, this, [this](const OverlayScene &shown, const QImage &thumbnail) {
        m_made.insert(shown.theme.id, shown);
        m_grid->setThumbnail(shown.theme.id, thumbnail);
    });
    follow();
}

AppearanceView::~AppearanceView() = default;

void AppearanceView::build()
{
    setMinimumSize(leastSize);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins({});
    row->setSpacing(0);
    row->addWidget(new ThemeGallery(m_preview, m_grid, this), 1);
    row->addWidget(m_options);
    resize(usualSize);
}

Meeting AppearanceView::sampleMeeting(Instant now)
{
    return {.id = u"preview"_s,
            .title = u"Weekly design review"_s,
            .start = now + 52,
            .end = now + 1852,
            .joinURL = MeetingLink::fromText(u"https://meet.google.com"_s),
            .attendeeCount = 6,
            .calendarName = u"Work"_s,
            .calendarID = {}};
}

void AppearanceView::setMotion(bool moves)
{
    m_moves = moves;
    m_preview->setMotion(moves);
    follow();
}

void AppearanceView::fit(const QRect &available)
{
    place(usualSize, available);
}

void AppearanceView::returnTo(const QList<QRect> &screens)
{
    const QRect frame = frameGeometry();
    const QRect edge(frame.topLeft(), QSize(frame.width(), frameRoom)); // it is moved by what lies there
    const bool isSeen =
        std::any_of(screens.begin(), screens.end(), [&](const QRect &each) { return each.intersects(edge); });
    if (!isSeen && !screens.isEmpty())
        place(size(), screens.first());
}

void AppearanceView::place(const QSize &size, const QRect &available)
{
    const QSize room = available.size() - QSize(frameRoom / 2, frameRoom);
    const QSize fitting = size.boundedTo(room).expandedTo(leastSize);
    resize(fitting);
    move(available.center() - QRect(QPoint(), fitting).center());
}

void AppearanceView::follow()
{
    m_options->follow();
    const QString themeID = m_services.preferences.get(preference::theme);
    m_grid->choose(themeID);
    if (isVisible())
        m_picture->load(m_services.preferences.get(preference::customImagePath));
    m_grid->setHasPicture(m_picture->exists());
    const bool isRandom = themeID == randomID;
    m_preview->setCaption(u"shuffle"_s, isRandom ? u"A different theme each meeting"_s : QString());
    m_preview->setAccessibleName(
        u"Preview of %1"_s.arg(isRandom ? u"a random theme"_s : OverlayTheme::named(themeID).name));
    updatePreview(m_services.preferences.get(preference::customDim));
    updateThumbnails();
}

OverlayScene AppearanceView::scene(const OverlayTheme &theme, double dim) const
{
    OverlayScene scene{MeetingContent{m_sample, {}}, theme, OverlayOptions::from(m_services.preferences), {}};
    scene.background.backdrop = KelpClock::backdrop;
    if (std::holds_alternative<CustomBackground>(theme.background)) {
        scene.background.customPicture = m_picture->image();
        scene.background.customDim = std::clamp(dim, 0.0, 1.0);
    }
    return scene;
}

void AppearanceView::updatePreview(double dim)
{
    const QString themeID = m_services.preferences.get(preference::theme);
    OverlayScene shown = scene(themeID == randomID ? OverlayTheme::midnight() : OverlayTheme::named(themeID), dim);
    shown.background.animate = m_moves;
    // It moves as in the overlay. Only of the desktop behind a blur there is but a still picture.
    shown.background.live = m_moves && !std::holds_alternative<BlurBackground>(shown.theme.background);
    m_preview->setScene(shown);
}

/// Makes those that would look different now.
void AppearanceView::updateThumbnails()
{
    if (!isVisible())
        return;
    const QSize pixels = (QSizeF(m_grid->pictureSize()) * devicePixelRatioF()).toSize();
    if (std::exchange(m_madeSize, pixels) != pixels)
        m_made.clear(); // the old ones stay in sight until then
    QList<OverlayScene> missing;
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        const OverlayScene wanted = scene(theme, m_services.preferences.get(preference::customDim));
        const bool hasPicture = theme.id != customID || !m_picture->image().isNull();
        if (const auto made = m_made.constFind(theme.id); hasPicture && (made == m_made.cend() || *made != wanted))
            missing.append(wanted);
    }
    m_thumbnails->make(missing, pixels, m_opened);
}

void AppearanceView::pickImage()
{
    FileChooser::ask(*this, FileChooser::image(), this, [this](const std::optional<QString> &path) {
        if (path)
            adoptImage(*path);
    });
}

/// Nothing is kept of a file that cannot be shown.
void AppearanceView::adoptImage(const QString &path)
{
    CustomPicture::read(path, this, [this, path](const QImage &image) {
        const auto failed = [this](const QString &why) { m_options->setError(u"Couldn't use that image: "_s + why); };
        if (image.isNull()) { // where there is no such file, or it cannot be read, the copy will fail and tell
            if (const auto content = AtomicFile(path).read(); content && *content)
                return failed(u"it is not a picture that Kelp can show."_s);
        }
        const auto copied = ThemeImages::setCustom(path, m_services.preferences, m_services.clock.now());
        if (!copied)
            return failed(copied.error().description());
        m_options->setError({});
        m_picture->drop(); // the copy may have the name of the one before
        m_services.preferences.set(preference::theme, customID);
        follow();
    });
}

bool AppearanceView::event(QEvent *event)
{
    if (event->type() == QEvent::ScreenChangeInternal) // the density may be another one
        updateThumbnails();
    return QWidget::event(event);
}

void AppearanceView::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Close))
        close();
    else
        QWidget::keyPressEvent(event);
}

void AppearanceView::showEvent(QShowEvent *)
{
    m_opened = m_services.clock.now();
    m_sample = sampleMeeting(m_opened);
    m_options->setError({});
    follow();
}

void AppearanceView::hideEvent(QHideEvent *)
{
    m_options->settle();
    m_thumbnails->stop();
    m_grid->dropThumbnails();
    m_made.clear();
    m_madeSize = {};
    m_picture->drop();
    ThemeImages::forgetDecoded();
}

} // namespace kelp

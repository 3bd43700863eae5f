#include "settings/ThemeGrid.h"

#include "settings/ImageTile.h"
#include "settings/RandomTile.h"
#include "settings/ThemeCard.h"
#include "themes/Theme.h"

#include <QKeyEvent>
#include <QStyle>

#include <algorithm>
#include <cmath>
#include <variant>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr double leastPicture = 150; // points wide
constexpr double pictureAspect = 1.6;
constexpr double gap = 20.0 / 3; // four of the smallest pictures fill the usual preview's width
constexpr int rowGap = 6;

} // namespace

ThemeGrid::ThemeGrid(QWidget *parent) : QWidget(parent)
{
    setAccessibleName(u"Theme"_s);
    const OverlayTheme *own = nullptr;
    for (const OverlayTheme &theme : OverlayTheme::all()) {
        if (std::holds_alternative<CustomBackground>(theme.background)) {
            own = &theme;
            continue;
        }
        auto *card = new ThemeCard(theme.id, theme.name, this);
        m_cards.insert(theme.id, card);
        add(card);
    }
    add(new RandomTile(this));
    m_image = new ImageTile(own->id, own->name, this);
    m_cards.insert(own->id, m_image);
    add(m_image);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    keepOneInTabOrder();
}

void ThemeGrid::add(GridTile *tile)
{
    m_tiles.append(tile);
    tile->installEventFilter(this);
    connect(tile, &GridTile::clicked, this, [this, tile] { ask(tile); });
}

void ThemeGrid::ask(GridTile *tile)
{
    if (tile == m_image && !m_image->hasPicture())
        Q_EMIT imageWanted();
    else
        Q_EMIT themeChosen(tile->id());
}

void ThemeGrid::choose(const QString &id)
{
    for (GridTile *each : std::as_const(m_tiles)) {
        each->setAutoExclusive(false); // an exclusive group would not let go of its last choice
        each->setChecked(each->id() == id);
    }
    for (GridTile *each : std::as_const(m_tiles))
        each->setAutoExclusive(true);
    keepOneInTabOrder();
}

void ThemeGrid::setHasPicture(bool has)
{
    m_image->setPicture(has);
}

void ThemeGrid::setThumbnail(const QString &id, const QImage &thumbnail)
{
    if (ThemeCard *card = m_cards.value(id))
        card->setThumbnail(thumbnail);
}

void ThemeGrid::dropThumbnails()
{
    for (ThemeCard *each : std::as_const(m_cards))
        each->setThumbnail({});
}

ThemeGrid::Columns ThemeGrid::columnsFor(int width)
{
    const double room = width - 2 * GridTile::ringRoom;
    const int count = std::max(1, static_cast<int>((room + gap + 0.01) / (leastPicture + gap)));
    const double picture = std::floor((room - (count - 1) * gap) / count + 0.01);
    return {count, QSizeF(picture, picture / pictureAspect).toSize(), picture + gap};
}

int ThemeGrid::heightForWidth(int width) const
{
    const Columns columns = columnsFor(width);
    const int rows = (static_cast<int>(m_tiles.size()) + columns.count - 1) / columns.count;
    return rows * GridTile::sizeFor(columns.picture).height() + (rows - 1) * rowGap;
}

void ThemeGrid::resizeEvent(QResizeEvent *)
{
    const Columns columns = columnsFor(width());
    const QSize tile = GridTile::sizeFor(columns.picture);
    m_columns = columns.count;
    for (int i = 0; i < m_tiles.size(); ++i) {
        const int column = i % columns.count;
        const QRect place(static_cast<int>(std::lround(column * columns.step)),
                          i / columns.count * (tile.height() + rowGap), tile.width(), tile.height());
        m_tiles[i]->setGeometry(QStyle::visualRect(layoutDirection(), rect(), place));
    }
    if (std::exchange(m_pictureSize, columns.picture) != columns.picture)
        Q_EMIT pictureSizeChanged();
}

bool ThemeGrid::eventFilter(QObject *watched, QEvent *event)
{
    // A tile that moves away from under the pointer would not be clicked.
    if (event->type() == QEvent::FocusIn && static_cast<QFocusEvent *>(event)->reason() != Qt::MouseFocusReason)
        Q_EMIT tileFocused(static_cast<QWidget *>(watched));
    return QWidget::eventFilter(watched, event);
}

void ThemeGrid::keyPressEvent(QKeyEvent *event)
{
    const auto current =
        std::find_if(m_tiles.begin(), m_tiles.end(), [](const GridTile *each) { return each->hasFocus(); });
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const qsizetype index = current - m_tiles.begin();
    if (current == m_tiles.end() || event->modifiers() & ~Qt::KeypadModifier) {
        event->ignore();
        return;
    }
    switch (event->key()) {
    case Qt::Key_Left:
        return moveTo(index + (mirrored ? 1 : -1));
    case Qt::Key_Right:
        return moveTo(index + (mirrored ? -1 : 1));
    case Qt::Key_Up:
        return moveTo(index - m_columns);
    case Qt::Key_Down:
        return moveTo(index + m_columns);
    case Qt::Key_Home:
        return moveTo(0);
    case Qt::Key_End:
        return moveTo(m_tiles.size() - 1);
    default:
        event->ignore();
    }
}

void ThemeGrid::moveTo(qsizetype index)
{
    if (index < 0 || index >= m_tiles.size())
        return;
    GridTile *tile = m_tiles[index];
    tile->setFocus(Qt::TabFocusReason);
    if (tile->isChosenByArrows())
        ask(tile);
    keepOneInTabOrder();
}

/// One stop for the whole grid, as for any group of radio buttons: where the keyboard is, else what is chosen.
void ThemeGrid::keepOneInTabOrder()
{
    const auto find = [this](auto is) {
        const auto found = std::find_if(m_tiles.begin(), m_tiles.end(), is);
        return found == m_tiles.end() ? nullptr : *found;
    };
    GridTile *stop = find([](const GridTile *each) { return each->hasFocus(); });
    if (!stop)
        stop = find([](const GridTile *each) { return each->isChecked(); });
    if (!stop)
        stop = m_tiles.first();
    for (GridTile *each : std::as_const(m_tiles))
        each->setFocusPolicy(each == stop ? Qt::StrongFocus : Qt::ClickFocus);
}

} // namespace kelp

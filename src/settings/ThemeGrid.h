#pragma once

#include <QHash>
#include <QImage>
#include <QList>
#include <QWidget>

namespace kelp {

class GridTile;
class ImageTile;
class ThemeCard;

/// The themes to choose from, "Surprise me" and the user's own picture, in as many columns as fit. The arrow keys go
/// from one to the next and choose it.
class ThemeGrid final : public QWidget
{
    Q_OBJECT

public:
    explicit ThemeGrid(QWidget *parent = nullptr);

    /// Marks the tile of that preference's value; none where it is unknown.
    void choose(const QString &id);
    void setHasPicture(bool has);
    void setThumbnail(const QString &id, const QImage &thumbnail);
    /// Lets go of all pictures.
    void dropThumbnails();

    /// The size of a picture, in points.
    [[nodiscard]] QSize pictureSize() const { return m_pictureSize; }
    [[nodiscard]] int heightForWidth(int width) const override;
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }

Q_SIGNALS:
    void themeChosen(const QString &id);
    void imageWanted();
    void pictureSizeChanged();
    /// The tile that now has the keyboard should be seen.
    void tileFocused(QWidget *tile);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Columns
    {
        int count;
        QSize picture;
        double step;
    };
    [[nodiscard]] static Columns columnsFor(int width);
    void add(GridTile *tile);
    void ask(GridTile *tile);
    void moveTo(qsizetype index);
    void keepOneInTabOrder();

    QList<GridTile *> m_tiles;
    QHash<QString, ThemeCard *> m_cards; ///< by theme
    ImageTile *m_image = nullptr;
    QSize m_pictureSize;
    int m_columns = 1;
};

} // namespace kelp

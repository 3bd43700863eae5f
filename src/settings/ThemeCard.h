#pragma once

#include "settings/GridTile.h"

#include <QImage>

namespace kelp {

/// A theme, as the overlay in it, small. Until the picture is made, a plain ground is shown.
class ThemeCard : public GridTile
{
    Q_OBJECT

public:
    ThemeCard(const QString &id, const QString &name, QWidget *parent);

    void setThumbnail(const QImage &thumbnail);
    [[nodiscard]] const QImage &thumbnail() const { return m_thumbnail; }

protected:
    void paintPicture(QPainter &painter, const QRectF &frame) override;

private:
    QImage m_thumbnail;
};

} // namespace kelp

#pragma once

#include "settings/GridTile.h"

namespace kelp {

/// "Surprise me": another theme for each meeting.
class RandomTile final : public GridTile
{
    Q_OBJECT

public:
    explicit RandomTile(QWidget *parent);

protected:
    [[nodiscard]] QString caption() const override { return {}; }
    void paintPicture(QPainter &painter, const QRectF &frame) override;
};

} // namespace kelp

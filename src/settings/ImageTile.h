#pragma once

#include "settings/ThemeCard.h"

namespace kelp {

/// The theme with the user's own picture; without one, the way to choose it.
class ImageTile final : public ThemeCard
{
    Q_OBJECT

public:
    ImageTile(const QString &id, const QString &name, QWidget *parent);

    /// Whether there is a picture that can be shown.
    void setPicture(bool has);
    [[nodiscard]] bool hasPicture() const { return m_hasPicture; }
    /// Without a picture a dialog would open.
    [[nodiscard]] bool isChosenByArrows() const override { return m_hasPicture; }

protected:
    [[nodiscard]] QString caption() const override { return m_hasPicture ? text() : QString(); }
    void paintPicture(QPainter &painter, const QRectF &frame) override;

private:
    bool m_hasPicture = false;
};

} // namespace kelp

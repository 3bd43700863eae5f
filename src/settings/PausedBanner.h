#pragma once

#include "base/Instant.h"

#include <QWidget>

namespace kelp {

class PanelLabel;

/// Tells that reminders are paused, and ends it.
class PausedBanner final : public QWidget
{
    Q_OBJECT

public:
    explicit PausedBanner(QWidget *parent = nullptr);

    void present(Instant until, Instant now);

Q_SIGNALS:
    void resumed();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    PanelLabel *m_text;
};

} // namespace kelp

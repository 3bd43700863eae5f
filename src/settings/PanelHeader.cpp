#include "settings/PanelHeader.h"

#include "schedule/Scheduler.h"
#include "settings/IconButton.h"
#include "settings/PanelLabel.h"
#include "settings/PauseMenu.h"

#include <QCoreApplication>
#include <QHBoxLayout>

using namespace Qt::StringLiterals;

namespace kelp {

PanelHeader::PanelHeader(Scheduler &scheduler, Clock &clock, QWidget *parent) : QWidget(parent)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(16, 12, 13, 8);
    row->setSpacing(6);
    auto *title = new PanelLabel(15, QFont::DemiBold, Ink::Primary, this);
    title->setText(u"Kelp"_s);
    auto *refresh = new IconButton(u"arrow-clockwise"_s, u"Refresh calendar"_s, this);
    connect(refresh, &IconButton::clicked, &scheduler, [&scheduler] { scheduler.refresh(); });
    auto *pause = new IconButton(u"pause-circle"_s, u"Pause Kelp"_s, this);
    pause->openOnClick(new PauseMenu(scheduler, clock, pause));
    auto *quit = new IconButton(u"power"_s, u"Quit Kelp"_s, this);
    connect(quit, &IconButton::clicked, qApp, &QCoreApplication::quit);
    row->addWidget(title);
    row->addStretch(1);
    row->addWidget(refresh);
    row->addWidget(pause);
    row->addWidget(quit);
}

} // namespace kelp

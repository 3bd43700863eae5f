#include "settings/OptionGroup.h"

#include "settings/Rows.h"

#include <QVBoxLayout>

namespace kelp {

namespace {

constexpr int labelDistance = 8;
constexpr int controlInset = 2; // what controls leave around themselves for a focus ring

} // namespace

OptionGroup::OptionGroup(const QString &title, QWidget *parent)
    : QWidget(parent), m_column(new QVBoxLayout(this)), m_title(new SectionTitle(title, this))
{
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(labelDistance);
    m_title->setContentsMargins({}); // in line with the controls below it
    addText(m_title);
}

void OptionGroup::add(QWidget *control)
{
    m_column->addWidget(control);
}

void OptionGroup::nameAfterGroup(QWidget *control)
{
    m_title->setBuddy(control); // a choice is named by what is chosen, whatever its accessible name
}

void OptionGroup::addRow(const QList<QWidget *> &controls, int spacing)
{
    auto *row = new QHBoxLayout;
    row->setContentsMargins({});
    row->setSpacing(spacing);
    for (QWidget *each : controls)
        row->addWidget(each, each->sizePolicy().horizontalPolicy() == QSizePolicy::Expanding ? 1 : 0);
    if (controls.first()->sizePolicy().horizontalPolicy() != QSizePolicy::Expanding)
        row->addStretch(1);
    m_column->addLayout(row);
}

PanelLabel *OptionGroup::addNote(const QString &text)
{
    auto *note = new PanelLabel(11, QFont::Normal, Ink::Secondary, this);
    note->setMaximumLines(0);
    note->setText(text);
    addText(note);
    return note;
}

void OptionGroup::addText(QWidget *text)
{
    auto *row = new QHBoxLayout;
    row->setContentsMargins(controlInset, 0, controlInset, 0);
    row->addWidget(text);
    m_column->addLayout(row);
}

} // namespace kelp

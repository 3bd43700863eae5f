#include "settings/OptionsView.h"

#include "platform/LoginItem.h"
#include "preferences/Preferences.h"
#include "settings/HoverRow.h"
#include "settings/Picker.h"
#include "settings/Rows.h"
#include "settings/SwitchRow.h"
#include "settings/SymbolView.h"

#include <QHBoxLayout>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

constexpr std::array<std::int64_t, 5> leadChoices{0, 1, 2, 5, 10}; // minutes
constexpr int controlRowHeight = 38;

const QString hotkeyNote =
    u"Kelp cannot see the keys that you type in other applications here, so this works in Kelp's own windows only. "
    "To open Kelp from anywhere, bind a key to the command kelp in the keyboard settings of your desktop."_s;

} // namespace

OptionsView::OptionsView(Preferences &preferences, LoginItem &loginItem, QWidget *parent)
    : QWidget(parent), m_preferences(preferences), m_loginItem(loginItem)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    auto *group = new RowGroup(this);
    column->addWidget(group);
    group->addRow(makeLeadRow());
    m_onlyWithVideo = new SwitchRow(u"Video meetings only"_s, group);
    m_doubleSlash = new SwitchRow(u"Press / twice to open Kelp"_s, group);
    m_launchAtLogin = new SwitchRow(u"Launch at login"_s, group);
    m_appearance = makeAppearanceRow();
    for (QWidget *row : std::initializer_list<QWidget *>{m_onlyWithVideo, m_doubleSlash, m_launchAtLogin, m_appearance})
        group->addRow(row);
    connect(m_onlyWithVideo, &SwitchRow::toggled, this,
            [this](bool on) { m_preferences.set(preference::onlyWithVideo, on); });
    connect(m_doubleSlash, &SwitchRow::toggled, this,
            [this](bool on) { m_preferences.set(preference::doubleSlash, on); });
    connect(m_launchAtLogin, &SwitchRow::toggled, this, &OptionsView::setLaunchAtLogin);
    connect(m_appearance, &HoverRow::clicked, this, &OptionsView::appearanceRequested);
}

QWidget *OptionsView::makeLeadRow()
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(rowInset, 0, 6, 0);
    auto *label = new PanelLabel(13, QFont::Normal, Ink::Primary, row);
    label->setText(u"Remind me"_s);
    m_leadMinutes = new Picker(row);
    m_leadMinutes->setAccessibleName(u"Remind me"_s);
    label->setBuddy(m_leadMinutes);
    for (const std::int64_t minutes : leadChoices)
        m_leadMinutes->addItem(minutes == 0 ? u"When it starts"_s : u"%1 min before"_s.arg(minutes));
    connect(m_leadMinutes, &QComboBox::activated, this, [this](int index) {
        m_preferences.set(preference::leadMinutes, leadChoices.at(static_cast<std::size_t>(index)));
    });
    layout->addWidget(label, 1);
    layout->addWidget(m_leadMinutes);
    row->setFixedHeight(controlRowHeight);
    return row;
}

HoverRow *OptionsView::makeAppearanceRow()
{
    auto *row = new HoverRow(this);
    row->setAccessibleName(u"Themes, sounds & more"_s);
    row->row().setContentsMargins(rowInset - 1, 8, rowInset, 8);
    auto *frame = new QWidget(row);
    frame->setFixedSize(20, 20);
    frame->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *symbol = new SymbolView(u"paintpalette-fill"_s, 11, Ink::Accent, frame);
    symbol->move(4, 4);
    auto *text = new PanelLabel(13, QFont::Normal, Ink::Primary, row);
    text->setText(u"Themes, sounds & more"_s);
    text->setAttribute(Qt::WA_TransparentForMouseEvents);
    row->row().setSpacing(6);
    row->row().addWidget(frame);
    row->row().addWidget(text);
    row->row().addStretch(1);
    row->row().addWidget(new SymbolView(u"chevron-right"_s, 10, Ink::Secondary, row));
    return row;
}

void OptionsView::refresh(bool hotkeyIsTrusted, bool hasAppearance)
{
    const std::int64_t lead = m_preferences.get(preference::leadMinutes);
    const auto chosen = std::find(leadChoices.begin(), leadChoices.end(), lead);
    const int index = chosen == leadChoices.end() ? -1 : static_cast<int>(chosen - leadChoices.begin());
    if (m_leadMinutes->currentIndex() != index)
        m_leadMinutes->setCurrentIndex(index);
    m_onlyWithVideo->reflect(m_preferences.get(preference::onlyWithVideo));
    m_doubleSlash->reflect(m_preferences.get(preference::doubleSlash));
    m_doubleSlash->setNote(hotkeyIsTrusted ? QString() : hotkeyNote);
    m_launchAtLogin->reflect(m_loginItem.isEnabled());
    m_appearance->setVisible(hasAppearance);
}

void OptionsView::setLaunchAtLogin(bool on)
{
    const auto done = m_loginItem.setEnabled(on);
    m_launchAtLogin->reflect(m_loginItem.isEnabled());
    Q_EMIT loginItemChanged(done ? QString() : done.error());
}

} // namespace kelp

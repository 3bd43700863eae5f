#pragma once

#include "support/PrivateBus.h"

#include <QDBusPendingCall>
#include <QRect>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace kelp::test {

/// Reads the windows of other processes as assistive technology does (AT-SPI over D-Bus). The programs need
/// QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1, as without it they only answer while a screen reader is announced.
class ScreenReader
{
public:
    /// Starts the accessibility bus of this session, which programs look for when they start.
    explicit ScreenReader(PrivateBus &sessionBus);
    ~ScreenReader();
    ScreenReader(const ScreenReader &) = delete;
    ScreenReader &operator=(const ScreenReader &) = delete;

    [[nodiscard]] bool isReady() const { return m_bus.isConnected(); }
    /// The texts that are to be seen now, from top to bottom as they are declared.
    [[nodiscard]] QStringList texts();
    [[nodiscard]] bool reads(const QString &text) { return texts().contains(text); }
    /// Where on the screen the button with this text is, provided that it is to be seen and can be pressed. With
    /// several of them, the first.
    [[nodiscard]] std::optional<QRect> button(const QString &text);
    /// The names of the buttons that are to be seen and can be pressed, as they are declared.
    [[nodiscard]] QStringList buttons();
    /// Presses the first button with this text; whether there is one that agreed.
    [[nodiscard]] bool press(const QString &text);
    /// Where a control of any kind is: a button, a check box, a choice.
    [[nodiscard]] std::optional<QRect> control(const QString &name);
    enum class Kind {
        Control,
        Item, ///< of a menu or a list that is open
    };
    /// Where something is on the screen.
    struct Place
    {
        QRect whole;
        QRect seen;  ///< the part that is not scrolled out of sight; empty where all of it is
        QRect frame; ///< through which it would be seen
        bool operator==(const Place &) const = default;
    };
    /// The place of the first of that name that could be seen, were it not scrolled away.
    [[nodiscard]] std::optional<Place> place(const QString &name, Kind kind = Kind::Control);
    /// Whether the check box or switch of that name is on; nothing where there is none to be seen.
    [[nodiscard]] std::optional<bool> isChecked(const QString &name);
    /// The name of what has the keyboard; empty where nothing has.
    [[nodiscard]] QString focused();
    /// The same with its place; nothing where it has no name.
    struct Focus
    {
        QString name;
        Place place;
    };
    [[nodiscard]] std::optional<Focus> focus();

private:
    struct Element
    {
        QString service;
        QString path;
        QString name;
        uint role = 0;
        quint64 states = 0;
        qsizetype parent = -1; ///< among all
    };
    struct Question;
    struct Node;
    /// All but what is inside of hidden ones, as they are declared.
    [[nodiscard]] QList<Element> elements();
    [[nodiscard]] QRect extents(const Element &element) const;
    [[nodiscard]] Place place(const QList<Element> &all, qsizetype index) const;
    [[nodiscard]] Question ask(const QString &service, const QString &path,
                               std::optional<std::size_t> parent = {}) const;
    [[nodiscard]] QDBusPendingCall post(const QString &service, const QString &path, const QString &interface,
                                        const QString &method, const QVariantList &arguments = {}) const;
    /// Fills in its element and hands out the children; nothing where it has gone.
    [[nodiscard]] static std::optional<QList<std::pair<QString, QString>>> answer(Question &question);
    static void list(const std::vector<Node> &nodes, std::size_t index, qsizetype parent, QList<Element> &found);
    [[nodiscard]] QVariantList call(const QString &service, const QString &path, const QString &interface,
                                    const QString &method, const QVariantList &arguments = {}) const;

    QDBusConnection m_bus;
};

} // namespace kelp::test

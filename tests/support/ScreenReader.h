#pragma once

#include "support/PrivateBus.h"

#include <QRect>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

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

private:
    struct Element
    {
        QString service;
        QString path;
        QString name;
        uint role = 0;
        quint64 states = 0;
    };
    [[nodiscard]] QList<Element> elements();
    void collect(const QString &service, const QString &path, QList<Element> &found);
    [[nodiscard]] QVariantList call(const QString &service, const QString &path, const QString &interface,
                                    const QString &method, const QVariantList &arguments = {}) const;

    QDBusConnection m_bus;
};

} // namespace kelp::test

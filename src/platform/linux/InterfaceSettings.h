#pragma once

#include <QObject>

#include <memory>

// Of GLib, whose headers are no friends of Qt's.
using GSettings = struct _GSettings;

namespace kelp {

/// The desktop's settings "org.gnome.desktop.interface" in GSettings, which other desktops than GNOME keep to as well.
class InterfaceSettings final : public QObject
{
    Q_OBJECT

public:
    explicit InterfaceSettings(QObject *parent = nullptr);
    ~InterfaceSettings() override;

    /// Opens the settings on another thread, because that reads files and talks to the bus. Then, and whenever one of
    /// them changes, says `changed`; never where the desktop has none.
    void open();

    [[nodiscard]] bool reducesMotion() const;
    [[nodiscard]] bool prefersDark() const;

Q_SIGNALS:
    void changed();

private:
    void adopt(std::shared_ptr<GSettings> settings);
    [[nodiscard]] bool has(const char *key) const;

    std::shared_ptr<GSettings> m_settings;
};

} // namespace kelp

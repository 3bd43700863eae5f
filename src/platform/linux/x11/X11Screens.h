#pragma once

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QObject>
#include <QRect>
#include <QString>

struct xcb_connection_t;

namespace kelp {

/// Keeps Qt's screens where the server has the monitors. Qt 6.4 takes no notice of a monitor that moves without a
/// change of its mode, as the right one of two does when the left one is unplugged.
class X11Screens final : public QObject, private QAbstractNativeEventFilter
{
public:
    explicit X11Screens(xcb_connection_t *connection);

private:
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void compareSoon();
    void compare();
    [[nodiscard]] QHash<QString, QRect> monitors() const;

    xcb_connection_t *m_connection;
    int m_firstEvent = 0; ///< of the server's extension; 0 without it
    bool m_isComparing = false;
};

} // namespace kelp

#include "platform/linux/DBusStatusObject.h"

#include "platform/StatusItem.h"

#include <QDBusMetaType>
#include <QtEndian>

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

// Not in a namespace of their own: Qt looks for them beside the types.
static QDBusArgument &operator<<(QDBusArgument &argument, const DBusPixmap &pixmap)
{
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.pixels;
    argument.endStructure();
    return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, DBusPixmap &pixmap)
{
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.pixels;
    argument.endStructure();
    return argument;
}

static QDBusArgument &operator<<(QDBusArgument &argument, const DBusToolTip &toolTip)
{
    argument.beginStructure();
    argument << toolTip.icon << toolTip.pixmaps << toolTip.title << toolTip.text;
    argument.endStructure();
    return argument;
}

static const QDBusArgument &operator>>(const QDBusArgument &argument, DBusToolTip &toolTip)
{
    argument.beginStructure();
    argument >> toolTip.icon >> toolTip.pixmaps >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

namespace {

/// In pixels: what panels ask for at scale 1 and 2.
constexpr int sizes[] = {16, 22, 24, 32, 44, 48, 64};

/// Longer ones are not handed out by any desktop.
constexpr qsizetype longestToken = 512;

DBusPixmap pixmap(const QImage &image)
{
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    QByteArray pixels(qsizetype(4) * straight.width() * straight.height(), Qt::Uninitialized);
    char *to = pixels.data();
    for (int y = 0; y < straight.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(straight.constScanLine(y));
        for (int x = 0; x < straight.width(); ++x, to += 4)
            qToBigEndian(line[x], to);
    }
    return {straight.width(), straight.height(), pixels};
}

} // namespace

DBusStatusObject::DBusStatusObject(std::shared_ptr<const StatusPictures> pictures)
    : m_pictures(std::move(pictures)), m_iconFolder(m_pictures->folder())
{
    qDBusRegisterMetaType<DBusPixmap>();
    qDBusRegisterMetaType<DBusPixmaps>();
    qDBusRegisterMetaType<DBusToolTip>();
}

void DBusStatusObject::setHost(bool tints, bool showsTitle)
{
    const bool isOther = tints != m_hostTints || showsTitle != m_hostShowsTitle;
    m_hostTints = tints;
    m_hostShowsTitle = showsTitle;
    if (isOther)
        Q_EMIT NewIcon();
}

void DBusStatusObject::setLook(const StatusLook &look)
{
    const QString before = picture();
    const StatusLook old = std::exchange(m_look, look);
    if (picture() != before)
        Q_EMIT NewIcon();
    if (old.title != look.title) {
        Q_EMIT NewTitle();
        Q_EMIT XAyatanaNewLabel(look.title, labelGuide());
    }
    if (old.title != look.title || old.description != look.description)
        Q_EMIT NewToolTip();
}

void DBusStatusObject::Activate(int, int)
{
    const QString token = std::exchange(m_token, {});
    if (onActivated)
        onActivated(token);
}

void DBusStatusObject::SecondaryActivate(int x, int y)
{
    Activate(x, y);
}

void DBusStatusObject::ContextMenu(int x, int y)
{
    Activate(x, y);
}

void DBusStatusObject::ProvideXdgActivationToken(const QString &token)
{
    m_token = token.size() <= longestToken ? token : QString();
}

QString DBusStatusObject::iconName() const
{
    if (m_iconFolder.isEmpty())
        return {};
    return m_hostTints ? picture() + symbolicSuffix : picture();
}

DBusPixmaps DBusStatusObject::iconPixmap() const
{
    if (std::exchange(m_drawn, picture()) != picture()) {
        m_pixmaps.clear();
        for (const int size : sizes)
            m_pixmaps.append(pixmap(m_pictures->image(picture(), size)));
    }
    return m_pixmaps;
}

DBusToolTip DBusStatusObject::toolTip() const
{
    return {{}, {}, m_look.description + m_look.title, {}};
}

const QString &DBusStatusObject::picture() const
{
    return m_hostShowsTitle ? m_look.icon : m_look.iconWithTitle;
}

} // namespace kelp

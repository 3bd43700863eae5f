#include "support/TrayPanel.h"

#include "support/ChildProcess.h"
#include "support/StillPicture.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

QString configuration(bool isDark)
{
    return uR"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
 <property name="configver" type="int" value="2"/>
 <property name="panels" type="array"><value type="int" value="1"/>
  <property name="dark-mode" type="bool" value="%1"/>
  <property name="panel-1" type="empty">
   <property name="position" type="string" value="p=6;x=0;y=0"/>
   <property name="length" type="uint" value="100"/>
   <property name="position-locked" type="bool" value="true"/>
   <property name="size" type="uint" value="%2"/>
   <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
  </property></property>
 <property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property>
</channel>
)"_s.arg(isDark ? u"true"_s : u"false"_s)
        .arg(TrayPanel::height);
}

} // namespace

TrayPanel::~TrayPanel()
{
    test::end(m_process);
}

bool TrayPanel::start(bool isDark)
{
    const QString folder = m_desktop.folder(u".config/xfce4/xfconf/xfce-perchannel-xml"_s);
    QDir().mkpath(folder);
    QFile file(folder + u"/xfce4-panel.xml"_s);
    if (!file.open(QIODevice::WriteOnly) || file.write(configuration(isDark).toUtf8()) < 0)
        return false;
    file.close();
    QProcessEnvironment environment = m_desktop.environment();
    environment.insert(u"NO_AT_BRIDGE"_s, u"1"_s); // its own windows are nothing to be read
    m_process.setProcessEnvironment(environment);
    return m_desktop.display().launch(m_process, u"xfce4-panel"_s, {u"--disable-wm-check"_s});
}

bool TrayPanel::end()
{
    if (m_process.state() == QProcess::NotRunning)
        return true;
    m_process.terminate();
    return m_process.waitForFinished();
}

bool TrayPanel::crash()
{
    m_process.kill();
    return m_process.waitForFinished();
}

QImage TrayPanel::picture()
{
    return m_desktop.display().picture(QRect(0, 0, height, height));
}

QImage TrayPanel::settled()
{
    return stillPicture([this] {
        const QImage seen = picture();
        return inkOf(seen) > 30 ? seen : QImage();
    });
}

int TrayPanel::inkOf(const QImage &picture)
{
    const int ground = picture.pixelColor(0, 0).lightness();
    int count = 0;
    for (int y = 0; y < picture.height() - 2; ++y) { // the last rows have the panel's edge
        for (int x = 0; x < picture.width(); ++x)
            count += std::abs(picture.pixelColor(x, y).lightness() - ground) > 80;
    }
    return count;
}

} // namespace kelp::test

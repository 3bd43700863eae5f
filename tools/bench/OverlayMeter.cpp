#include "OverlayMeter.h"

#include "overlay/OverlayView.h"

#include <QEvent>

#include <utility>

namespace kelp {

/// A picture counts once the event that painted it is over: by then it is on its way to the screen.
bool OverlayMeter::notify(QObject *receiver, QEvent *event)
{
    if (event->type() == QEvent::Paint && qobject_cast<OverlayView *>(receiver)) {
        ++m_paints;
        m_paintedNow.insert(receiver);
    }
    ++m_depth;
    const bool handled = QApplication::notify(receiver, event);
    if (--m_depth == 0 && !m_paintedNow.isEmpty()) {
        if (!m_painted.contains(m_paintedNow))
            m_firstPictures = static_cast<double>(m_sinceReset.nsecsElapsed()) / 1e6;
        m_painted |= std::exchange(m_paintedNow, {});
    }
    return handled;
}

void OverlayMeter::reset()
{
    m_paints = 0;
    m_painted.clear();
    m_firstPictures = 0;
    m_sinceReset.start();
}

} // namespace kelp

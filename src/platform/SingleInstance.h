#pragma once

#include <QObject>

namespace kelp {

/// Makes sure that one Kelp runs per session and configuration folder.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Finds out whether this process is the first; then says `first`, or asks the running one to show itself and
    /// says `second`. Never blocks, and never waits longer than a few seconds.
    virtual void claim() = 0;

Q_SIGNALS:
    void first();
    void second();
    /// Kelp was started once more; `token` is the starter's right to raise a window, empty where there is none.
    void activated(const QString &token);
};

} // namespace kelp

#pragma once

#include <QCoreApplication>
#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <functional>
#include <utility>

namespace kelp {

/// Runs `work` on a thread of the pool, and then `done` on the main thread, unless `context` is destroyed before. For
/// work that keeps a processor busy; the application waits for it before it ends.
template<typename T>
void runInBackground(QObject *context, std::function<T()> work, std::function<void(const T &)> done)
{
    QThreadPool::globalInstance()->start(
        [guard = QPointer<QObject>(context), work = std::move(work), done = std::move(done)]() mutable {
            T result = work();
            // The context is looked at on its own thread, where nobody destroys it meanwhile.
            QMetaObject::invokeMethod(
                qApp,
                [guard = std::move(guard), done = std::move(done), result = std::move(result)] {
                    if (guard)
                        done(result);
                },
                Qt::QueuedConnection);
        });
}

} // namespace kelp

#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace kelp {

/// Runs `work` on a thread of its own, which nobody waits for, and then `done` on the thread of `context`, unless that
/// is destroyed before. For calls that may block for minutes, such as connecting to a bus that does not answer.
template<typename T>
void runDetached(QObject *context, std::function<T()> work, std::function<void(T)> done)
{
    struct Link
    {
        std::mutex mutex;
        QObject *context;
    };
    auto link = std::make_shared<Link>();
    link->context = context;
    QObject::connect(
        context, &QObject::destroyed, context,
        [link] {
            const std::lock_guard lock(link->mutex);
            link->context = nullptr;
        },
        Qt::DirectConnection);

    std::thread([link, work = std::move(work), done = std::move(done)] {
        T result = work();
        const std::lock_guard lock(link->mutex);
        if (link->context) {
            QMetaObject::invokeMethod(
                link->context, [done, result = std::move(result)] { done(result); }, Qt::QueuedConnection);
        }
    }).detach();
}

} // namespace kelp

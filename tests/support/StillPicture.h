#pragma once

#include <QElapsedTimer>
#include <QImage>
#include <QTest>

#include <functional>
#include <utility>

namespace kelp::test {

/// The picture that \a look takes, once it has been the same for half a second: what other programs draw comes bit by
/// bit, and a panel that has just drawn an item does not yet take clicks on it. As long as there is nothing to be seen,
/// \a look answers with a null picture, and so does this function if nothing comes to rest in 20 s.
inline QImage stillPicture(const std::function<QImage()> &look)
{
    constexpr int rest = 500; // ms
    constexpr int soon = 20'000;
    QImage last;
    QElapsedTimer same;
    bool isStill = false;
    const auto comesToRest = [&] {
        if (isStill) // waits of QTest ask once more when they have seen what they wait for
            return true;
        const QImage before = std::exchange(last, look());
        if (last.isNull() || before != last)
            same.start();
        isStill = same.hasExpired(rest);
        return isStill;
    };
    return QTest::qWaitFor(comesToRest, soon) ? last : QImage();
}

} // namespace kelp::test

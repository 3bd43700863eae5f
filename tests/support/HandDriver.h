#pragma once

#include <QAnimationDriver>
#include <QCoreApplication>
#include <QVariantAnimation>

namespace kelp::test {

/// While it is there, animations only move on when a test lets time pass.
class HandDriver final : public QAnimationDriver
{
public:
    HandDriver()
    {
        install();
        // Until the first animation runs, Qt counts real time.
        m_first.setStartValue(0);
        m_first.setEndValue(1);
        m_first.setLoopCount(-1);
        m_first.start();
        pass(0);
    }
    ~HandDriver() override { uninstall(); }

    [[nodiscard]] qint64 elapsed() const override { return m_elapsed; }

    void pass(int milliseconds)
    {
        for (int i = 0; i < 2; ++i)
            QCoreApplication::processEvents(); // what was started begins now; Qt puts that off twice
        m_elapsed += milliseconds;
        advanceAnimation();
    }

private:
    qint64 m_elapsed = 0;
    QVariantAnimation m_first;
};

} // namespace kelp::test

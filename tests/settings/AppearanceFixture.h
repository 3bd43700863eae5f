#pragma once

#include "preferences/Preferences.h"
#include "settings/AppearanceView.h"
#include "support/FakeClock.h"

#include <QList>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>

class QAbstractButton;
class QFileDialog;

namespace kelp::test {

/// An appearance window over preferences in memory. Sounds are only noted; the clock, which also paces the pictures, is
/// advanced by hand. It is 2026-01-01 09:00 UTC.
class AppearanceFixture
{
public:
    explicit AppearanceFixture(const QJsonObject &stored = {});
    ~AppearanceFixture();

    /// Shows the window in its usual size.
    void open();
    /// Lets everything be painted, and all thumbnails be made.
    void settle();

    /// The visible button, switch, tile or choice of that (accessible) name, or null.
    [[nodiscard]] QAbstractButton *button(const QString &name) const;
    /// The visible texts.
    [[nodiscard]] QStringList texts() const;
    [[nodiscard]] bool reads(const QString &text) const { return texts().contains(text); }
    void click(const QString &name);
    template<typename T>
    [[nodiscard]] T *control(const QString &accessibleName) const
    {
        for (T *each : view->template findChildren<T *>()) {
            if (each->accessibleName() == accessibleName && each->isVisible())
                return each;
        }
        return nullptr;
    }
    /// Chooses as a user does, from the opened list.
    void choose(const QString &picker, const QString &text);
    /// The file dialog that is open, or null.
    [[nodiscard]] QFileDialog *dialog() const;
    /// Picks a file in it, or cancels.
    void answer(const QString &path);

    /// Lets the first sound that is still being adopted be so, where `adoptionTakesTime`.
    void finishAdoption();

    /// A picture file in the test's own folder, its path.
    [[nodiscard]] QString makePicture(const QString &name, const QColor &colour = Qt::darkCyan) const;
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }

    Preferences preferences;
    FakeClock clock;
    QStringList heard; ///< "play Glass", "stop"
    quint64 turns = 0; ///< of playing, those of others included
    QString adoptionError;
    bool adoptionTakesTime = false;
    QStringList adoptedSounds;
    bool hasSpotify = true;
    int previews = 0;
    std::unique_ptr<AppearanceView> view;

private:
    QTemporaryDir m_folder;
    QList<std::function<void()>> m_adoptions;
};

} // namespace kelp::test

#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QStringList>
#include <QThread>

#include <memory>
#include <vector>

namespace kelp::test {

/// A music player on a bus, as its peers see it: it answers what MPRIS players are asked for, in the way a test wants,
/// and remembers what it was told to do. It has a connection of its own.
class FakePlayer final : public QDBusVirtualObject
{
    Q_OBJECT

public:
    enum class Answers {
        AtOnce,
        Late, ///< after `delay`
        Never,
        WithErrors,
        WithNothing, ///< with an answer that has no content
        WithMuch,    ///< with more of it than there should be
    };
    struct Character
    {
        QVariant status = QStringLiteral("Playing");
        QVariant desktopEntry = {}; ///< invalid: it has no such property
        Answers answers = Answers::AtOnce;
        int delay = 1000; ///< milliseconds
    };

    /// `names` stand behind "org.mpris.MediaPlayer2.". Whether the bus gave them all: `isThere`.
    FakePlayer(const QString &address, const QStringList &names, const Character &character);
    ~FakePlayer() override;

    [[nodiscard]] bool isThere() const { return m_isThere; }
    /// Whether the bus is still there.
    [[nodiscard]] bool isConnected() const { return QDBusConnection(m_connection).isConnected(); }
    /// Its unique name on the bus.
    [[nodiscard]] QString owner() const { return QDBusConnection(m_connection).baseService(); }
    /// What it was told, in order: "Pause", "Play", "OpenUri spotify:track:x", …
    [[nodiscard]] QStringList told() const;
    /// How often it was asked for a property.
    [[nodiscard]] int asked() const;

    [[nodiscard]] QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void answerNow(const QDBusMessage &message) const;
    [[nodiscard]] QVariant property(const QString &name) const;

    Character m_character;
    QString m_connection;
    bool m_isThere = false;
    mutable QMutex m_mutex;
    QStringList m_told;
    int m_asked = 0;
};

/// Players that live in a thread of their own, so that what they do does not count as the event loop's.
class FakePlayers
{
public:
    explicit FakePlayers(const QString &address);
    ~FakePlayers();
    FakePlayers(const FakePlayers &) = delete;
    FakePlayers &operator=(const FakePlayers &) = delete;

    FakePlayer &add(const QStringList &names, const FakePlayer::Character &character = {});
    /// Returns when each of them has taken all that `bus` has sent it so far.
    void sync(const QDBusConnection &bus) const;
    /// It leaves the bus.
    void remove(FakePlayer &player);

private:
    QString m_address;
    QThread m_thread;
    std::vector<std::unique_ptr<FakePlayer>> m_players;
};

} // namespace kelp::test

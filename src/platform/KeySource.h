#pragma once

#include <QObject>
#include <QString>

namespace kelp {

/// A key that goes down; keys that only modify others are none.
struct KeyPress
{
    double time = 0; ///< seconds by a clock that never goes back
    QString text;    ///< what the key types with regard to Shift and to no other modifier
    bool control = false;
    bool alt = false; ///< Alt, or the key that gives the third level
    bool meta = false;
    bool isRepeat = false; ///< the key is held

    friend bool operator==(const KeyPress &, const KeyPress &) = default;
};

/// Tells of keys.
class KeySource : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Begins, now or as soon as it is allowed to.
    virtual void start() = 0;
    /// Whether it sees the keys of other applications, too. It may come and go.
    [[nodiscard]] virtual bool seesAll() const = 0;

Q_SIGNALS:
    void pressed(const kelp::KeyPress &key);
    void seesAllChanged();
};

} // namespace kelp

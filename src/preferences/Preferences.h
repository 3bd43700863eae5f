#pragma once

#include "preferences/PreferenceKeys.h"

#include <QJsonObject>
#include <QObject>

#include <functional>
#include <optional>

namespace kelp {

class AtomicFile;

/// The user's settings and the little state that Kelp keeps: one flat, typed JSON object in a private file.
///
/// Strings, numbers and booleans are stored as themselves, dates as {"date": "2026-01-01T09:00:00.000Z"}, dictionaries
/// as objects. A value is read at the moment of use, and a change is on disk when `set` returns; where the disk
/// refuses, the change holds until Kelp ends and the file keeps its old content.
///
/// A stored value of the wrong type reads as the type's empty value (0, false, nothing), not as the fallback.
class Preferences : public QObject
{
    Q_OBJECT

public:
    /// Kept in memory only.
    explicit Preferences(const QJsonObject &stored = {}, QObject *parent = nullptr);
    /// Kept in `file`, which must outlive this. A file that is no JSON object is put aside under the name with
    /// ".damaged" appended before it is first replaced.
    explicit Preferences(AtomicFile &file, QObject *parent = nullptr);

    [[nodiscard]] std::int64_t get(const PreferenceKey<std::int64_t> &key) const; ///< fractions truncated toward zero
    [[nodiscard]] bool get(const PreferenceKey<bool> &key) const;
    [[nodiscard]] double get(const PreferenceKey<double> &key) const;
    [[nodiscard]] QString get(const PreferenceKey<QString> &key) const;
    [[nodiscard]] std::optional<Instant> get(const PreferenceKey<Instant> &key) const;
    /// Empty when one value of it is no date.
    [[nodiscard]] DateDictionary get(const PreferenceKey<DateDictionary> &key) const;
    /// Empty when one value of it is no boolean.
    [[nodiscard]] ChoiceDictionary get(const PreferenceKey<ChoiceDictionary> &key) const;

    void set(const PreferenceKey<std::int64_t> &key, std::int64_t value);
    void set(const PreferenceKey<bool> &key, bool value);
    void set(const PreferenceKey<double> &key, double value);
    void set(const PreferenceKey<QString> &key, const QString &value);
    void set(const PreferenceKey<Instant> &key, std::optional<Instant> value); ///< nothing removes the key
    void set(const PreferenceKey<DateDictionary> &key, const DateDictionary &value);
    void set(const PreferenceKey<ChoiceDictionary> &key, const ChoiceDictionary &value);

    /// Back to the fallback.
    template<typename T>
    void remove(const PreferenceKey<T> &key)
    {
        store(key.name, QJsonValue(QJsonValue::Undefined));
    }

    /// Whether a value is stored, of whatever type.
    template<typename T>
    [[nodiscard]] bool contains(const PreferenceKey<T> &key) const
    {
        return !stored(key.name).isUndefined();
    }
    /// Whether a boolean is stored, and it is `value`.
    [[nodiscard]] bool holds(const PreferenceKey<bool> &key, bool value) const;

    /// Runs `changes` and writes the file once after it.
    void update(const std::function<void()> &changes);

    /// Calls `action` after each change of the key's value, for as long as `context` lives.
    template<typename T>
    void observe(const PreferenceKey<T> &key, QObject *context, std::function<void()> action)
    {
        observeName(QLatin1StringView(key.name), context, std::move(action));
    }

    /// All that is stored.
    [[nodiscard]] const QJsonObject &values() const { return m_values; }

Q_SIGNALS:
    /// The value stored under `name` is another one now.
    void changed(const QString &name);

private:
    [[nodiscard]] QJsonValue stored(const char *name) const;
    void store(const char *name, const QJsonValue &value);
    void save();
    void observeName(QLatin1StringView name, QObject *context, std::function<void()> action);

    QJsonObject m_values;
    AtomicFile *m_file = nullptr;
    bool m_damaged = false; ///< the file's content could not be read as a JSON object
    int m_updating = 0;
    bool m_unsaved = false;
};

} // namespace kelp

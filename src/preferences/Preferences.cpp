#include "preferences/Preferences.h"

#include "base/AtomicFile.h"
#include "base/Logging.h"

#include <QJsonDocument>

#include <algorithm>
#include <cmath>

namespace kelp {

namespace {

constexpr QLatin1StringView dateMember("date");

QJsonObject encodeDate(Instant instant)
{
    return {{dateMember, instant.toIso8601Milliseconds()}};
}

std::optional<Instant> decodeDate(const QJsonValue &value)
{
    const QJsonObject object = value.toObject();
    if (object.size() != 1 || !object.value(dateMember).isString())
        return {};
    return Instant::parse(object.value(dateMember).toString());
}

std::int64_t integerOf(const QJsonValue &value)
{
    // A double holds 53 bits of an integer only.
    if (const qint64 exact = value.toInteger(0); exact != 0)
        return exact;
    constexpr double limit = 9223372036854774784.0; // the greatest double below 2^63
    return static_cast<std::int64_t>(std::clamp(std::trunc(value.toDouble(0)), -limit, limit));
}

} // namespace

Preferences::Preferences(const QJsonObject &stored, QObject *parent) : QObject(parent), m_values(stored) {}

Preferences::Preferences(AtomicFile &file, QObject *parent) : QObject(parent), m_file(&file)
{
    const auto content = file.read();
    if (!content) {
        qCWarning(logPreferences).noquote() << "cannot be read:" << content.error().description();
        m_damaged = true;
    } else if (*content) {
        const QJsonDocument document = QJsonDocument::fromJson(**content);
        m_damaged = !document.isObject();
        if (m_damaged)
            qCWarning(logPreferences) << "the file is no JSON object; starting with the defaults";
        m_values = document.object();
    }
}

QJsonValue Preferences::stored(const char *name) const
{
    const QJsonValue value = m_values.value(QLatin1StringView(name));
    return value.isNull() ? QJsonValue(QJsonValue::Undefined) : value;
}

std::int64_t Preferences::get(const PreferenceKey<std::int64_t> &key) const
{
    const QJsonValue value = stored(key.name);
    return value.isUndefined() ? key.fallback : integerOf(value);
}

bool Preferences::get(const PreferenceKey<bool> &key) const
{
    const QJsonValue value = stored(key.name);
    return value.isUndefined() ? key.fallback : value.toBool(false);
}

double Preferences::get(const PreferenceKey<double> &key) const
{
    const QJsonValue value = stored(key.name);
    return value.isUndefined() ? key.fallback : value.toDouble(0);
}

QString Preferences::get(const PreferenceKey<QString> &key) const
{
    const QJsonValue value = stored(key.name);
    return value.isUndefined() ? key.fallback : value.toString();
}

std::optional<Instant> Preferences::get(const PreferenceKey<Instant> &key) const
{
    return decodeDate(stored(key.name));
}

DateDictionary Preferences::get(const PreferenceKey<DateDictionary> &key) const
{
    DateDictionary dictionary;
    const QJsonObject object = stored(key.name).toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const std::optional<Instant> date = decodeDate(entry.value());
        if (!date)
            return {};
        dictionary.insert(entry.key(), *date);
    }
    return dictionary;
}

ChoiceDictionary Preferences::get(const PreferenceKey<ChoiceDictionary> &key) const
{
    ChoiceDictionary dictionary;
    const QJsonObject object = stored(key.name).toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (!entry.value().isBool())
            return {};
        dictionary.insert(entry.key(), entry.value().toBool());
    }
    return dictionary;
}

void Preferences::set(const PreferenceKey<std::int64_t> &key, std::int64_t value)
{
    store(key.name, static_cast<qint64>(value));
}

void Preferences::set(const PreferenceKey<bool> &key, bool value)
{
    store(key.name, value);
}

void Preferences::set(const PreferenceKey<double> &key, double value)
{
    store(key.name, value);
}

void Preferences::set(const PreferenceKey<QString> &key, const QString &value)
{
    store(key.name, value);
}

void Preferences::set(const PreferenceKey<Instant> &key, std::optional<Instant> value)
{
    store(key.name, value ? QJsonValue(encodeDate(*value)) : QJsonValue(QJsonValue::Undefined));
}

void Preferences::set(const PreferenceKey<DateDictionary> &key, const DateDictionary &value)
{
    QJsonObject object;
    for (auto entry = value.begin(); entry != value.end(); ++entry)
        object.insert(entry.key(), encodeDate(entry.value()));
    store(key.name, object);
}

void Preferences::set(const PreferenceKey<ChoiceDictionary> &key, const ChoiceDictionary &value)
{
    QJsonObject object;
    for (auto entry = value.begin(); entry != value.end(); ++entry)
        object.insert(entry.key(), entry.value());
    store(key.name, object);
}

bool Preferences::holds(const PreferenceKey<bool> &key, bool value) const
{
    const QJsonValue json = stored(key.name);
    return json.isBool() && json.toBool() == value;
}

void Preferences::update(const std::function<void()> &changes)
{
    ++m_updating;
    changes();
    --m_updating;
    save();
}

void Preferences::store(const char *name, const QJsonValue &value)
{
    const QLatin1StringView key(name);
    if (m_values.value(key) == value)
        return;
    if (value.isUndefined())
        m_values.remove(key);
    else
        m_values.insert(key, value);
    m_unsaved = true;
    save();
    Q_EMIT changed(key);
}

void Preferences::save()
{
    if (!m_unsaved || m_updating > 0 || !m_file)
        return;
    if (m_damaged) {
        // What the user wrote by hand is put aside, not lost.
        if (const auto aside = m_file->putAside(QStringLiteral(".damaged")); !aside) {
            qCWarning(logPreferences).noquote() << "cannot be put aside:" << aside.error().description();
            return;
        }
        m_damaged = false;
    }
    const auto written = m_file->write(QJsonDocument(m_values).toJson(QJsonDocument::Indented));
    if (!written)
        qCWarning(logPreferences).noquote() << "cannot be written:" << written.error().description();
    // A later change tries again with everything.
    m_unsaved = !written;
}

void Preferences::observeName(QLatin1StringView name, QObject *context, std::function<void()> action)
{
    connect(this, &Preferences::changed, context, [name, action = std::move(action)](const QString &changedName) {
        if (changedName == name)
            action();
    });
}

} // namespace kelp

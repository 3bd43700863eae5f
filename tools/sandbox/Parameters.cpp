#include "Parameters.h"

#include <QJsonObject>
#include <QSet>
#include <QStringDecoder>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

std::optional<QString> percentDecoded(const QByteArray &text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            bytes += text[i];
            continue;
        }
        bool valid = false;
        const QByteArray digits = text.mid(i + 1, 2);
        const int value = digits.size() == 2 && digits[0] != '+' && digits[0] != '-' ? digits.toInt(&valid, 16) : 0;
        if (!valid)
            return std::nullopt;
        bytes += static_cast<char>(value);
        i += 2;
    }
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString decoded = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return decoded;
}

std::optional<Parameters> Parameters::decode(const QByteArray &text)
{
    Parameters parameters;
    for (QByteArray pair : text.split('&')) {
        if (pair.isEmpty())
            continue;
        pair.replace('+', ' ');
        const qsizetype equals = pair.indexOf('=');
        const std::optional<QString> name = percentDecoded(equals < 0 ? pair : pair.left(equals));
        const std::optional<QString> value = percentDecoded(equals < 0 ? QByteArray() : pair.mid(equals + 1));
        if (!name || !value)
            return std::nullopt;
        parameters.m_items.append({*name, *value});
    }
    return parameters;
}

std::optional<QString> Parameters::find(const QString &name) const
{
    for (const Item &item : m_items) {
        if (item.first == name)
            return item.second;
    }
    return std::nullopt;
}

QString Parameters::value(const QString &name) const
{
    return find(name).value_or(QString());
}

std::optional<QString> Parameters::repeatedName() const
{
    QSet<QString> names;
    for (const Item &item : m_items) {
        if (names.contains(item.first))
            return item.first;
        names.insert(item.first);
    }
    return std::nullopt;
}

QJsonArray Parameters::toJson() const
{
    QJsonArray array;
    for (const auto &[name, value] : m_items)
        array.append(QJsonObject{{u"name"_s, name}, {u"value"_s, value}});
    return array;
}

} // namespace kelp::sandbox

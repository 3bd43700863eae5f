#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

namespace kelp::sandbox {

/// Undoes percent-encoding; nothing where an escape is broken or the bytes are not UTF-8.
[[nodiscard]] std::optional<QString> percentDecoded(const QByteArray &text);

/// The items of a query string or of a form, in the order in which they came.
class Parameters
{
public:
    using Item = std::pair<QString, QString>;

    /// Reads "a=1&b=x+y%2Fz"; "+" is a space. Nothing where `percentDecoded` refuses a name or a value.
    [[nodiscard]] static std::optional<Parameters> decode(const QByteArray &text);

    [[nodiscard]] const QList<Item> &items() const { return m_items; }
    /// The first value of that name.
    [[nodiscard]] std::optional<QString> find(const QString &name) const;
    /// The first value of that name, or the empty text.
    [[nodiscard]] QString value(const QString &name) const;
    /// A name that occurs more than once, which OAuth forbids.
    [[nodiscard]] std::optional<QString> repeatedName() const;
    /// [{"name": …, "value": …}, …]
    [[nodiscard]] QJsonArray toJson() const;

private:
    QList<Item> m_items;
};

} // namespace kelp::sandbox

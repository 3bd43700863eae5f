#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace kelp {

/// The parts of an RFC 3986 URI reference, as written: nothing decoded, nothing lower-cased.
struct Uri
{
    /// One "name=value" of a query, percent-decoded. "+" stays "+".
    struct QueryItem
    {
        QString name;
        std::optional<QString> value; ///< nothing without "=", or where the value is no UTF-8
    };

    std::optional<QString> scheme;
    std::optional<QString> host; ///< nothing without "//"; IPv6 addresses in brackets
    QString path;
    std::optional<QString> query;

    /// Strict: nothing where a character or a percent escape is not allowed where it stands.
    [[nodiscard]] static std::optional<Uri> parse(QStringView text);

    /// "/" first for a path that begins with one, then the decoded segments; empty segments are left out.
    [[nodiscard]] QStringList pathComponents() const;
    /// Every item in order, pieces without a name included.
    [[nodiscard]] QList<QueryItem> queryItems() const;
    /// The value of the first item named `name`.
    [[nodiscard]] std::optional<QString> queryValue(QStringView name) const;
};

/// Percent-encodes all bytes of the UTF-8 form but ASCII letters, digits, "-", ".", "_", "~" and those in `literal`.
[[nodiscard]] QByteArray percentEncoded(const QString &text, QByteArrayView literal = {});

} // namespace kelp

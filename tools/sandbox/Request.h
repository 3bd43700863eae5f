#pragma once

#include "Parameters.h"

#include <QByteArray>
#include <QStringList>

namespace kelp::sandbox {

/// A request as it came over the wire, taken apart.
struct Request
{
    using Header = std::pair<QByteArray, QByteArray>;

    QByteArray method;
    QByteArray path;      ///< still percent-encoded
    QByteArray rawQuery;  ///< what stands behind "?"
    QStringList segments; ///< of the path, decoded: "/a/b%2Fc" is {"a", "b/c"}
    Parameters query;
    QList<Header> headers; ///< names in lower case
    QByteArray body;
    bool isWellFormed = true; ///< false where path or query cannot be decoded

    [[nodiscard]] static Request fromTarget(const QByteArray &method, const QByteArray &target);

    /// The first header of that name (in lower case), or nothing.
    [[nodiscard]] QByteArray header(const QByteArray &name) const;
    /// Whether the body says that it is an HTML form's, url-encoded.
    [[nodiscard]] bool hasForm() const;
};

} // namespace kelp::sandbox

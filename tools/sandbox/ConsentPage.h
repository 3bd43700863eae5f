#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace kelp::sandbox {

/// The page on which a person allows or refuses access. It works without scripts; the buttons have the ids "allow" and
/// "cancel". `suggested` is chosen beforehand where it is among `emails`, else the first one is. `rawQuery` is the
/// authorization request, which the form sends along.
[[nodiscard]] QString consentPage(const QStringList &emails, const QString &suggested, const QByteArray &rawQuery);

/// The page for an authorization request that is refused.
[[nodiscard]] QString authorizationErrorPage(const QString &error, const QString &description);

} // namespace kelp::sandbox

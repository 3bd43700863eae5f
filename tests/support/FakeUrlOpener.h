#pragma once

#include "platform/UrlOpener.h"

#include <QStringList>
#include <QUrl>

namespace kelp::test {

/// Remembers the links instead of opening them.
class FakeUrlOpener final : public UrlOpener
{
public:
    QStringList schemes; ///< those that have a handler
    QStringList opened;  ///< as sent, percent-encoded

    [[nodiscard]] bool hasHandler(const QUrl &url) const override { return schemes.contains(url.scheme()); }
    void open(const QUrl &url) override { opened.append(QString::fromLatin1(url.toEncoded())); }
};

} // namespace kelp::test

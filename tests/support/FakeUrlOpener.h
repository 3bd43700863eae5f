#pragma once

#include "platform/UrlOpener.h"

#include <QList>
#include <QUrl>

namespace kelp::test {

/// Remembers what it was asked to open. No application is installed unless a test says so.
class FakeUrlOpener final : public UrlOpener
{
public:
    [[nodiscard]] bool hasHandler(const QUrl &url) const override { return handledSchemes.contains(url.scheme()); }
    void open(const QUrl &url) override { opened.append(url); }

    QStringList handledSchemes;
    QList<QUrl> opened;
};

} // namespace kelp::test

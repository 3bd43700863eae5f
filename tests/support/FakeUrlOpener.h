#pragma once

#include "platform/UrlOpener.h"

#include <QStringList>

namespace kelp::test {

/// Remembers what it was asked to open. No application is installed unless a test says so.
class FakeUrlOpener final : public UrlOpener
{
public:
    [[nodiscard]] bool hasHandler(const QString &scheme) const override { return handledSchemes.contains(scheme); }
    void open(const QString &link) override { opened.append(link); }

    QStringList handledSchemes;
    QStringList opened;
};

} // namespace kelp::test

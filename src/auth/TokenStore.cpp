#include "auth/TokenStore.h"

#include "base/AtomicFile.h"
#include "base/Logging.h"

#include <QStringDecoder>

namespace kelp {

std::optional<QString> TokenStore::get(const QString &name) const
{
    const auto content = AtomicFile(file(name)).read();
    if (!content || !*content)
        return {};
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder(**content);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

void TokenStore::set(const QString &value, const QString &name)
{
    if (const auto written = AtomicFile(file(name)).write(value.toUtf8()); !written)
        qCWarning(logAuth).noquote() << "cannot be written:" << written.error().description();
}

void TokenStore::remove(const QString &name)
{
    if (const auto removed = AtomicFile(file(name)).remove(); !removed)
        qCWarning(logAuth).noquote() << "cannot be removed:" << removed.error().description();
}

QString TokenStore::file(const QString &name) const
{
    return m_folder + u'/' + name;
}

} // namespace kelp

#pragma once

#include <QString>

#include <optional>

namespace kelp {

/// Small private text files, each named by a string, in one private folder (0700, files 0600). Failures are not
/// reported: an unreadable file reads as absent, and a write that fails leaves the old content.
class TokenStore
{
public:
    explicit TokenStore(QString folder) : m_folder(std::move(folder)) {}

    [[nodiscard]] std::optional<QString> get(const QString &name) const;
    void set(const QString &value, const QString &name);
    void remove(const QString &name);

private:
    [[nodiscard]] QString file(const QString &name) const;

    QString m_folder;
};

} // namespace kelp

#pragma once

#include "Request.h"
#include "base/Instant.h"

#include <QFile>
#include <QJsonArray>

namespace kelp::sandbox {

/// The requests so far, for tests to look at. Tokens are kept as they came: they are worth nothing elsewhere.
class RequestLog
{
public:
    /// Also writes every request as a line of JSON to a file. Returns whether it can be written.
    [[nodiscard]] bool openFile(const QString &path);

    /// `status` is 0 where there was no answer.
    void add(const Request &request, int status, Instant now);
    [[nodiscard]] const QJsonArray &entries() const { return m_entries; }
    void clear() { m_entries = {}; }

private:
    QJsonArray m_entries;
    QFile m_file;
};

} // namespace kelp::sandbox

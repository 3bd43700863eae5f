#include "RequestLog.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace kelp::sandbox {

using namespace Qt::StringLiterals;

bool RequestLog::openFile(const QString &path)
{
    m_file.setFileName(path);
    return m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered);
}

void RequestLog::add(const Request &request, int status, Instant now)
{
    QJsonObject headers;
    for (const auto &[name, value] : request.headers)
        headers[QString::fromLatin1(name)] = QString::fromUtf8(value);
    QJsonObject entry{{u"at"_s, now.secondsSince1970},
                      {u"method"_s, QString::fromLatin1(request.method)},
                      {u"path"_s, QString::fromUtf8(request.path)},
                      {u"rawQuery"_s, QString::fromUtf8(request.rawQuery)},
                      {u"query"_s, request.query.toJson()},
                      {u"headers"_s, headers},
                      {u"status"_s, status}};
    if (request.hasForm())
        entry[u"form"_s] = Parameters::decode(request.body).value_or(Parameters()).toJson();
    m_entries.append(entry);
    if (m_file.isOpen())
        m_file.write(QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n');
}

} // namespace kelp::sandbox

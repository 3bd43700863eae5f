#include "auth/Pkce.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QRandomGenerator>

namespace kelp {

namespace {

constexpr auto urlSafe = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

} // namespace

QString randomURLSafe(int byteCount)
{
    QByteArray bytes(byteCount, Qt::Uninitialized);
    // system() is the kernel's generator, unlike global().
    for (char &byte : bytes)
        byte = static_cast<char>(QRandomGenerator::system()->generate() & 0xff);
    return QString::fromLatin1(bytes.toBase64(urlSafe));
}

QString codeChallenge(const QString &verifier)
{
    const QByteArray digest = QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(digest.toBase64(urlSafe));
}

} // namespace kelp

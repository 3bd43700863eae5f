// Saves the preferences and an account list over and over until it is killed.
//
// saving_forever FOLDER
//
// Every save carries its number and a text of varying length made from it; after each the number is printed as eight
// bytes, so that whoever kills this knows what had been saved by then.

#include "SavedFiller.h"
#include "base/AtomicFile.h"
#include "preferences/Preferences.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

using namespace kelp;
using namespace Qt::StringLiterals;

namespace {

QByteArray accountList(std::int64_t number)
{
    QJsonArray accounts;
    for (int index = 0; index < 3; ++index)
        accounts.append(QJsonObject{{u"email"_s, QString::number(number)}, {u"refreshToken"_s, savedFiller(number)}});
    return QJsonDocument(accounts).toJson(QJsonDocument::Compact);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QString folder = application.arguments().value(1);
    AtomicFile::sweep(folder);
    AtomicFile accounts(folder + u"/accounts.json"_s);
    AtomicFile file(folder + u"/preferences.json"_s);
    Preferences preferences(file);
    for (std::int64_t number = preferences.get(preference::leadMinutes);; ++number) {
        preferences.update([&] {
            preferences.set(preference::leadMinutes, number);
            preferences.set(preference::spotifyLink, savedFiller(number));
        });
        if (!accounts.write(accountList(number)) || ::write(STDOUT_FILENO, &number, sizeof number) != sizeof number)
            return 1;
    }
}

#include "settings/AppearanceFixture.h"

#include "ui/PlainText.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QLinearGradient>
#include <QPainter>
#include <QPointer>
#include <QTest>
#include <QThreadPool>

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp::test {

AppearanceFixture::AppearanceFixture(const QJsonObject &stored) : preferences(stored)
{
    PreviewSounds sounds;
    sounds.play = [this](const QString &choice) {
        heard.append(u"play "_s + choice);
        return ++turns;
    };
    sounds.stop = [this] { heard.append(u"stop"_s); };
    sounds.stopTurn = [this](quint64 turn) {
        if (turn == turns)
            heard.append(u"stop"_s);
    };
    sounds.adopt = [this](const QString &path, QObject *context, std::function<void(Result<void, QString>)> done) {
        adoptedSounds.append(path);
        m_adoptions.append([this, path, context = QPointer(context), done = std::move(done)] {
            if (adoptionError.isEmpty()) {
                preferences.set(preference::customSoundPath, path);
                preferences.set(preference::customSoundName, QFileInfo(path).completeBaseName());
            }
            if (context)
                done(adoptionError.isEmpty() ? Result<void, QString>() : Failure(adoptionError));
        });
        if (!adoptionTakesTime)
            m_adoptions.takeFirst()();
    };
    sounds.isSpotifyInstalled = [this] { return hasSpotify; };
    view = std::make_unique<AppearanceView>(AppearanceView::Services{preferences, clock, sounds});
    view->onPreview = [this] { ++previews; };
}

AppearanceFixture::~AppearanceFixture()
{
    view.reset();
}

void AppearanceFixture::finishAdoption()
{
    QVERIFY(!m_adoptions.isEmpty());
    m_adoptions.takeFirst()();
    settle();
}

void AppearanceFixture::open()
{
    view->show();
    view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(view.get()));
    settle();
}

void AppearanceFixture::settle()
{
    for (int i = 0; i < 3; ++i) {
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        clock.advance(0.001);
    }
}

QAbstractButton *AppearanceFixture::button(const QString &name) const
{
    for (QAbstractButton *each : view->findChildren<QAbstractButton *>()) {
        const QString named = each->accessibleName().isEmpty() ? each->text() : each->accessibleName();
        if (each->isVisible() && named == name)
            return each;
    }
    return nullptr;
}

QStringList AppearanceFixture::texts() const
{
    QStringList result;
    for (const QLabel *each : view->findChildren<QLabel *>()) {
        if (each->isVisible())
            result.append(each->text());
    }
    return result;
}

void AppearanceFixture::click(const QString &name)
{
    QAbstractButton *target = button(name);
    QVERIFY2(target, qPrintable(name));
    QTest::mouseClick(target, Qt::LeftButton);
    settle();
}

void AppearanceFixture::choose(const QString &picker, const QString &text)
{
    auto *box = control<QComboBox>(picker);
    QVERIFY2(box, qPrintable(picker));
    int index = -1;
    for (int i = 0; i < box->count(); ++i) {
        if (withoutIsolates(box->itemText(i)) == text)
            index = i;
    }
    QVERIFY2(index >= 0, qPrintable(text));
    box->showPopup();
    box->view()->setCurrentIndex(box->model()->index(index, 0));
    QTest::keyClick(box->view(), Qt::Key_Return);
    settle();
}

QFileDialog *AppearanceFixture::dialog() const
{
    for (QFileDialog *each : view->findChildren<QFileDialog *>()) {
        if (each->isVisible())
            return each;
    }
    return nullptr;
}

void AppearanceFixture::answer(const QString &path)
{
    QFileDialog *open = dialog();
    QVERIFY(open);
    if (path.isEmpty()) {
        open->reject();
    } else {
        open->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(path);
        QMetaObject::invokeMethod(open, "accept");
    }
    settle();
}

QString AppearanceFixture::makePicture(const QString &name, const QColor &colour) const
{
    QImage image(1600, 1000, QImage::Format_RGB32);
    QLinearGradient gradient(0, 0, 1600, 1000);
    gradient.setColorAt(0, colour.lighter(170));
    gradient.setColorAt(1, colour.darker(200));
    QPainter painter(&image);
    painter.fillRect(image.rect(), gradient);
    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 24; ++i) {
        painter.setBrush(QColor::fromHsv((colour.hsvHue() + i * 7) % 360, 150, 230, 90));
        painter.drawEllipse(QPointF(i * 331 % 1600, i * 197 % 1000), 120 + i * 7, 120 + i * 7);
    }
    painter.end();
    const QString result = path(name);
    image.save(result, "PNG");
    return result;
}

} // namespace kelp::test

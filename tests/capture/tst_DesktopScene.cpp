#include "capture/DesktopScene.h"
#include "capture/DesktopTags.h"
#include "ui/Element.h"
#include "ui/Fonts.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Looks at what lies where on the mock desktop, and at pixels only for what has no words.
class tst_DesktopScene : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isAsLargeAsTheClips();
    void hasAMenuBar();
    void theBarEndsWithSymbolsAndTheClock();
    void hasAWindow_data();
    void hasAWindow();
    void hasADockOfColouredTiles();
    void showsWhatIsTyped();

private:
    [[nodiscard]] QRectF frameOf(const QString &tag) const;
    [[nodiscard]] QRectF frameOfText(const QString &text) const;

    DesktopScene m_scene;
    QImage m_picture = m_scene.picture(1);
};

namespace {

const auto clockText = u"Wed 29 Oct  9:59"_s;

/// A symbol alone where it should be on a bar without anything else.
QImage symbolOnBar(const QString &name, const QRectF &frame)
{
    QImage bar(1440, 22, QImage::Format_RGB32);
    bar.fill(QColor(222, 234, 240));
    QPainter painter(&bar);
    painter.translate(frame.topLeft());
    symbol(name, frame.height(), QColor(28, 30, 36)).arrange(frame.width()).paint(painter, {});
    return bar;
}

bool isDark(QRgb pixel)
{
    return qGray(pixel) < 128;
}

} // namespace

QRectF tst_DesktopScene::frameOf(const QString &tag) const
{
    return m_scene.arrangement().frameOf(tag).value_or(QRectF());
}

QRectF tst_DesktopScene::frameOfText(const QString &text) const
{
    for (const Arrangement::Text &each : m_scene.arrangement().texts()) {
        if (each.text == text)
            return each.frame;
    }
    return {};
}

void tst_DesktopScene::isAsLargeAsTheClips()
{
    QCOMPARE(m_scene.arrangement().frame(), QRectF(0, 0, 1440, 900));
    QCOMPARE(m_picture.size(), QSize(1440, 900));
}

void tst_DesktopScene::hasAMenuBar()
{
    const QRectF bar = frameOf(desktopTag::menuBar);
    QCOMPARE(bar, QRectF(0, 0, 1440, 22));
    // It is lighter than the sky, to its last row and over all its width.
    for (const int x : {4, 700, 1436})
        QVERIFY(qGray(m_picture.pixel(x, 21)) > qGray(m_picture.pixel(x, 22)) + 30);

    std::vector<Arrangement::Text> found;
    for (const Arrangement::Text &each : m_scene.arrangement().texts()) {
        if (bar.contains(each.frame))
            found.push_back(each);
    }
    std::sort(found.begin(), found.end(), [](const auto &a, const auto &b) { return a.frame.left() < b.frame.left(); });
    QStringList words;
    for (const Arrangement::Text &each : found) {
        words.append(each.text);
        const auto weight = words.size() == 1 ? QFont::Bold : QFont::Medium;
        const QFontMetricsF metrics(designFont(FontDesign::Default, 13, weight));
        QCOMPARE(each.frame.height(), std::ceil(metrics.height()));
        QVERIFY(std::abs(each.frame.width() - metrics.horizontalAdvance(each.text)) <= 1);
    }
    QCOMPARE(words,
             (QStringList{u"Finder"_s, u"File"_s, u"Edit"_s, u"View"_s, u"Go"_s, u"Window"_s, u"Help"_s, clockText}));
    QVERIFY(found.front().frame.left() < 30);
    QVERIFY(found.back().frame.right() > 1440 - 30);
}

void tst_DesktopScene::theBarEndsWithSymbolsAndTheClock()
{
    double right = frameOfText(clockText).left();
    for (const QString &name : {u"calendar-clock"_s, u"battery-75"_s, u"wifi"_s}) {
        const QRectF frame = frameOf(name);
        QVERIFY(frame.right() < right && frame.right() > right - 20);
        QVERIFY(frameOf(desktopTag::menuBar).contains(frame));
        right = frame.left();

        const QImage alone = symbolOnBar(name, frame);
        const QRect place = frame.toAlignedRect();
        int ink = 0;
        int different = 0;
        for (int y = place.top(); y <= place.bottom(); ++y) {
            for (int x = place.left(); x <= place.right(); ++x) {
                ink += isDark(alone.pixel(x, y));
                different += isDark(alone.pixel(x, y)) != isDark(m_picture.pixel(x, y));
            }
        }
        QVERIFY2(ink > 20 && different < ink / 8, qPrintable(u"%1: %2 of %3"_s.arg(name).arg(different).arg(ink)));
    }
}

void tst_DesktopScene::hasAWindow_data()
{
    QTest::addColumn<QString>("tag");
    QTest::addColumn<QString>("title");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height"); // 0: free to choose
    QTest::newRow("document") << desktopTag::roadmap << u"Q4 roadmap.md"_s << 760.0 << 0.0;
    QTest::newRow("mailbox") << desktopTag::inbox << u"Inbox"_s << 470.0 << 380.0;
}

void tst_DesktopScene::hasAWindow()
{
    QFETCH(QString, tag);
    QFETCH(QString, title);
    QFETCH(double, width);
    QFETCH(double, height);
    const QRectF window = frameOf(tag);
    QCOMPARE(window.width(), width);
    if (height > 0)
        QCOMPARE(window.height(), height);
    QVERIFY(QRectF(0, 22, 1440, 900 - 22).contains(window));

    // In the middle of a bar of its own colour, which ends where the content begins.
    const QRectF words = frameOfText(title);
    QVERIFY(std::abs(words.center().x() - window.center().x()) <= 1);
    QVERIFY(words.top() > window.top() && words.bottom() < window.top() + 38);
    const auto colourAt = [&](double x, double y) {
        return m_picture.pixelColor((window.topLeft() + QPointF(x, y)).toPoint());
    };
    for (const double x : {4.0, 100.0, width - 5}) {
        QCOMPARE(colourAt(x, 16), QColor(243, 245, 247));
        QCOMPARE(colourAt(x, 41), QColor(Qt::white));
    }
    // Above the content there is an edge, and nothing of the window beyond it.
    for (const double x : {-3.0, width + 2})
        QVERIFY(colourAt(x, 16) != QColor(243, 245, 247));
}

void tst_DesktopScene::hasADockOfColouredTiles()
{
    std::vector<QRectF> tiles;
    for (const Arrangement::Tagged &each : m_scene.arrangement().tagged()) {
        if (each.tag == desktopTag::tile)
            tiles.push_back(each.frame);
    }
    QCOMPARE(tiles.size(), DesktopScene::dockColors.size());
    QCOMPARE(tiles.size(), std::size_t{10});
    for (std::size_t i = 0; i < tiles.size(); ++i) {
        QCOMPARE(tiles[i].size(), QSizeF(50, 50));
        QCOMPARE(tiles[i].top(), tiles[0].top());
        QVERIFY(i == 0 || tiles[i].left() > tiles[i - 1].right());
        // Beside the sign, half way between the lighter top and the darker bottom.
        const auto &rgb = DesktopScene::dockColors[i];
        const QColor colour = QColor::fromRgbF(rgb[0], rgb[1], rgb[2]);
        const QColor found = m_picture.pixelColor((tiles[i].topLeft() + QPointF(6, 25)).toPoint());
        QVERIFY2(std::abs(found.hue() - colour.hue()) <= 6, qPrintable(found.name() + u' ' + colour.name()));
    }
    // At the bottom, in the middle.
    QVERIFY(std::abs(tiles.front().left() + tiles.back().right() - 1440) <= 1);
    QVERIFY(tiles[0].bottom() > 860 && tiles[0].bottom() < 900);
}

void tst_DesktopScene::showsWhatIsTyped()
{
    const QRect note = frameOf(desktopTag::note).toAlignedRect();
    QVERIFY(frameOf(desktopTag::roadmap).contains(note));
    const QImage typed = m_scene.picture(1, u"Ask Mira"_s);
    QVERIFY(typed.copy(note) != m_picture.copy(note));
    QImage rest = typed;
    QPainter(&rest).drawImage(note.topLeft(), m_picture.copy(note));
    QVERIFY2(rest == m_picture, "more than the note has changed");
}

QTEST_MAIN(tst_DesktopScene)
#include "tst_DesktopScene.moc"

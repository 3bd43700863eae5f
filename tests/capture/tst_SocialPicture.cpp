#include "capture/SocialPicture.h"

#include "capture/ClipFile.h"
#include "capture/ClipFrames.h"
#include "themes/ThemeBackgroundView.h"
#include "ui/Fonts.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace kelp;
using namespace Qt::StringLiterals;

/// Looks for what other sites show of Kelp in the pixels of the picture.
class tst_SocialPicture : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void standsBeforeTheAurora_data();
    void standsBeforeTheAurora();
    void hasFourLines();
    void wordsAreOfTheirSize_data();
    void wordsAreOfTheirSize();
    void theLogoIsThere();

private:
    QImage m_picture;
    std::vector<QRect> m_lines; ///< around what is white in them, from the top
};

namespace {

constexpr QSize size(1200, 630);

/// The aurora `t` seconds into its motion, which counts from 2001-01-01 00:00 UTC.
QImage aurora(double t)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    ThemeBackgroundView(OverlayTheme::named(u"aurora"_s), {.animate = true}).paint(painter, size, {978307200 + t});
    return image;
}

/// Where the words and the logo are: some stars elsewhere are as bright as they.
constexpr QRect middle(340, 140, 520, 350);

/// The words are white or nearly so; the background, their glow and the yellow in the logo are not.
bool isInk(QRgb pixel)
{
    return std::min({qRed(pixel), qGreen(pixel), qBlue(pixel)}) > 170;
}

/// Around all ink within a part of a picture.
QRect inkWithin(const QImage &picture, const QRect &part)
{
    QRect result;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            if (isInk(picture.pixel(x, y)))
                result |= QRect(x, y, 1, 1);
        }
    }
    return result;
}

/// The name in its line, whose left third is the logo's.
QRect nameIn(const QImage &picture, const QRect &line)
{
    return inkWithin(picture, QRect(QPoint(590, line.top()), line.bottomRight()));
}

/// The rows that have ink, as far as they lie together.
std::vector<QRect> inkLines(const QImage &picture)
{
    std::vector<QRect> lines;
    for (int y = middle.top(); y <= middle.bottom(); ++y) {
        const QRect row = inkWithin(picture, QRect(middle.left(), y, middle.width(), 1));
        if (row.isEmpty())
            continue;
        if (lines.empty() || lines.back().bottom() < y - 1)
            lines.push_back(row);
        else
            lines.back() |= row;
    }
    return lines;
}

} // namespace

void tst_SocialPicture::initTestCase()
{
    m_picture = socialPicture();
    QCOMPARE(m_picture.size(), size);
    m_lines = inkLines(m_picture);
}

void tst_SocialPicture::standsBeforeTheAurora_data()
{
    QTest::addColumn<QRect>("corner");
    QTest::addColumn<bool>("moves");
    QTest::newRow("upper left") << QRect(0, 0, 240, 140) << true;
    QTest::newRow("upper right") << QRect(960, 0, 240, 140) << true;
    QTest::newRow("lower left") << QRect(0, 490, 240, 140) << false; // hills
    QTest::newRow("lower right") << QRect(960, 490, 240, 140) << false;
}

void tst_SocialPicture::standsBeforeTheAurora()
{
    QFETCH(QRect, corner);
    QFETCH(bool, moves);
    const auto difference = [&](double t) {
        return ClipFile::meanDifference(m_picture.copy(corner), aurora(t).copy(corner));
    };
    QVERIFY2(difference(2) < 0.1, QByteArray::number(difference(2)).constData());
    if (moves)
        QVERIFY2(difference(0) > 0.3, QByteArray::number(difference(0)).constData());
}

void tst_SocialPicture::hasFourLines()
{
    QCOMPARE(m_lines.size(), std::size_t{4});
    // All of them in the middle.
    for (std::size_t i = 1; i < m_lines.size(); ++i)
        QVERIFY(std::abs(m_lines[i].left() + m_lines[i].right() - 1200) <= 8);
}

void tst_SocialPicture::wordsAreOfTheirSize_data()
{
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("words");
    QTest::addColumn<int>("points");
    QTest::addColumn<int>("weight");
    QTest::newRow("name") << 0 << u"Kelp"_s << 56 << int{QFont::Bold};
    QTest::newRow("promise") << 1 << u"The meeting reminder"_s << 46 << int{QFont::Bold};
    QTest::newRow("rest of it") << 2 << u"you can't ignore."_s << 46 << int{QFont::Bold};
    QTest::newRow("address") << 3 << u"kelp.app"_s << 22 << int{QFont::DemiBold};
}

void tst_SocialPicture::wordsAreOfTheirSize()
{
    QFETCH(int, line);
    QFETCH(QString, words);
    QFETCH(int, points);
    QFETCH(int, weight);
    const QFontMetricsF metrics(designFont(FontDesign::Rounded, points, static_cast<QFont::Weight>(weight)));
    const QSizeF expected = metrics.tightBoundingRect(words).size();
    QVERIFY(m_lines.size() > static_cast<std::size_t>(line));
    const QRect whole = m_lines[static_cast<std::size_t>(line)];
    const QRect found = line == 0 ? nameIn(m_picture, whole) : whole;
    QVERIFY2(std::abs(found.width() - expected.width()) <= 3 && std::abs(found.height() - expected.height()) <= 3,
             qPrintable(u"%1 × %2 instead of %3 × %4"_s.arg(found.width())
                            .arg(found.height())
                            .arg(expected.width())
                            .arg(expected.height())));
}

void tst_SocialPicture::theLogoIsThere()
{
    QVERIFY(!m_lines.empty());
    // All that is not background beside the name; the two of them stand in the middle.
    const QRect name = nameIn(m_picture, m_lines.front());
    const QRect left(QPoint(0, 0), QPoint(name.left() - 10, name.bottom() + 30));
    const QRect logo = differentPart(m_picture.copy(left), aurora(2).copy(left), 24);
    QVERIFY2(std::abs(logo.width() - 96) <= 1 && std::abs(logo.height() - 96) <= 1,
             qPrintable(u"%1 × %2"_s.arg(logo.width()).arg(logo.height())));
    QVERIFY(std::abs(logo.left() + name.right() - 1200) <= 6);
    QVERIFY(std::abs(logo.center().y() - name.center().y()) <= 12);
    // The float over the sea.
    const QColor sun = m_picture.pixelColor(logo.topLeft() + QPoint(54, 22));
    QVERIFY2(sun.red() > 240 && sun.blue() < 160, qPrintable(sun.name()));
    const QColor sea = m_picture.pixelColor(logo.topLeft() + QPoint(8, 60));
    QVERIFY2(sea.red() < 40 && sea.blue() > 80, qPrintable(sea.name()));
}

QTEST_MAIN(tst_SocialPicture)
#include "tst_SocialPicture.moc"

#include "support/Person.h"

#include <QImage>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace kelp::test {

namespace {

constexpr int patience = 20'000; // ms: the machine may be busy
constexpr int mostSteps = 80;

bool failed(const QString &why)
{
    qWarning().noquote() << why;
    return false;
}

/// Where one clicks in it: not on the buttons that some rows have at their end.
QPoint handle(const QRect &place)
{
    return {place.left() + std::min(place.width() / 2, 60), place.center().y()};
}

} // namespace

bool Person::click(const QString &control)
{
    const std::optional<QPoint> at = reach(control, ScreenReader::Kind::Control);
    if (!at)
        return failed(u"there is no \"%1\" to click on"_s.arg(control));
    clickAt(*at);
    return true;
}

bool Person::choose(const QString &item)
{
    const std::optional<QPoint> at = reach(item, ScreenReader::Kind::Item);
    if (!at)
        return failed(u"there is no item \"%1\""_s.arg(item));
    // Within the time of a double click a list takes the next one for that which has opened it.
    m_desktop.display().run(u"xdotool"_s, {u"mousemove"_s, QString::number(at->x()), QString::number(at->y()),
                                           u"sleep"_s, u"0.5"_s, u"click"_s, u"1"_s});
    if (!QTest::qWaitFor([&] { return !m_reader.place(item, ScreenReader::Kind::Item); }, patience))
        return failed(u"\"%1\" is still open"_s.arg(item));
    return true;
}

void Person::clickAt(const QPoint &point)
{
    m_desktop.display().run(
        u"xdotool"_s, {u"mousemove"_s, QString::number(point.x()), QString::number(point.y()), u"click"_s, u"1"_s});
}

bool Person::closeWindow()
{
    const QString window = m_desktop.display().run(u"xdotool"_s, {u"getactivewindow"_s}).trimmed();
    const QString edges = m_desktop.display().run(u"xprop"_s, {u"-id"_s, window, u"_NET_FRAME_EXTENTS"_s});
    const QString geometry = m_desktop.display().run(u"xwininfo"_s, {u"-id"_s, window});
    static const QRegularExpression titleBar(u"= \\d+, \\d+, (\\d+), \\d+"_s);
    static const QRegularExpression place(u"left X: +(\\d+)\\n.*?left Y: +(\\d+)\\n.*?Width: (\\d+)\\n"_s,
                                          QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch edge = titleBar.match(edges);
    const QRegularExpressionMatch at = place.match(geometry);
    if (!edge.hasMatch() || !at.hasMatch())
        return failed(u"there is no title bar: "_s + edges + geometry);
    const int half = edge.captured(1).toInt() / 2;
    clickAt({at.captured(1).toInt() + at.captured(3).toInt() - half, at.captured(2).toInt() - half});
    return true;
}

void Person::turnWheel(const QPoint &at, bool down)
{
    m_desktop.display().run(u"xdotool"_s, {u"mousemove"_s, QString::number(at.x()), QString::number(at.y()), u"click"_s,
                                           down ? u"5"_s : u"4"_s});
}

std::optional<QPoint> Person::reach(const QString &name, ScreenReader::Kind kind)
{
    std::optional<ScreenReader::Place> last;
    std::optional<QPoint> found;
    const auto look = [&] {
        const std::optional<ScreenReader::Place> place = m_reader.place(name, kind);
        const std::optional<ScreenReader::Place> before = std::exchange(last, place);
        if (!place || place != before)
            return false;
        const QPoint at = handle(place->whole);
        if (place->seen.contains(at)) {
            found = at;
            return true;
        }
        turnWheel(place->frame.center(), at.y() > place->frame.bottom());
        last.reset();
        return false;
    };
    return QTest::qWaitFor(look, patience) ? found : std::nullopt;
}

void Person::press(const QStringList &keys)
{
    m_desktop.display().run(u"xdotool"_s, QStringList{u"key"_s} + keys);
}

void Person::type(const QString &text)
{
    m_desktop.display().run(u"xdotool"_s, {u"type"_s, text});
}

void Person::pressSlashes()
{
    m_desktop.display().run(u"xdotool"_s, {u"sleep"_s, u"0.7"_s, u"key"_s, u"slash"_s, u"key"_s, u"slash"_s});
}

bool Person::step(const QString &key)
{
    const QString before = m_reader.focused();
    const QImage unfocused = m_desktop.display().picture();
    press({key});
    std::optional<ScreenReader::Focus> now;
    const auto hasMoved = [&] {
        now = m_reader.focus();
        return now && now->name != before;
    };
    if (!QTest::qWaitFor(hasMoved, patience))
        return failed(u"%1 leads from \"%2\" to nothing that has a name"_s.arg(key, before));
    const auto looksFocused = [&] {
        const QRect area = now->place.seen;
        if (!area.isEmpty() && m_desktop.display().picture(area) != unfocused.copy(area))
            return true;
        if (const auto later = m_reader.focus())
            now = later; // it may be on its way into sight
        return false;
    };
    if (!QTest::qWaitFor(looksFocused, patience))
        return failed(u"\"%1\" does not look focused"_s.arg(now->name));
    return true;
}

bool Person::tabTo(const QString &control, Towards towards)
{
    for (int steps = 0; m_reader.focused() != control; ++steps) {
        if (steps == mostSteps)
            return failed(u"Tab does not lead to \"%1\""_s.arg(control));
        if (!step(towards == Towards::Next ? u"Tab"_s : u"shift+Tab"_s))
            return false;
    }
    return true;
}

bool Person::goTo(const QString &item, const QString &arrow)
{
    if (!QTest::qWaitFor([&] { return m_reader.place(item, ScreenReader::Kind::Item).has_value(); }, patience))
        return failed(u"no item \"%1\" is to be seen"_s.arg(item));
    for (int steps = 0; m_reader.focused() != item; ++steps) {
        if (steps == mostSteps)
            return failed(u"%1 does not lead to \"%2\""_s.arg(arrow, item));
        const QString before = m_reader.focused();
        press({arrow});
        if (!QTest::qWaitFor([&] { return m_reader.focused() != before; }, patience))
            return failed(u"%1 does not lead on from \"%2\""_s.arg(arrow, before));
    }
    return true;
}

bool Person::reads(const QString &text)
{
    return QTest::qWaitFor([&] { return m_reader.reads(text); }, patience) ||
           failed(u"\"%1\" is not to be read"_s.arg(text));
}

bool Person::readsBeginning(const QString &beginning)
{
    const auto isThere = [&] {
        const QStringList texts = m_reader.texts();
        return std::any_of(texts.begin(), texts.end(), [&](const QString &each) { return each.startsWith(beginning); });
    };
    return QTest::qWaitFor(isThere, patience) ||
           failed(u"nothing that begins with \"%1\" is to be read"_s.arg(beginning));
}

bool Person::noLongerReads(const QString &text)
{
    return QTest::qWaitFor([&] { return !m_reader.reads(text); }, patience) ||
           failed(u"\"%1\" is still to be read"_s.arg(text));
}

} // namespace kelp::test

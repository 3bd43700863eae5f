#include "capture/MockWindows.h"

#include "ui/Fonts.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace kelp {

namespace {

const QColor ink(31, 37, 48);
const QColor softInk(104, 113, 128);
const QColor faintInk(150, 158, 171);
const QColor line(229, 232, 237);
const QColor paper(255, 255, 255);
const QColor titleBar(243, 245, 247);
const QColor green(43, 168, 123);
const QColor blue(47, 125, 232);

constexpr double titleHeight = 38;
constexpr QSizeF roadmapSize(760, 636);
constexpr QSizeF inboxSize(470, 380);
constexpr double pageMargin = 56;
constexpr double pageWidth = roadmapSize.width() - 2 * pageMargin;
constexpr double noteHeight = 24;

Text words(const QString &text, int size, const QColor &colour = ink, QFont::Weight weight = QFont::Normal)
{
    return kelp::text(text).font(designFont(FontDesign::Default, size, weight)).colour(colour);
}

Element disc(double diameter, const QBrush &brush, const Element &sign = space(0, 0))
{
    return filled(Shape::capsule(), brush, sized({diameter, diameter}, Qt::AlignCenter, sign));
}

/// What stands at the two ends of a line `width` wide.
Element spread(double width, double height, const Element &left, const Element &right)
{
    return horizontal(0, {sized({width - 90, height}, Qt::AlignLeft | Qt::AlignVCenter, left),
                          sized({90, height}, Qt::AlignRight | Qt::AlignVCenter, right)});
}

Element rule(double width)
{
    return filled(Shape::rectangle(), line, space(width, 1));
}

Element window(const QString &tag, const QString &title, const QSizeF &size, const Element &content)
{
    const Element lights =
        horizontal(8, {disc(12, QColor(255, 95, 87)), disc(12, QColor(254, 188, 46)), disc(12, QColor(40, 200, 64))});
    const Element bar =
        layered({sized({size.width(), titleHeight}, Qt::AlignLeft | Qt::AlignVCenter, padded({16, 0, 0, 0}, lights)),
                 words(title, 13, softInk, QFont::DemiBold)});
    const double contentHeight = size.height() - titleHeight - 1;
    const Element inside = vertical(0, {filled(Shape::rounded(11), titleBar, bar), rule(size.width()),
                                        sized({size.width(), contentHeight}, Qt::AlignLeft | Qt::AlignTop, content)});
    // A little smaller than the window and further down, so that nothing but the shadow looks out.
    const Element shadow =
        padded({8, 22, 8, 0}, glowing(44, QColor(6, 24, 44, 190),
                                      filled(Shape::rounded(12), paper, space(size.width() - 16, size.height() - 22))));
    return layered({shadow, tagged(tag, space(size.width(), size.height())),
                    outlined(Shape::rounded(12), QPen(QColor(10, 30, 50, 46), 1), 0.5,
                             filled(Shape::rounded(12), paper, inside))});
}

Element heading(const QString &title)
{
    return padded({0, 20, 0, 2}, words(title, 19, ink, QFont::DemiBold));
}

Element task(const QString &what, bool isDone)
{
    const Element box =
        isDone
            ? symbol(u"checkmark-circle"_s, 18, green)
            : padded({1, 1, 1, 1}, outlined(Shape::capsule(), QPen(QColor(190, 197, 207), 1.6), -0.8, space(16, 16)));
    return horizontal(11, {box, words(what, 15, isDone ? softInk : ink)});
}

Element milestone(const QString &month, const QString &what, double done, const QColor &colour)
{
    constexpr double track = 210;
    const Element bar = filled(
        Shape::capsule(), QColor(234, 238, 242),
        sized({track, 8}, Qt::AlignLeft | Qt::AlignVCenter, filled(Shape::capsule(), colour, space(track * done, 8))));
    return horizontal(0,
                      {sized({110, 24}, Qt::AlignLeft | Qt::AlignVCenter, words(month, 14, softInk, QFont::Medium)),
                       sized({pageWidth - 110 - track, 24}, Qt::AlignLeft | Qt::AlignVCenter, words(what, 15)), bar});
}

struct Mail
{
    QString from;
    QString subject;
    QString preview;
    QString time;
    QColor colour;
    bool isUnread;
};

Element row(const Mail &mail)
{
    constexpr double width = inboxSize.width() - 18 - 8 - 10 - 36 - 12 - 18;
    const Element dot = disc(8, mail.isUnread ? blue : QColor(Qt::transparent));
    const Element face = disc(36, mail.colour, words(mail.from.left(1), 16, Qt::white, QFont::DemiBold));
    const Element lines =
        leading(1, {spread(width, 19, words(mail.from, 14, ink, mail.isUnread ? QFont::Bold : QFont::DemiBold),
                           words(mail.time, 12, faintInk)),
                    words(mail.subject, 13, ink, mail.isUnread ? QFont::Medium : QFont::Normal),
                    words(mail.preview, 12, faintInk)});
    return padded({18, 10, 18, 10}, horizontal(0, {dot, space(10, 1), face, space(12, 1), lines}));
}

} // namespace

Element mockRoadmap()
{
    const Element page = leading(
        9, {words(u"Q4 roadmap"_s, 32, ink, QFont::Bold),
            words(u"Three things that matter before the end of the year."_s, 15, softInk), heading(u"Goals"_s),
            task(u"Open in under a second on old laptops"_s, true), task(u"Import calendars from a file"_s, true),
            task(u"Work offline on the train"_s, false), task(u"Share a draft with one link"_s, false),
            heading(u"Milestones"_s), milestone(u"October"_s, u"Design review"_s, 0.86, green),
            milestone(u"November"_s, u"Beta with twenty teams"_s, 0.42, blue),
            milestone(u"December"_s, u"Release"_s, 0.12, QColor(140, 110, 230)), heading(u"Notes"_s),
            words(u"Keep it calm: fewer screens, larger type, no red badges."_s, 15),
            tagged(desktopTag::note, space(pageWidth, noteHeight))});
    return window(desktopTag::roadmap, u"Q4 roadmap.md"_s, roadmapSize, padded({pageMargin, 34, pageMargin, 0}, page));
}

Element mockNote(const QString &typed, bool caret)
{
    const Element cursor = filled(Shape::capsule(), caret ? blue : QColor(Qt::transparent), space(2, 19));
    const Element note = typed.isEmpty() ? space(0, 19) : Element(words(typed, 15));
    return sized({pageWidth, noteHeight}, Qt::AlignLeft | Qt::AlignTop, horizontal(2, {note, cursor}));
}

Element mockInbox()
{
    const std::vector<Mail> mails{
        {u"Mira Lindqvist"_s, u"Sketches for the review"_s, u"Two directions, I lean towards the second one"_s,
         u"9:52"_s, QColor(236, 112, 99), true},
        {u"Jonas Weber"_s, u"Beta invitations"_s, u"Twenty teams have said yes, the list is in the"_s, u"9:31"_s,
         QColor(72, 149, 219), true},
        {u"Priya Nair"_s, u"Lunch on Thursday?"_s, u"The new place by the harbour has a table at noon"_s, u"8:47"_s,
         QColor(88, 178, 138), false},
        {u"Tomás Ribeiro"_s, u"Re: Startup times"_s, u"Down to 0.8 s on my old machine, and that was"_s, u"8:15"_s,
         QColor(155, 121, 214), false}};
    std::vector<Element> rows;
    for (const Mail &mail : mails) {
        if (!rows.empty())
            rows.push_back(padded({84, 0, 0, 0}, rule(inboxSize.width() - 84)));
        rows.push_back(row(mail));
    }
    return window(desktopTag::inbox, u"Inbox"_s, inboxSize, padded({0, 4, 0, 0}, leading(0, std::move(rows))));
}

} // namespace kelp

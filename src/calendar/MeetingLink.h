#pragma once

#include <QString>

#include <optional>

namespace kelp {

/// A video-call link as it was written in the event. The text is kept because QUrl lower-cases the host and
/// decodes what it deems harmless.
class MeetingLink
{
public:
    /// Nothing where `text` is no strict RFC 3986 reference.
    [[nodiscard]] static std::optional<MeetingLink> fromText(const QString &text);

    [[nodiscard]] const QString &text() const { return m_text; }
    /// "Zoom", "Google Meet", …; nothing for a host we do not know.
    [[nodiscard]] std::optional<QString> provider() const;
    /// Whether it is an https or http link with a host: the only ones that Kelp hands to the desktop.
    [[nodiscard]] bool isWebLink() const;
    /// The zoommtg link that opens the Zoom desktop application; nothing where this is no Zoom conference link.
    [[nodiscard]] std::optional<QString> applicationLink() const;

    friend bool operator==(const MeetingLink &, const MeetingLink &) = default;

private:
    explicit MeetingLink(QString text) : m_text(std::move(text)) {}

    QString m_text;
};

/// The first video-call link in free text, trailing punctuation removed, or nothing. Linear in the text's length.
[[nodiscard]] std::optional<QString> findMeetingLink(const QString &text);

} // namespace kelp

#pragma once

#include "Answer.h"
#include "Parameters.h"
#include "SeedEvent.h"

namespace kelp::sandbox {

/// Which part of a list is wanted.
struct PageRequest
{
    qsizetype offset = 0;
    qsizetype size = 0;

    /// Reads "maxResults" and "pageToken"; the error is the refusal.
    [[nodiscard]] static Result<PageRequest, Answer> read(const Parameters &query, int defaultSize, int largestSize);

    /// `list` with that part of `all` as "items", and with the token of the next page or of the next synchronization.
    [[nodiscard]] QJsonObject cut(QJsonObject list, const QJsonArray &all) const;
};

/// What a request for the events of a calendar asks for.
struct EventsQuery
{
    Window window;
    bool singleEvents = false;
    bool orderByStart = false;
    PageRequest page;

    /// The error is the refusal.
    [[nodiscard]] static Result<EventsQuery, Answer> read(const Parameters &query);
};

/// The refusal of a parameter's value.
[[nodiscard]] Answer invalidValue(const QString &name, const QString &value);

/// A parameter that is "true" or "false", the latter where it is missing; the error is the refusal.
[[nodiscard]] Result<bool, Answer> flag(const Parameters &query, const QString &name);

} // namespace kelp::sandbox

#pragma once

#include <QLoggingCategory>

namespace kelp {

// What Kelp logs, by subsystem; QT_LOGGING_RULES="kelp.*=true" shows all of it. No token, code, secret or meeting title
// is ever logged.
Q_DECLARE_LOGGING_CATEGORY(logAuth)
Q_DECLARE_LOGGING_CATEGORY(logCapture)
Q_DECLARE_LOGGING_CATEGORY(logPlatform)
Q_DECLARE_LOGGING_CATEGORY(logPreferences)
Q_DECLARE_LOGGING_CATEGORY(logSchedule)
Q_DECLARE_LOGGING_CATEGORY(logSound)

} // namespace kelp

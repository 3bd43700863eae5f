#include "base/Logging.h"

namespace kelp {

Q_LOGGING_CATEGORY(logAuth, "kelp.auth", QtInfoMsg)
Q_LOGGING_CATEGORY(logCapture, "kelp.capture", QtInfoMsg)
Q_LOGGING_CATEGORY(logPlatform, "kelp.platform", QtInfoMsg)
Q_LOGGING_CATEGORY(logPreferences, "kelp.preferences", QtInfoMsg)
Q_LOGGING_CATEGORY(logSchedule, "kelp.schedule", QtInfoMsg)
Q_LOGGING_CATEGORY(logSound, "kelp.sound", QtInfoMsg)

} // namespace kelp

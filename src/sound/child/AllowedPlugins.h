#pragma once

namespace kelp {

/// Makes GStreamer forget every plugin that is not needed to read a plain sound file and to play it: what is not there
/// cannot be led to open another file, to reach into the network or to decode a film. Call it after gst_init.
void keepAllowedPlugins();

} // namespace kelp

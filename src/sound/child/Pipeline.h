#pragma once

#include "sound/ChildProtocol.h"

#include <gst/gst.h>

#include <functional>
#include <memory>
#include <string>

namespace kelp {

/// A chain of GStreamer's elements from a file or from bytes to the loudspeaker, or to nowhere:
///
///     filesrc → decodebin ─┐
///     appsrc → wavparse ───┴→ audioconvert → audioresample → volume → autoaudiosink, or fakesink
///
/// The volume is the samples' own: that of the desktop's mixer stays as the user has set it.
class Pipeline
{
public:
    enum class Output { loudspeaker, nowhere };

    explicit Pipeline(Output output);
    ~Pipeline();
    Pipeline(const Pipeline &) = delete;
    Pipeline &operator=(const Pipeline &) = delete;

    /// Looks for something to play on. False where there is none.
    [[nodiscard]] bool openOutput();
    [[nodiscard]] bool readFile(const std::string &path);
    /// A WAV file.
    [[nodiscard]] bool readBytes(GBytes *bytes);
    void setVolume(double volume); ///< 0…1, linear

    /// Plays to the end and calls `started` when the first sound goes out. To nowhere, it ends there.
    [[nodiscard]] ChildStatus run(std::function<void()> started);

private:
    struct Release
    {
        void operator()(void *object) const { gst_object_unref(object); }
    };

    [[nodiscard]] GstElement *add(const char *factory);
    [[nodiscard]] bool isOfOutput(GstObject *object) const;
    static void decodedPadAdded(GstElement *decoder, GstPad *pad, gpointer pipeline);
    static void allPadsAdded(GstElement *decoder, gpointer pipeline);
    static gboolean messageReceived(GstBus *bus, GstMessage *message, gpointer pipeline);
    void handle(GstMessage *message);
    void finish(ChildStatus status);

    Output m_output;
    std::unique_ptr<GstElement, Release> m_pipeline;
    GMainLoop *m_loop;
    GstElement *m_convert = nullptr;
    GstElement *m_volume = nullptr;
    GstElement *m_sink = nullptr;
    std::function<void()> m_started;
    ChildStatus m_status = ChildStatus::done;
};

} // namespace kelp

#include "sound/child/Pipeline.h"

#include <gst/app/gstappsrc.h>

#include <utility>

namespace kelp {

Pipeline::Pipeline(Output output)
    : m_output(output), m_pipeline(gst_pipeline_new(nullptr)), m_loop(g_main_loop_new(nullptr, FALSE))
{
    m_convert = add("audioconvert");
    GstElement *resample = add("audioresample");
    m_volume = add("volume");
    m_sink = add(output == Output::loudspeaker ? "autoaudiosink" : "fakesink");
    if (!m_convert || !resample || !m_volume || !m_sink ||
        !gst_element_link_many(m_convert, resample, m_volume, m_sink, nullptr))
        m_sink = nullptr;
    GstBus *bus = gst_element_get_bus(m_pipeline.get());
    gst_bus_add_watch(bus, messageReceived, this);
    gst_object_unref(bus);
}

Pipeline::~Pipeline()
{
    gst_element_set_state(m_pipeline.get(), GST_STATE_NULL);
    GstBus *bus = gst_element_get_bus(m_pipeline.get());
    gst_bus_remove_watch(bus);
    gst_object_unref(bus);
    g_main_loop_unref(m_loop);
}

/// Null where the plugin is not installed.
GstElement *Pipeline::add(const char *factory)
{
    GstElement *element = gst_element_factory_make(factory, nullptr);
    if (element)
        gst_bin_add(GST_BIN(m_pipeline.get()), element);
    return element;
}

bool Pipeline::openOutput()
{
    if (!m_sink || gst_element_set_state(m_sink, GST_STATE_READY) == GST_STATE_CHANGE_FAILURE)
        return false;
    if (m_output == Output::nowhere)
        return true;
    // Where there is nothing to play on, it takes a sink that swallows everything, and only warns.
    GstBus *bus = gst_element_get_bus(m_pipeline.get());
    GstMessage *warning =
        gst_bus_pop_filtered(bus, static_cast<GstMessageType>(GST_MESSAGE_WARNING | GST_MESSAGE_ERROR));
    gst_object_unref(bus);
    if (warning)
        gst_message_unref(warning);
    return !warning;
}

bool Pipeline::readFile(const std::string &path)
{
    GstElement *source = add("filesrc");
    GstElement *decoder = add("decodebin");
    if (!source || !decoder || !m_sink || !gst_element_link(source, decoder))
        return false;
    GstCaps *sound = gst_caps_new_empty_simple("audio/x-raw");
    g_object_set(source, "location", path.c_str(), nullptr);
    g_object_set(decoder, "caps", sound, "expose-all-streams", FALSE, nullptr);
    gst_caps_unref(sound);
    g_signal_connect(decoder, "pad-added", G_CALLBACK(decodedPadAdded), this);
    g_signal_connect(decoder, "no-more-pads", G_CALLBACK(allPadsAdded), this);
    return true;
}

bool Pipeline::readBytes(GBytes *bytes)
{
    GstElement *source = add("appsrc");
    GstElement *parser = add("wavparse");
    if (!source || !parser || !m_sink || !gst_element_link_many(source, parser, m_convert, nullptr))
        return false;
    g_object_set(source, "format", GST_FORMAT_BYTES, "size", static_cast<gint64>(g_bytes_get_size(bytes)), nullptr);
    return gst_app_src_push_buffer(GST_APP_SRC(source), gst_buffer_new_wrapped_bytes(bytes)) == GST_FLOW_OK &&
           gst_app_src_end_of_stream(GST_APP_SRC(source)) == GST_FLOW_OK;
}

void Pipeline::setVolume(double volume)
{
    if (m_volume)
        g_object_set(m_volume, "volume", volume, nullptr);
}

/// In a thread of GStreamer's. A file with several streams is heard with its first one.
void Pipeline::decodedPadAdded(GstElement *, GstPad *pad, gpointer pipeline)
{
    GstPad *sink = gst_element_get_static_pad(static_cast<Pipeline *>(pipeline)->m_convert, "sink");
    if (!gst_pad_is_linked(sink))
        gst_pad_link(pad, sink);
    gst_object_unref(sink);
}

/// In a thread of GStreamer's.
void Pipeline::allPadsAdded(GstElement *decoder, gpointer pipeline)
{
    GstPad *sink = gst_element_get_static_pad(static_cast<Pipeline *>(pipeline)->m_convert, "sink");
    if (!gst_pad_is_linked(sink))
        GST_ELEMENT_ERROR(decoder, STREAM, WRONG_TYPE, (nullptr), ("no stream of sound"));
    gst_object_unref(sink);
}

ChildStatus Pipeline::run(std::function<void()> started)
{
    m_started = std::move(started);
    const bool plays = m_output == Output::loudspeaker;
    if (gst_element_set_state(m_pipeline.get(), plays ? GST_STATE_PLAYING : GST_STATE_PAUSED) ==
        GST_STATE_CHANGE_FAILURE)
        return ChildStatus::unusable;
    g_main_loop_run(m_loop);
    return m_status;
}

gboolean Pipeline::messageReceived(GstBus *, GstMessage *message, gpointer pipeline)
{
    static_cast<Pipeline *>(pipeline)->handle(message);
    return G_SOURCE_CONTINUE;
}

void Pipeline::handle(GstMessage *message)
{
    const bool isOfPipeline = GST_MESSAGE_SRC(message) == GST_OBJECT(m_pipeline.get());
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
        finish(isOfOutput(GST_MESSAGE_SRC(message)) ? ChildStatus::noOutput : ChildStatus::unusable);
        break;
    case GST_MESSAGE_EOS:
        // To nowhere, the end comes before the first sample only where there is none.
        finish(m_output == Output::nowhere ? ChildStatus::unusable : ChildStatus::done);
        break;
    case GST_MESSAGE_ASYNC_DONE:
        if (m_output == Output::nowhere)
            finish(ChildStatus::done);
        break;
    case GST_MESSAGE_STATE_CHANGED: {
        GstState state{};
        gst_message_parse_state_changed(message, nullptr, &state, nullptr);
        if (isOfPipeline && state == GST_STATE_PLAYING && m_started)
            std::exchange(m_started, nullptr)();
        break;
    }
    default:
        break;
    }
}

bool Pipeline::isOfOutput(GstObject *object) const
{
    return m_sink && (object == GST_OBJECT(m_sink) || gst_object_has_as_ancestor(object, GST_OBJECT(m_sink)));
}

void Pipeline::finish(ChildStatus status)
{
    m_status = status;
    g_main_loop_quit(m_loop);
}

} // namespace kelp

#include "sound/child/AllowedPlugins.h"

#include <gst/gst.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kelp {

namespace {

constexpr std::string_view allowed[]{// the machinery
                                     "app", "audioconvert", "audioresample", "autodetect", "coreelements", "playback",
                                     "staticelements", "typefindfunctions", "volume",
                                     // what it is played on
                                     "alsa", "pipewire", "pulseaudio",
                                     // containers of sound
                                     "aiff", "apetag", "audioparsers", "auparse", "id3demux", "id3tag", "isomp4",
                                     "matroska", "ogg", "wavparse",
                                     // decoders
                                     "alaw", "faad", "fdkaac", "flac", "gsm", "mad", "mpg123", "mulaw", "musepack",
                                     "opus", "opusparse", "speex", "vorbis", "wavpack"};

/// Has decoders for nearly everything, of which those of sounds are wanted.
constexpr std::string_view libav = "libav";

bool isAudioDecoder(GstPluginFeature *feature)
{
    return GST_IS_ELEMENT_FACTORY(feature) &&
           gst_element_factory_list_is_type(GST_ELEMENT_FACTORY(feature),
                                            GST_ELEMENT_FACTORY_TYPE_DECODER | GST_ELEMENT_FACTORY_TYPE_MEDIA_AUDIO);
}

void keepAudioDecoders(GstRegistry *registry, const char *plugin)
{
    GList *features = gst_registry_get_feature_list_by_plugin(registry, plugin);
    for (const GList *each = features; each; each = each->next) {
        if (!isAudioDecoder(GST_PLUGIN_FEATURE(each->data)))
            gst_registry_remove_feature(registry, GST_PLUGIN_FEATURE(each->data));
    }
    gst_plugin_feature_list_free(features);
}

/// libav ranks as high, and takes 200 ms to load.
void preferSmallDecoder(GstRegistry *registry)
{
    if (GstPluginFeature *decoder = gst_registry_lookup_feature(registry, "mpg123audiodec")) {
        gst_plugin_feature_set_rank(decoder, GST_RANK_PRIMARY);
        gst_object_unref(decoder);
    }
}

} // namespace

void keepAllowedPlugins()
{
    GstRegistry *registry = gst_registry_get();
    GList *plugins = gst_registry_get_plugin_list(registry);
    for (const GList *each = plugins; each; each = each->next) {
        auto *plugin = GST_PLUGIN(each->data);
        const std::string_view name = gst_plugin_get_name(plugin);
        if (name == libav)
            keepAudioDecoders(registry, gst_plugin_get_name(plugin));
        else if (std::find(std::begin(allowed), std::end(allowed), name) == std::end(allowed))
            gst_registry_remove_plugin(registry, plugin);
    }
    gst_plugin_list_free(plugins);
    preferSmallDecoder(registry);
}

} // namespace kelp

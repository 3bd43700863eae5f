#include "sound/child/Commands.h"

#include "sound/child/GObjectPointer.h"
#include "sound/child/Pipeline.h"
#include "sound/child/SoundFile.h"
#include "sound/child/SoundTheme.h"
#include "sound/child/Surroundings.h"

#include <cstdio>
#include <unistd.h>

namespace kelp {

namespace {

/// Seconds of computing. What decodes a sound that long and has not begun to play it never will.
constexpr unsigned longestImport = 20;
constexpr std::size_t mostBytes = std::size_t{64} << 20;

void report()
{
    std::fputs(childReport, stdout);
    std::fflush(stdout);
}

struct UnrefBytes
{
    void operator()(GBytes *bytes) const { g_bytes_unref(bytes); }
};
using Bytes = std::unique_ptr<GBytes, UnrefBytes>;

/// All of standard input; null where that is too much.
Bytes readInput()
{
    GByteArray *all = g_byte_array_new();
    guint8 buffer[1 << 16];
    ssize_t got = 0;
    while (all->len <= mostBytes && (got = read(STDIN_FILENO, buffer, sizeof buffer)) > 0)
        g_byte_array_append(all, buffer, static_cast<guint>(got));
    Bytes bytes(g_byte_array_free_to_bytes(all));
    if (got != 0)
        bytes.reset();
    return bytes;
}

/// Opened before the output, which may take a while.
std::unique_ptr<SoundFile> fileOf(const ChildOptions &options)
{
    const std::optional<std::string> ofTheme = options.name ? themeSound(*options.name) : std::nullopt;
    if (!ofTheme && !options.file)
        return nullptr;
    auto file = std::make_unique<SoundFile>(ofTheme ? ofTheme->c_str() : options.file->c_str());
    return file;
}

} // namespace

ChildStatus play(const ChildOptions &options)
{
    const std::unique_ptr<SoundFile> file = fileOf(options);
    const Bytes bytes = options.bytes ? readInput() : Bytes();
    if (file ? !file->isOpen() : !bytes)
        return ChildStatus::unusable;
    Pipeline pipeline(Pipeline::Output::loudspeaker);
    if (!pipeline.openOutput())
        return ChildStatus::noOutput;
    // Only now: a sound server that the library had to start would keep the limits.
    renounceRights();
    limitResources(0);
    pipeline.setVolume(options.volume);
    if (file ? !pipeline.readFile(file->path()) : !pipeline.readBytes(bytes.get()))
        return ChildStatus::unusable;
    return pipeline.run(report);
}

ChildStatus import(const ChildOptions &options)
{
    renounceRights();
    limitResources(longestImport);
    const SoundFile file(options.file->c_str());
    if (!file.isOpen())
        return ChildStatus::unusable;
    {
        Pipeline pipeline(Pipeline::Output::nowhere);
        if (!pipeline.openOutput() || !pipeline.readFile(file.path()))
            return ChildStatus::unusable;
        if (const ChildStatus status = pipeline.run({}); status != ChildStatus::done)
            return status;
    }
    report();
    return file.copyTo(options.to->c_str()) ? ChildStatus::done : ChildStatus::notCopied;
}

ChildStatus warm()
{
    // Makes the elements, and with that loads their plugins.
    Pipeline pipeline(Pipeline::Output::nowhere);
    return pipeline.openOutput() ? ChildStatus::done : ChildStatus::unusable;
}

} // namespace kelp

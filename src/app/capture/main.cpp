// kelp-capture: what "kelp --snapshot" and "kelp --record" become. It gets Kelp's own arguments.

#include "app/CommandLine.h"
#include "app/capture/CaptureRun.h"

#include <cstdio>

using namespace kelp;

int main(int argc, char **argv)
{
    const CommandLine commandLine = CommandLine::parse(argc, argv);
    if (commandLine.mode != CommandLine::Mode::snapshot && commandLine.mode != CommandLine::Mode::record) {
        std::fputs("This program belongs to Kelp: run kelp --snapshot or kelp --record.\n", stderr);
        return 2;
    }
    return runCapture(argv[0], commandLine);
}

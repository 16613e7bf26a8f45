// lumivault-cli targets: what can be scanned.
#include "cli/Command.h"

#include <ostream>

namespace {

ExitStatus Run(const CommandOptions& options, CommandStreams& streams)
{
    if (options.json) {
        streams.out << "{\"targets\":[]}\n";
    }
    if (!options.quiet) {
        streams.err
            << "Disks and volumes are not listed yet; give the other commands the path of an image "
               "file or of a block device, which 'lsblk' shows.\n";
    }
    return ExitStatus::Done;
}

}  // namespace

const Command TargetsCommand = {"targets", "show what can be scanned", "  lumivault-cli targets\n",
                                &AddJsonOption, &Run};

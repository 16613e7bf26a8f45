// What a user means by the name of a target: a number of the list, a device node, an image file.
#pragma once

#include "session/ScanTarget.h"

#include <string>
#include <variant>

class TargetLister;

using ResolvedTarget = std::variant<ScanTarget, TargetRefusal>;

// A partition becomes a range of its disk, an image gets the first image's id; IMAGE#3 is a part of an image, DEVICE#3 one of
// a disk. Nothing is opened for reading but an image;
// that the target is there is all that is known afterwards. A number (#3) is looked for in a new list.
ResolvedTarget ResolveTarget(const std::string& text, TargetLister& lister);

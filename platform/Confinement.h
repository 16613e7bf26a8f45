// What a program that handles hostile files gives up before it touches one. Nothing of it can be taken back, by the program or by
// whatever takes it over.
#pragma once

#include "platform/ResultCode.h"

#include <cstdint>

// Closes all but the three standard descriptors: what a program was started with by mistake is not there to be misused.
void CloseInheritedDescriptors();

// The whole process, all of its threads: works on what is open, in memory that it can have no more of than mostBytes above
// what it holds now. No file is opened, no connection made, no program or process started, nobody else is sent a signal; such
// calls fail with EPERM. Messages are sent and taken by the standard input alone. It leaves no core. Libraries that are loaded
// when they are first needed have to be loaded before.
[[nodiscard]] ResultCode ConfineToWhatIsOpen(std::uint64_t mostBytes);

// The calling thread, what it starts as threads, and every program that these start: no sockets (EACCES) but those that stay
// within this computer. Other threads of the process are left as they are.
[[nodiscard]] ResultCode RefuseNetwork();

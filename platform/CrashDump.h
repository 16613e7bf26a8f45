// The text that a process leaves behind when it crashes. Only for the fault handler: everything here may be called inside a
// signal handler, but for PrepareCrashDump().
#pragma once

#include <csignal>
#include <filesystem>

// Does beforehand what a signal handler may not: finds the build's mark, the folder, the time zone.
void PrepareCrashDump(const std::filesystem::path& otherFolder);
// What an exception that nobody caught said; it stands in the dump.
void NoteUncaughtException(const char* what);
// "2026-05-07-08-09-10-123.dmp" of the local time: signal, registers, frames as program and offset, the map of the memory.
void WriteCrashDump(int signalNumber, const siginfo_t& details, const void* context);

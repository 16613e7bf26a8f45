// A run of the program with windows, from the showing of the first one to what is cleared away after the last.
#pragma once

#include "app/process/SingleInstance.h"
#include "app/wizard/MainWnd.h"

inline constexpr char ProgramTitle[] = "Orvanta Lumivault";

// Returns when the user has closed the window, or a signal has asked the program to end: whatever runs then is ended without
// a question. The images are loaded at its beginning.
void RunProgram(SingleInstance& instance,
                Session& session,
                MainServices services,
                const std::vector<std::filesystem::path>& images = {});

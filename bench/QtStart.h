// Qt for the benches of windows: once for the program, without a screen.
#pragma once

void StartQt();

// The decoder of the library, with the settings that this program needs. Included by PngImage.cpp alone.
#pragma once

// The library is set up by macros, here and where its code is compiled.
// NOLINTBEGIN(cppcoreguidelines-macro-usage)
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#define STBI_NO_FAILURE_STRINGS
// NOLINTEND(cppcoreguidelines-macro-usage)
#include <stb/stb_image.h>

# What has windows needs Qt, a decoder and zlib for the skin, and curl for the maker's site; without one of them the command line is
# built all the same.
find_package(Qt6 6.4 QUIET COMPONENTS Widgets)
find_package(ZLIB QUIET)
find_package(CURL 7.85 QUIET)
find_path(STB_FOLDER stb/stb_image.h)
set(desktop_found OFF)
if(Qt6_FOUND AND ZLIB_FOUND AND CURL_FOUND AND STB_FOLDER)
    set(desktop_found ON)
endif()
option(LUMIVAULT_DESKTOP "Build what has windows (needs Qt 6, stb, zlib and curl)" ${desktop_found})
if(LUMIVAULT_DESKTOP AND NOT desktop_found)
    message(FATAL_ERROR "LUMIVAULT_DESKTOP needs qt6-base-dev, libstb-dev, libcurl4-openssl-dev and zlib1g-dev: tools/setup test installs them.")
endif()
if(LUMIVAULT_DESKTOP AND CMAKE_INTERPROCEDURAL_OPTIMIZATION)
    # Qt's hash tables, looked at through whole programs, seem to take sizes that they never do.
    add_link_options(-Wno-alloc-size-larger-than)
endif()

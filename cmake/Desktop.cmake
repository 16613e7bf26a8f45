# The windows need Qt; without it the command line is built all the same.
find_package(Qt6 6.4 QUIET COMPONENTS Widgets)
option(LUMIVAULT_DESKTOP "Build what has windows (needs Qt 6, stb and zlib)" ${Qt6_FOUND})
if(LUMIVAULT_DESKTOP)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
    find_package(ZLIB REQUIRED)
endif()

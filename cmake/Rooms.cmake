# A room is one CMake target. SOURCES lists every file of it, headers too; USES lists every room that
# it may include. FACE marks one that people see: it includes no room but those that it names itself, not what these use.
# tools/check-rooms reads these calls, so they are the one place where the map stands.
add_library(room_flags INTERFACE)
target_compile_features(room_flags INTERFACE cxx_std_20)
target_compile_options(room_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
    $<$<BOOL:${LUMIVAULT_WERROR}>:-Werror>)
target_include_directories(room_flags INTERFACE ${PROJECT_SOURCE_DIR})

function(room_library)
    cmake_parse_arguments(ROOM "FACE" "NAME" "SOURCES;USES;LIBRARIES" ${ARGN})
    if(ROOM_SOURCES MATCHES "\\.cpp")
        add_library(${ROOM_NAME} STATIC ${ROOM_SOURCES})
        target_link_libraries(${ROOM_NAME} PUBLIC room_flags ${ROOM_USES} PRIVATE ${ROOM_LIBRARIES})
    else()
        add_library(${ROOM_NAME} INTERFACE)  # headers alone
        target_link_libraries(${ROOM_NAME} INTERFACE room_flags ${ROOM_USES})
    endif()
endfunction()

# The main of a program: a room of its own, which nothing can include.
function(room_program)
    cmake_parse_arguments(ROOM "FACE" "NAME" "SOURCES;USES" ${ARGN})
    add_executable(${ROOM_NAME} ${ROOM_SOURCES})
    target_link_libraries(${ROOM_NAME} PRIVATE room_flags ${ROOM_USES})
endfunction()

# One fuzz target a reader: fuzz_target(NAME BootSectorFuzz USES engines) builds fuzz/BootSectorFuzz.cpp.
# With LUMIVAULT_FUZZ it is a libFuzzer program; otherwise it gets a main that replays fuzz/corpus/<name>/, and
# CTest runs that.
function(fuzz_target)
    cmake_parse_arguments(FUZZ "" "NAME" "SOURCES;USES" ${ARGN})
    add_executable(${FUZZ_NAME} ${FUZZ_NAME}.cpp ${FUZZ_SOURCES})
    target_link_libraries(${FUZZ_NAME} PRIVATE room_flags ${FUZZ_USES})
    if(LUMIVAULT_FUZZ)
        target_link_options(${FUZZ_NAME} PRIVATE -fsanitize=fuzzer)
    else()
        target_sources(${FUZZ_NAME} PRIVATE ReplayMain.cpp)
        add_test(NAME ${FUZZ_NAME}.ReplaysItsCorpus
            COMMAND ${FUZZ_NAME} ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${FUZZ_NAME})
    endif()
endfunction()

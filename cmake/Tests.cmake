# A test program a room: room_test(NAME fat_tests SOURCES ... USES fat). Its cases show up in CTest one by one. SERIAL is for
# those that use what the machine has only once, such as its list of disks: no other test runs beside them. MAIN is the file of a main of their own.
include(GoogleTest)

# What the thread sanitizer is not to report: frames of libraries that are not built with it.
set(sanitizer_environment "")
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize=thread")
    set(sanitizer_environment ENVIRONMENT "TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tools/tsan-qt.supp")
endif()

function(room_test)
    cmake_parse_arguments(TEST "SERIAL" "NAME;MAIN" "SOURCES;USES" ${ARGN})
    set(serial FALSE)
    if(TEST_SERIAL)
        set(serial TRUE)
    endif()
    add_executable(${TEST_NAME} ${TEST_SOURCES} ${TEST_MAIN})
    target_link_libraries(${TEST_NAME} PRIVATE room_flags ${TEST_USES} GTest::gtest)
    if(NOT TEST_MAIN)
        target_link_libraries(${TEST_NAME} PRIVATE GTest::gtest_main)
    endif()
    gtest_discover_tests(${TEST_NAME} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300 RUN_SERIAL ${serial}
        ${sanitizer_environment})
endfunction()

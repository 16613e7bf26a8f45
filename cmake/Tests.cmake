# A test program a room: room_test(NAME fat_tests SOURCES ... USES fat). Its cases show up in CTest one by one.
include(GoogleTest)

function(room_test)
    cmake_parse_arguments(TEST "" "NAME" "SOURCES;USES" ${ARGN})
    add_executable(${TEST_NAME} ${TEST_SOURCES})
    target_link_libraries(${TEST_NAME} PRIVATE room_flags ${TEST_USES} GTest::gtest GTest::gtest_main)
    gtest_discover_tests(${TEST_NAME} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

# kestrel_add_test(NAME name TIER unit|widget|e2e SOURCES ... [LIBS ...])
#
# unit tests need no display; widget tests run on Qt's offscreen platform; e2e
# tests start their own Xvfb, window manager and session bus (tests/support).
function(kestrel_add_test)
    cmake_parse_arguments(ARG "" "NAME;TIER;TIMEOUT" "SOURCES;LIBS" ${ARGN})
    add_executable(${ARG_NAME} ${ARG_SOURCES})
    if(ARG_TIER STREQUAL "widget")
        set(test_main kestrel_test_main_gui)
    else()
        set(test_main kestrel_test_main_core)
    endif()
    target_link_libraries(${ARG_NAME} PRIVATE kestrel_settings kestrel_test_support ${test_main}
                          GTest::gtest ${ARG_LIBS})
    add_test(NAME ${ARG_NAME} COMMAND ${ARG_NAME})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set(environment
        "QT_QPA_PLATFORM=offscreen"
        "ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1"
        "G_SLICE=always-malloc"
        "LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan.supp"
        "KESTREL_TEST_BINARY_DIR=${PROJECT_BINARY_DIR}"
        "KESTREL_TEST_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
    set_tests_properties(${ARG_NAME} PROPERTIES
        LABELS ${ARG_TIER}
        TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "${environment}")
    if(ARG_TIER STREQUAL "e2e")
        # e2e tests share one core with the program under test: run them one at a time.
        set_tests_properties(${ARG_NAME} PROPERTIES RUN_SERIAL TRUE)
    endif()
endfunction()

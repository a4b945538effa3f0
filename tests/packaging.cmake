# What is installed, and the Debian packages as lintian sees them.
add_test(NAME packaging_install_layout_test
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/packaging/install_layout_test.sh ${PROJECT_BINARY_DIR})
set_tests_properties(packaging_install_layout_test PROPERTIES LABELS unit TIMEOUT 300)

kestrel_add_test(NAME e2e_lifecycle_test TIER e2e TIMEOUT 240
    SOURCES e2e/lifecycle_test.cpp LIBS kestrel_core Qt6::DBus)
target_compile_definitions(e2e_lifecycle_test PRIVATE
    KESTREL_PROGRAM="$<TARGET_FILE:kestrel-menu>")
add_dependencies(e2e_lifecycle_test kestrel-menu)

kestrel_add_test(NAME core_lists_test TIER unit
    SOURCES unit/lists_test.cpp LIBS kestrel_core kestrel_doubles)
kestrel_add_test(NAME core_errors_test TIER unit
    SOURCES unit/errors_test.cpp LIBS kestrel_core kestrel_doubles)
kestrel_add_test(NAME core_alias_test TIER unit
    SOURCES unit/alias_test.cpp LIBS kestrel_core)
kestrel_add_test(NAME core_openatlogin_test TIER unit
    SOURCES unit/openatlogin_test.cpp LIBS kestrel_core kestrel_doubles)
kestrel_add_test(NAME core_desktopentry_test TIER unit
    SOURCES unit/desktopentry_test.cpp LIBS kestrel_core)

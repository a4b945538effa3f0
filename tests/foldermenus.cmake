kestrel_add_test(NAME foldermenu_entries_test TIER unit
    SOURCES unit/foldermenu_entries_test.cpp LIBS kestrel_core)
kestrel_add_test(NAME foldermenu_build_test TIER widget
    SOURCES widget/foldermenu_build_test.cpp LIBS kestrel_gui)
kestrel_add_test(NAME foldermenu_cache_test TIER widget
    SOURCES widget/foldermenu_cache_test.cpp LIBS kestrel_gui)

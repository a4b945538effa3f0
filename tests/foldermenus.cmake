kestrel_add_test(NAME foldermenu_entries_test TIER unit
    SOURCES unit/foldermenu_entries_test.cpp LIBS kestrel_core)
kestrel_add_test(NAME foldermenu_widget_test TIER widget
    SOURCES widget/foldermenu_widget_test.cpp LIBS kestrel_gui)

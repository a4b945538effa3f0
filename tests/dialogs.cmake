kestrel_add_test(NAME dialogs_test TIER widget
    SOURCES widget/dialogs_test.cpp LIBS kestrel_gui kestrel_doubles Qt6::Test)

kestrel_add_test(NAME prefs_file_test TIER unit
    SOURCES unit/prefsfile_test.cpp LIBS kestrel_core kestrel_doubles)

kestrel_add_test(NAME prefs_file_test TIER unit
    SOURCES unit/prefsfile_test.cpp LIBS kestrel_core kestrel_doubles)
kestrel_add_test(NAME prefs_corpus_replay_test TIER unit
    SOURCES fuzz/corpus_replay_test.cpp fuzz/prefsfile_target.cpp LIBS kestrel_core kestrel_doubles)
target_compile_definitions(prefs_corpus_replay_test PRIVATE
    KESTREL_PREFS_CORPUS="${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus/prefsfile")

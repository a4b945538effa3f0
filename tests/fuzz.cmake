# The corpora of the fuzz targets (tests/fuzz), every kept input replayed.
file(GLOB fuzz_targets CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/*_target.cpp)
kestrel_add_test(NAME fuzz_corpus_replay_test TIER unit
    SOURCES fuzz/corpus_replay_test.cpp ${fuzz_targets} LIBS kestrel_gui kestrel_doubles)
target_compile_definitions(fuzz_corpus_replay_test PRIVATE
    KESTREL_FUZZ_CORPORA="${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus")

# The file manager requests, application lookup and the choosers.
kestrel_add_test(NAME finder_events_test TIER unit
    SOURCES unit/finderevents_test.cpp LIBS kestrel_core kestrel_doubles)

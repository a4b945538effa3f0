# Choosing items: the file manager requests, launchers and their trust, what a
# failed choice says, application lookup and the choosers.
kestrel_add_test(NAME finder_events_test TIER unit
    SOURCES unit/finderevents_test.cpp LIBS kestrel_gui kestrel_doubles)
kestrel_add_test(NAME finder_applications_test TIER unit
    SOURCES unit/finderapplications_test.cpp LIBS kestrel_gui kestrel_doubles)
kestrel_add_test(NAME finder_choosers_test TIER widget
    SOURCES widget/finderchoosers_test.cpp LIBS kestrel_gui kestrel_doubles)

# A file manager for the tests: owns org.freedesktop.FileManager1 and records
# every call; with --program, records how it was started, as an application.
add_executable(kestrel_fake_filemanager fakes/fakefilemanager.cpp)
target_link_libraries(kestrel_fake_filemanager PRIVATE kestrel_settings Qt6::Core Qt6::DBus)

kestrel_add_test(NAME finder_filemanager_test TIER e2e TIMEOUT 300
    SOURCES e2e/finder_filemanager_test.cpp LIBS Qt6::DBus)
add_dependencies(finder_filemanager_test kestrel_fake_filemanager kestrel-menu)
target_compile_definitions(finder_filemanager_test PRIVATE
    KESTREL_FAKE_FILEMANAGER="$<TARGET_FILE:kestrel_fake_filemanager>"
    KESTREL_PROGRAM="$<TARGET_FILE:kestrel-menu>")

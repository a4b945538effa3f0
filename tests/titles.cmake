# Titles: placement, drawing and behaviour on the offscreen platform with the
# display's answers played by doubles; the real thing under Xvfb and openbox.
foreach(name placement drawing events)
    kestrel_add_test(NAME titles_${name}_test TIER widget
        SOURCES widget/titles_${name}_test.cpp widget/titles_fixture.h
        LIBS kestrel_gui kestrel_doubles)
endforeach()

add_executable(titles_window e2e/titles_window.cpp)
target_link_libraries(titles_window PRIVATE kestrel_settings Qt6::Widgets PkgConfig::XCB)

kestrel_add_test(NAME titles_desktop_test TIER e2e TIMEOUT 240
    SOURCES e2e/titles_desktop_test.cpp LIBS Qt6::Gui)
target_compile_definitions(titles_desktop_test PRIVATE
    KESTREL_PROGRAM="$<TARGET_FILE:kestrel-menu>"
    KESTREL_TITLES_WINDOW="$<TARGET_FILE:titles_window>")
add_dependencies(titles_desktop_test kestrel-menu titles_window)

# Drops on a title: the handlers with hand-made drags, and the window's drag events.
foreach(name handlers window)
    kestrel_add_test(NAME titles_drop_${name}_test TIER widget
        SOURCES widget/titles_drop_${name}_test.cpp widget/titles_fixture.h
        LIBS kestrel_gui kestrel_doubles)
endforeach()

# A real drag from another program onto the running program's title.
add_executable(titles_drop_source e2e/titles_drop_source.cpp)
target_link_libraries(titles_drop_source PRIVATE kestrel_settings Qt6::Widgets)

kestrel_add_test(NAME titles_drop_desktop_test TIER e2e TIMEOUT 240
    SOURCES e2e/titles_drop_desktop_test.cpp LIBS Qt6::Gui)
target_compile_definitions(titles_drop_desktop_test PRIVATE
    KESTREL_PROGRAM="$<TARGET_FILE:kestrel-menu>"
    KESTREL_DROP_SOURCE="$<TARGET_FILE:titles_drop_source>")
add_dependencies(titles_drop_desktop_test kestrel-menu titles_drop_source)

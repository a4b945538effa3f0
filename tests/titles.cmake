# Titles and the desktop's look: placement, drawing, behaviour, drops and the
# look on the offscreen platform with the display's answers played by doubles;
# the real thing under Xvfb and openbox.
foreach(name titles titles_drawing titles_drops desktoplook)
    kestrel_add_test(NAME ${name}_test TIER widget
        SOURCES widget/${name}_test.cpp widget/titles_fixture.h
        LIBS kestrel_gui kestrel_doubles Qt6::Test Qt6::Svg)
endforeach()

add_executable(titles_window e2e/titles_window.cpp)
target_link_libraries(titles_window PRIVATE kestrel_settings Qt6::Widgets PkgConfig::XCB)

# The screen is resized with xrandr to a mode the test teaches the X server.
pkg_check_modules(XCB_RANDR REQUIRED IMPORTED_TARGET xcb-randr)
kestrel_add_test(NAME titles_desktop_test TIER e2e TIMEOUT 300
    SOURCES e2e/titles_desktop_test.cpp e2e/titles_desktop.h
    LIBS Qt6::Gui Qt6::DBus PkgConfig::XCB PkgConfig::XCB_RANDR)
target_compile_definitions(titles_desktop_test PRIVATE
    KESTREL_PROGRAM="$<TARGET_FILE:kestrel-menu>"
    KESTREL_TITLES_WINDOW="$<TARGET_FILE:titles_window>")
add_dependencies(titles_desktop_test kestrel-menu titles_window)

# A real drag from another program onto the running program's title.
add_executable(titles_drop_source e2e/titles_drop_source.cpp)
target_link_libraries(titles_drop_source PRIVATE kestrel_settings Qt6::Widgets)

kestrel_add_test(NAME titles_drop_desktop_test TIER e2e TIMEOUT 240
    SOURCES e2e/titles_drop_desktop_test.cpp e2e/titles_desktop.h LIBS Qt6::Gui)
target_compile_definitions(titles_drop_desktop_test PRIVATE
    KESTREL_PROGRAM="$<TARGET_FILE:kestrel-menu>"
    KESTREL_DROP_SOURCE="$<TARGET_FILE:titles_drop_source>")
add_dependencies(titles_drop_desktop_test kestrel-menu titles_drop_source)

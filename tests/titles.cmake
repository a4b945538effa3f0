# Titles and the desktop's look: placement, drawing, behaviour, drops and the
# look on the offscreen platform with the display's answers played by doubles;
# the real thing under Xvfb and openbox.
foreach(name titles desktoplook)
    kestrel_add_test(NAME ${name}_test TIER widget
        SOURCES widget/${name}_test.cpp
        LIBS kestrel_gui kestrel_doubles Qt6::Test Qt6::Svg)
endforeach()

# Docks, ordinary windows, drag sources and a drop target for the program to
# meet, here and in the click tests.
add_executable(titles_window e2e/titles_window.cpp)
target_link_libraries(titles_window PRIVATE kestrel_settings Qt6::Widgets)

# The screen is resized with xrandr to a mode the test teaches the X server.
kestrel_add_test(NAME titles_desktop_test TIER e2e TIMEOUT 300
    SOURCES e2e/titles_desktop_test.cpp
    LIBS Qt6::Gui Qt6::DBus)
target_compile_definitions(titles_desktop_test PRIVATE
    KESTREL_PROGRAM="$<TARGET_FILE:kestrel-menu>"
    KESTREL_TITLES_WINDOW="$<TARGET_FILE:titles_window>")
add_dependencies(titles_desktop_test kestrel-menu titles_window)

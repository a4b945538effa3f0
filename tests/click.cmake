# Choosing menu items: the menus of a click walked with keys on the offscreen
# platform, and the real program on a private desktop.
kestrel_add_test(NAME foldermenu_click_test TIER widget
    SOURCES widget/foldermenu_click_test.cpp LIBS kestrel_gui kestrel_doubles)

kestrel_add_test(NAME click_desktop_test TIER e2e TIMEOUT 300
    SOURCES e2e/click_desktop_test.cpp LIBS Qt6::Core)
target_compile_definitions(click_desktop_test PRIVATE
    KESTREL_PROGRAM="$<TARGET_FILE:kestrel-menu>"
    KESTREL_FAKE_FILEMANAGER="$<TARGET_FILE:kestrel_fake_filemanager>"
    KESTREL_TITLES_WINDOW="$<TARGET_FILE:titles_window>")
add_dependencies(click_desktop_test kestrel-menu kestrel_fake_filemanager titles_window)

# Choosing menu items: the menus of a click walked with keys and the mouse on
# the offscreen platform, and the real program on a private desktop.
kestrel_add_test(NAME foldermenu_click_test TIER widget
    SOURCES widget/foldermenu_click_test.cpp LIBS kestrel_gui kestrel_doubles)

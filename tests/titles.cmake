# Titles: placement, drawing and behaviour on the offscreen platform with the
# display's answers played by doubles; the real thing under Xvfb and openbox.
foreach(name placement drawing events)
    kestrel_add_test(NAME titles_${name}_test TIER widget
        SOURCES widget/titles_${name}_test.cpp widget/titles_fixture.h
        LIBS kestrel_gui kestrel_doubles)
endforeach()

# A Debian package of the installed files: `make package`.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kestrel-menu)
set(CPACK_PACKAGE_VENDOR "Kestrel Menu developers")
set(CPACK_PACKAGE_CONTACT "Kestrel Menu developers <kestrel-menu@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Folder menus at the left end of the top bar")
set(CPACK_PACKAGE_DESCRIPTION
    "Kestrel Menu puts a small icon title at the left end of the top bar. Clicking it\n\
pops up a hierarchical menu built from a folder; choosing an item asks the desktop's\n\
file manager to open it. Files dropped on the title become links in its folder.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt's X11 platform plugin is loaded at run time, so no library dependency names it.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "hicolor-icon-theme, adwaita-icon-theme")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "thunar | nautilus | nemo | caja | dolphin")
include(CPack)

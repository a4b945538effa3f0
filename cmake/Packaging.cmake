# A Debian package of the installed files, as a distribution would ship it:
# `make package` gives kestrel-menu_<version>_<arch>.deb and, beside it, the
# debug symbols in kestrel-menu-dbgsym_<version>_<arch>.ddeb.

# Where the project lives (the project's HOMEPAGE_URL, which the About box
# also shows); the metainfo's links and screenshots point there.
set(KESTREL_HOMEPAGE "${PROJECT_HOMEPAGE_URL}")
set(KESTREL_MAINTAINER
    "Kestrel Menu maintainers <maintainers@users.noreply.c-seed-2ba2a4df.example>")

# What Debian policy asks of every package: the copyright file, the changelog
# and the manual page, the last two compressed without a timestamp.
set(package_dir ${PROJECT_BINARY_DIR}/package)
set(package_doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/kestrel-menu)
add_custom_command(
    OUTPUT ${package_dir}/changelog.gz ${package_dir}/kestrel-menu.1.gz
    COMMAND ${CMAKE_COMMAND} -E make_directory ${package_dir}
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/resources/package/changelog > ${package_dir}/changelog.gz
    COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/resources/desktop/kestrel-menu.1
            > ${package_dir}/kestrel-menu.1.gz
    DEPENDS ${PROJECT_SOURCE_DIR}/resources/package/changelog
            ${PROJECT_SOURCE_DIR}/resources/desktop/kestrel-menu.1
    VERBATIM)
add_custom_target(kestrel_package_docs ALL
    DEPENDS ${package_dir}/changelog.gz ${package_dir}/kestrel-menu.1.gz)
install(FILES resources/package/copyright ${package_dir}/changelog.gz DESTINATION ${package_doc_dir})
install(FILES ${package_dir}/kestrel-menu.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)

# AppStream metainfo, so that software centres can list the program.
set(KESTREL_APPSTREAM_ID "example.kestrelmenu.KestrelMenu")
set(KESTREL_SCREENSHOTS "${KESTREL_HOMEPAGE}/raw/main/docs/images")
configure_file(resources/desktop/kestrel-menu.metainfo.xml.in
               ${package_dir}/${KESTREL_APPSTREAM_ID}.metainfo.xml @ONLY)
install(FILES ${package_dir}/${KESTREL_APPSTREAM_ID}.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/metainfo)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kestrel-menu)
set(CPACK_PACKAGE_VENDOR "Kestrel Menu maintainers")
set(CPACK_PACKAGE_CONTACT "${KESTREL_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Folder menus at the left end of the top bar")
set(CPACK_PACKAGE_DESCRIPTION
    "Kestrel Menu puts a small icon title at the left end of the top bar.\n\
Clicking it pops up a hierarchical menu built from a folder; choosing an\n\
item asks the desktop's file manager to open it. Files dropped on the\n\
title become links in its folder.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${KESTREL_HOMEPAGE}")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded at run time, so no library dependency names them: Qt's X11 platform
# plugin, and the SVG image and icon plugins that draw the icons.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, libqt6svg6")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "hicolor-icon-theme, adwaita-icon-theme")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "thunar | nautilus | nemo | caja | dolphin")
# The program ships stripped; its debug symbols go to a -dbgsym package.
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/DebugSymbolsPackage.cmake)
include(CPack)

# Run by CPack once the packages are made (CPACK_POST_BUILD_SCRIPTS): the
# debug symbols package as CPack leaves it names its files by their absolute
# staging paths in md5sums and has no documentation folder. Repack it the way
# Debian's own -dbgsym packages are: paths relative to the root, and the
# documentation folder a link to the main package's (which it depends on).
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    if(NOT package MATCHES "\\.ddeb$")
        continue()
    endif()
    set(root "${package}.d")
    file(REMOVE_RECURSE "${root}")
    execute_process(COMMAND dpkg-deb -R "${package}" "${root}" COMMAND_ERROR_IS_FATAL ANY)
    file(READ "${root}/DEBIAN/md5sums" sums)
    string(REGEX REPLACE "  /[^\n]*-dbgsym/" "  " sums "${sums}")
    file(WRITE "${root}/DEBIAN/md5sums" "${sums}")
    file(MAKE_DIRECTORY "${root}/usr/share/doc")
    file(CREATE_LINK "${CPACK_PACKAGE_NAME}" "${root}/usr/share/doc/${CPACK_PACKAGE_NAME}-dbgsym"
         SYMBOLIC)
    execute_process(COMMAND dpkg-deb --root-owner-group --build "${root}" "${package}"
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE_RECURSE "${root}")
endforeach()

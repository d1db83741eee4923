# The Debian package, made by CPack from the build tree that is already there:
#   cpack --config build/CPackConfig.cmake -B OUTPUT_DIR
# (scripts/package does this). CPack's DEB generator stages "cmake --install"
# into /usr, strips the programs, computes Depends with dpkg-shlibdeps and
# adds what the programs run by name.
include(GNUInstallDirs)

set(KORVELLE_MAINTAINER "The Korvelle developers <maintainers@users.noreply.c-seed-84e4978a.example>")

configure_file(${CMAKE_SOURCE_DIR}/packaging/debian/changelog.in ${CMAKE_BINARY_DIR}/packaging/changelog @ONLY)
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/packaging/changelog.gz
    COMMAND gzip -9nf -k ${CMAKE_BINARY_DIR}/packaging/changelog
    DEPENDS ${CMAKE_BINARY_DIR}/packaging/changelog)
add_custom_target(korvelle_changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
add_dependencies(application korvelle_changelog)
install(FILES ${CMAKE_BINARY_DIR}/packaging/changelog.gz ${CMAKE_SOURCE_DIR}/packaging/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/korvelle)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvelle)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${KORVELLE_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "keep data in encrypted disk images and encrypted disks")
set(CPACK_PACKAGE_DESCRIPTION "Korvelle creates, mounts, unmounts, resizes, compacts and re-keys encrypted
sparse disk images, and lists every encrypted volume that is mounted beside
the images and folders kept as favourites. It does no cryptography itself:
it runs its own small hdiutil and diskutil programs, which keep each image
as a standard LUKS2 container with ext4 inside.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Run by name rather than linked: fusermount3 and fuse2fs for an ordinary
# user's mounts, mkfs.ext4, e2fsck, resize2fs and e2label for the file
# system inside, the Qt platform and SVG plugins that the window needs.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fuse3, fuse2fs, e2fsprogs, qt6-qpa-plugins, libqt6svg6")
# pkexec asks for root for the disk verbs; xdg-utils opens a mounted volume.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pkexec, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${CMAKE_SOURCE_DIR}/packaging/debian/postinst
    ${CMAKE_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
include(CPack)

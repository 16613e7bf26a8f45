# The two Debian packages, made by tools/package: the command line, and the window, which needs the former.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Lumivault authors <packages@www.orvanta.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://www.orvanta.example/)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
# dpkg-deb counts the folders' sizes and modes as they stand: they are the same whoever builds.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL ${LUMIVAULT_CLI_COMPONENT} ${LUMIVAULT_WINDOW_COMPONENT})

set(CPACK_DEBIAN_LUMIVAULT-CLI_PACKAGE_NAME lumivault-cli)
set(CPACK_DEBIAN_LUMIVAULT-CLI_PACKAGE_RECOMMENDS pkexec)
set(CPACK_DEBIAN_LUMIVAULT-CLI_PACKAGE_SUGGESTS "gddrescue, bash-completion")
set(CPACK_COMPONENT_LUMIVAULT-CLI_DESCRIPTION
    "get deleted files back from disks and disk images, in a terminal
Finds photos, audio, video and documents that were deleted or lost, by what
FAT12, FAT16, FAT32 and NTFS still know of them, by lost records anywhere on
the disk, and by their content alone. The source is only read.

It also copies disks that fail into images: what can be read comes first.")

set(CPACK_DEBIAN_LUMIVAULT_PACKAGE_NAME lumivault)
set(CPACK_DEBIAN_LUMIVAULT_PACKAGE_DEPENDS "lumivault-cli (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_LUMIVAULT_PACKAGE_RECOMMENDS
    "mpv, pkexec, xdg-utils, qt6-wayland, qt6-image-formats-plugins")
set(CPACK_DEBIAN_LUMIVAULT_PACKAGE_SUGGESTS fonts-noto-cjk)
set(CPACK_COMPONENT_LUMIVAULT_DESCRIPTION
    "get deleted photos, audio, video and documents back
A window that leads from the disk, memory card or disk image to the files that
were lost on it: it finds them, shows them, and saves them to another drive.
What is scanned is only read.

The package lumivault-cli does the same in a terminal.")
include(CPack)

# Where the parts go that have to find each other once installed.
include(GNUInstallDirs)
set(LUMIVAULT_HELPER_NAME lumivault-open-device)
set(LUMIVAULT_HELPER_FOLDER ${CMAKE_INSTALL_FULL_LIBEXECDIR}/lumivault)
set(LUMIVAULT_HELPER_PATH ${LUMIVAULT_HELPER_FOLDER}/${LUMIVAULT_HELPER_NAME})
set(LUMIVAULT_PLAYER_FOLDER ${CMAKE_INSTALL_FULL_LIBDIR}/lumivault)

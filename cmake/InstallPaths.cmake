# Where the parts go that have to find each other once installed: below the prefix, which may be given at the installation.
include(GNUInstallDirs)
set(LUMIVAULT_HELPER_NAME lumivault-open-device)
set(LUMIVAULT_HELPER_FOLDER libexec/lumivault)
set(LUMIVAULT_DECODER_NAME lumivault-decoder)
set(LUMIVAULT_PLAYER_FOLDER libexec/lumivault)
set(LUMIVAULT_DOCUMENTATION_FOLDER share/doc/lumivault)

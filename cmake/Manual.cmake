# The target "manual": man pages and the completion for bash, which the program prints. It is no part
# of "all", for an ordinary build never starts what it has just built; where that cannot run, as in a
# cross build without an emulator, the agent is installed without them.

set(manualDir ${PROJECT_BINARY_DIR}/manual)
file(GLOB manualNotes CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/agent/cli/manual/*)
add_custom_command(
  OUTPUT ${manualDir}/directnet
  COMMAND ${PROJECT_SOURCE_DIR}/agent/cli/manual/make ${manualDir}
          ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:directnet>
  DEPENDS directnet ${manualNotes}
  COMMENT "Writing the manual" VERBATIM)
add_custom_target(manual DEPENDS ${manualDir}/directnet)

install(DIRECTORY ${manualDir}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT agent
        OPTIONAL FILES_MATCHING PATTERN "*.gz")
install(FILES ${manualDir}/directnet DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        COMPONENT agent OPTIONAL)

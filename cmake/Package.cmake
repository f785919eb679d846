# The installed package: headers under include/directnet, the static libraries, and the files that
# make find_package(directnet) work. All of it is the install component "library".

get_property(packageTargets GLOBAL PROPERTY DIRECTNET_PACKAGE_TARGETS)
get_property(packageFolders GLOBAL PROPERTY DIRECTNET_PACKAGE_FOLDERS)
if(NOT packageTargets)
  return()
endif()

include(CMakePackageConfigHelpers)
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/directnet)

install(TARGETS ${packageTargets} EXPORT directnetTargets COMPONENT library)
install(DIRECTORY ${packageFolders} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/directnet
        COMPONENT library FILES_MATCHING PATTERN "*.h")
install(EXPORT directnetTargets NAMESPACE directnet:: DESTINATION ${packageDir} COMPONENT library)

configure_package_config_file(cmake/directnetConfig.cmake.in directnetConfig.cmake
                              INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(directnetConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/directnetConfig.cmake
              ${PROJECT_BINARY_DIR}/directnetConfigVersion.cmake
        DESTINATION ${packageDir} COMPONENT library)

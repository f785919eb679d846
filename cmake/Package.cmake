# The installed package: headers under include/directnet, the libraries, and the files that make
# find_package(directnet) work. It has two install components: "library" is what a host embeds,
# "tables" the library that reads tables, each whole without the other.

get_property(packageTargets GLOBAL PROPERTY DIRECTNET_PACKAGE_TARGETS)
get_property(packageFolders GLOBAL PROPERTY DIRECTNET_PACKAGE_FOLDERS)
if(NOT packageTargets)
  return()
endif()

include(CMakePackageConfigHelpers)
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/directnet)

install(TARGETS ${packageTargets} EXPORT directnetTargets COMPONENT library)
foreach(folder IN LISTS packageFolders)
  cmake_path(GET folder PARENT_PATH parent)
  install(DIRECTORY ${folder} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/directnet/${parent}
          COMPONENT library FILES_MATCHING PATTERN "*.h")
endforeach()
install(EXPORT directnetTargets NAMESPACE directnet:: DESTINATION ${packageDir} COMPONENT library)

install(TARGETS directnet_tables directnet_tables_static EXPORT directnetTablesTargets
        COMPONENT tables)
install(DIRECTORY tables/api/directnet DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT tables)
install(EXPORT directnetTablesTargets NAMESPACE directnet:: DESTINATION ${packageDir}
        COMPONENT tables)

# The file finds its folders from where it lies, since an install may go anywhere.
set(pkgconfigDir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfigPrefix ${CMAKE_INSTALL_PREFIX}/${pkgconfigDir} ${CMAKE_INSTALL_PREFIX})
cmake_path(GET pkgconfigPrefix PARENT_PATH pkgconfigPrefix)
configure_file(cmake/libdirectnet-tables.pc.in libdirectnet-tables.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/libdirectnet-tables.pc DESTINATION ${pkgconfigDir}
        COMPONENT tables)

configure_package_config_file(cmake/directnetConfig.cmake.in directnetConfig.cmake
                              INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(directnetConfigVersion.cmake COMPATIBILITY SameMinorVersion)
foreach(component library tables)
  install(FILES ${PROJECT_BINARY_DIR}/directnetConfig.cmake
                ${PROJECT_BINARY_DIR}/directnetConfigVersion.cmake
          DESTINATION ${packageDir} COMPONENT ${component})
endforeach()

# The installed package: headers under include/directnet, the libraries, and the files that make
# find_package(directnet) work. Its install components: "library" is what a host embeds, "tables" what
# a program that reads tables is built with, each whole without the other, and "tables-runtime" the
# shared library that such a program runs with.

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
install(FILES ${PROJECT_BINARY_DIR}/include/directnet/version.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/directnet/directnet COMPONENT library)
install(EXPORT directnetTargets NAMESPACE directnet:: DESTINATION ${packageDir} COMPONENT library)

install(TARGETS directnet_tables directnet_tables_static EXPORT directnetTablesTargets
        LIBRARY COMPONENT tables-runtime NAMELINK_COMPONENT tables
        ARCHIVE COMPONENT tables)
install(DIRECTORY tables/api/directnet DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT tables)
install(EXPORT directnetTablesTargets NAMESPACE directnet:: DESTINATION ${packageDir}
        COMPONENT tables)

# The files find their folders from where they lie, since an install may go anywhere.
set(pkgconfigDir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pkgconfigPrefix ${CMAKE_INSTALL_PREFIX}/${pkgconfigDir} ${CMAKE_INSTALL_PREFIX})
cmake_path(GET pkgconfigPrefix PARENT_PATH pkgconfigPrefix)
foreach(pair library=libdirectnet tables=libdirectnet-tables)
  string(REPLACE "=" ";" pair ${pair})
  list(POP_FRONT pair component name)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${pkgconfigDir}
          COMPONENT ${component})
endforeach()

configure_package_config_file(cmake/directnetConfig.cmake.in directnetConfig.cmake
                              INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(directnetConfigVersion.cmake COMPATIBILITY SameMinorVersion)
foreach(component library tables)
  install(FILES ${PROJECT_BINARY_DIR}/directnetConfig.cmake
                ${PROJECT_BINARY_DIR}/directnetConfigVersion.cmake
          DESTINATION ${packageDir} COMPONENT ${component})
endforeach()

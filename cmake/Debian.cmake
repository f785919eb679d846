# The Debian packages that `./dev package` makes of what is installed: the agent, the shared library
# that reads tables, and what programs are built with.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME directnet)
set(CPACK_PACKAGE_CONTACT DirectNet)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_SET_DESTDIR ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL agent library tables tables-runtime)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENT_AGENT_GROUP agent)
set(CPACK_COMPONENT_TABLES-RUNTIME_GROUP tables)
set(CPACK_COMPONENT_LIBRARY_GROUP development)
set(CPACK_COMPONENT_TABLES_GROUP development)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=") # one soname only gains functions
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

set(CPACK_DEBIAN_AGENT_PACKAGE_NAME directnet)
set(CPACK_DEBIAN_AGENT_PACKAGE_SECTION net)
set(CPACK_DEBIAN_AGENT_DESCRIPTION
    "connected-route agent
Keeps the connected routes of this machine's VRFs, installs those of virtual
addresses and leaks between VRFs, and tells services when they are ready.")
foreach(file conffiles postinst postrm prerm)
  list(APPEND CPACK_DEBIAN_AGENT_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/${file})
endforeach()

set(tablesPackage libdirectnet-tables${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_TABLES_PACKAGE_NAME ${tablesPackage})
set(CPACK_DEBIAN_TABLES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_TABLES_DESCRIPTION
    "tables of connected routes, read in shared memory
The shared library with which programs read the routes of a directnet agent
while it writes them.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libdirectnet-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${tablesPackage} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
    "connected-route agent library, development files
Headers, libraries and CMake and pkg-config files for agents that keep
connected routes, and for programs that read their tables.")

include(CPack)

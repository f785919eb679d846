# What reads tables in shared memory: the core, which platform/ uses as well, and the library that
# other programs link, libdirectnet-tables, which has the core in it and needs nothing but libc.

directnet_library(directnet_reader STATIC FOLDER tables/reader EXPORT reader)
set_property(GLOBAL APPEND PROPERTY DIRECTNET_PACKAGE_FOLDERS tables/layout)

file(GLOB apiSources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tables/api/*.cpp)
add_library(directnet_tables_objects OBJECT ${apiSources})
target_link_libraries(directnet_tables_objects PRIVATE directnet_reader)
target_include_directories(directnet_tables_objects PRIVATE ${PROJECT_SOURCE_DIR}/tables/api)
directnet_warnings(directnet_tables_objects)
if(DIRECTNET_UNITY)
  directnet_unity(directnet_tables_objects "${apiSources}")
endif()

# None of the standard library that is not in its headers: no exceptions, no assertions of its own.
foreach(target directnet_reader directnet_tables_objects)
  target_compile_options(${target} PRIVATE -fno-exceptions -fno-rtti
                                           -U_GLIBCXX_ASSERTIONS)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_EXTENSIONS OFF
                                             CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
endforeach()

add_library(directnet_tables SHARED)
add_library(directnet_tables_static STATIC)
foreach(target directnet_tables directnet_tables_static)
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:directnet_tables_objects>
                                   $<TARGET_OBJECTS:directnet_reader>)
  target_include_directories(
    ${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/tables/api>
                     $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX OUTPUT_NAME directnet-tables)
endforeach()
set_target_properties(directnet_tables PROPERTIES EXPORT_NAME tables VERSION ${PROJECT_VERSION}
                                                  SOVERSION ${PROJECT_VERSION_MAJOR})
set_target_properties(directnet_tables_static PROPERTIES EXPORT_NAME tables_static)
add_library(directnet::tables ALIAS directnet_tables)
add_library(directnet::tables_static ALIAS directnet_tables_static)

# What the library would need besides libc is an error. Sanitizers bring libraries of their own.
if(NOT DIRECTNET_SANITIZE AND NOT DIRECTNET_BUILD_FUZZ)
  target_link_options(directnet_tables PRIVATE -nodefaultlibs LINKER:-z,defs LINKER:--as-needed)
  target_link_libraries(directnet_tables PRIVATE c gcc)
endif()

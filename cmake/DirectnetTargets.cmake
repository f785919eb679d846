# How every target of the house is made: one function per kind, one place for the warnings.

# The warnings of the house. They become errors with CMAKE_COMPILE_WARNING_AS_ERROR, which the
# presets set, so that a newer compiler's new warning does not stop somebody who embeds the library.
function(directnet_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 reports overlapping copies inside std::string's own operator+ (GCC bug 105651), and reads
    # of the empty payload of a std::optional that is moved (GCC bug 80635).
    target_compile_options(${target} PRIVATE -Wno-restrict -Wno-maybe-uninitialized)
  endif()
endfunction()

# Instruments everything made after the call, in this folder and below.
macro(directnet_sanitize sanitizers)
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
endmacro()

# With DIRECTNET_UNITY, which the release and test presets set, the sources of a library's folder are
# compiled together, at most eight at a time: they include the same headers. Sources in the
# folders that are named behind the sources are compiled by themselves: their unnamed namespaces use
# the same names, such as that of the trace unit.
function(directnet_unity target sources)
  list(JOIN ARGN "|" apart)
  foreach(source IN LISTS sources)
    cmake_path(GET source PARENT_PATH folder)
    cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
    if(apart AND "${folder}/" MATCHES "^(${apart})/")
      continue()
    endif()
    string(MAKE_C_IDENTIFIER ${folder} group)
    list(LENGTH ${group} before)
    list(APPEND ${group} ${source})
    math(EXPR batch "${before} / 8")
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${group}_${batch})
  endforeach()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # The compiler takes a source that stands in another file for a header, and a name of a
    # neighbour for one that may be shadowed by mistake.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage -Wno-shadow)
  endif()
endfunction()

# No path of this machine reaches what is built: assertions and debug information name sources by
# their path in the project.
macro(directnet_hide_paths)
  add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
                      -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
endmacro()

# Drops from a list the project targets that do not exist because their folder holds no sources.
function(directnet_existing out)
  set(kept "")
  foreach(library IN LISTS ARGN)
    if(TARGET ${library})
      list(APPEND kept ${library})
    endif()
  endforeach()
  set(${out} ${kept} PARENT_SCOPE)
endfunction()

# directnet_library(NAME FOLDER folder [STATIC] [EXPORT name] [LINK targets...] [APART folders...])
# A library of every source under FOLDER but main.cpp. One without sources is not made. EXPORT makes
# it part of the installed package as directnet::name, and shared where BUILD_SHARED_LIBS asks for
# that, unless it is STATIC. A unity build compiles each source of the folders APART by itself.
function(directnet_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "STATIC" "FOLDER;EXPORT" "LINK;APART")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${arg_FOLDER}/*.cpp)
  list(REMOVE_ITEM sources ${PROJECT_SOURCE_DIR}/${arg_FOLDER}/main.cpp)
  if(NOT sources)
    return()
  endif()

  set(kind STATIC)
  if(arg_EXPORT AND BUILD_SHARED_LIBS AND NOT arg_STATIC)
    set(kind SHARED)
  endif()
  add_library(${target} ${kind} ${sources})
  directnet_existing(libraries ${arg_LINK})
  target_link_libraries(${target} PUBLIC ${libraries})
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_include_directories(
    ${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                     $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/directnet>)
  # Until there is a version 1, the next minor one may be of another shape.
  set_target_properties(
    ${target} PROPERTIES CXX_EXTENSIONS OFF VERSION ${PROJECT_VERSION}
                         SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  directnet_warnings(${target})
  if(DIRECTNET_UNITY)
    directnet_unity(${target} "${sources}" ${arg_APART})
  endif()

  if(arg_EXPORT)
    add_library(directnet::${arg_EXPORT} ALIAS ${target})
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${arg_EXPORT})
    set_property(GLOBAL APPEND PROPERTY DIRECTNET_PACKAGE_TARGETS ${target})
    set_property(GLOBAL APPEND PROPERTY DIRECTNET_PACKAGE_FOLDERS ${arg_FOLDER})
  endif()
endfunction()

# directnet_executable(NAME SOURCES files... [LINK targets...])
function(directnet_executable target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK")
  add_executable(${target} ${arg_SOURCES})
  directnet_existing(libraries ${arg_LINK})
  target_link_libraries(${target} PRIVATE ${libraries})
  target_compile_features(${target} PRIVATE cxx_std_20)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  directnet_warnings(${target})
endfunction()

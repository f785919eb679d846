# How every target of the house is made: one function per kind, one place for the warnings.

# The warnings of the house. They become errors with CMAKE_COMPILE_WARNING_AS_ERROR, which the
# presets set, so that a newer compiler's new warning does not stop somebody who embeds the library.
function(directnet_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 reports overlapping copies inside std::string's own operator+ (GCC bug 105651).
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
endfunction()

# Instruments everything made after the call, in this folder and below.
macro(directnet_sanitize sanitizers)
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
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

# directnet_library(NAME FOLDER folder [EXPORT name] [LINK targets...])
# A static library of every source under FOLDER but main.cpp. One without sources is not made.
# EXPORT makes it part of the installed package as directnet::name.
function(directnet_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "FOLDER;EXPORT" "LINK")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${arg_FOLDER}/*.cpp)
  list(REMOVE_ITEM sources ${PROJECT_SOURCE_DIR}/${arg_FOLDER}/main.cpp)
  if(NOT sources)
    return()
  endif()

  add_library(${target} STATIC ${sources})
  directnet_existing(libraries ${arg_LINK})
  target_link_libraries(${target} PUBLIC ${libraries})
  target_compile_features(${target} PUBLIC cxx_std_20)
  target_include_directories(
    ${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                     $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/directnet>)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  directnet_warnings(${target})

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

# One function for each kind of target. Sources are globbed: a file belongs to the library whose folder it lies in.

# velmar_library(NAME PUBLIC deps... PRIVATE deps...): a static library from all sources below NAME/, with the alias
# Velmar::<Name without "Velmar">, the house's options and the shared precompiled header.
function(velmar_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "PUBLIC;PRIVATE")
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/${name}/*.cpp" "${CMAKE_SOURCE_DIR}/${name}/*.h")
  if(sources MATCHES "\\.cpp")
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>)
    target_link_libraries(${name} PUBLIC ${arg_PUBLIC} $<BUILD_INTERFACE:VelmarSanitizers>
                                  PRIVATE ${arg_PRIVATE} $<BUILD_INTERFACE:VelmarOptions>)
    velmar_precompiled_header(${name})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${arg_PUBLIC})
  endif()
  string(REPLACE "Velmar" "" short ${name})
  add_library(Velmar::${short} ALIAS ${name})
endfunction()

# velmar_executable(NAME SOURCES files... LIBRARIES deps...)
function(velmar_executable name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} VelmarOptions VelmarSanitizers)
  velmar_precompiled_header(${name})
endfunction()

# The precompiled header is compiled once, with VelmarPlatform, and used by all.
function(velmar_precompiled_header target)
  if(target STREQUAL "VelmarPlatform")
    target_precompile_headers(${target} PRIVATE "${CMAKE_SOURCE_DIR}/cmake/Precompiled.h")
  else()
    target_precompile_headers(${target} REUSE_FROM VelmarPlatform)
  endif()
endfunction()

# VelmarSourceTree tells where this checkout stands. A definition on every command line would keep ccache from taking in
# one checkout what it compiled in another.
function(velmar_source_tree)
  configure_file("${CMAKE_SOURCE_DIR}/cmake/SourceTree.cpp.in" "${CMAKE_BINARY_DIR}/SourceTree.cpp" @ONLY)
  add_library(VelmarSourceTree STATIC EXCLUDE_FROM_ALL "${CMAKE_BINARY_DIR}/SourceTree.cpp")
  target_include_directories(VelmarSourceTree PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(VelmarSourceTree PRIVATE VelmarOptions VelmarSanitizers)
endfunction()

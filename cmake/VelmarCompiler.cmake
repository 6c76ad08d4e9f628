# How everything here is compiled: the language, the warnings, the sanitizers, the cache.

# GCC 12 silently miscompiles co_await with temporaries, so the floor is a matter of correctness.
if((CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 14)
   OR (CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 16))
  message(FATAL_ERROR "Velmar needs clang 16 or GCC 14 (found ${CMAKE_CXX_COMPILER_ID} "
                      "${CMAKE_CXX_COMPILER_VERSION}): configure with a preset, which names clang++-19.")
endif()

set(VELMAR_SANITIZE "" CACHE STRING "Sanitizers to build with: empty, 'address' (with undefined) or 'thread'")
set(VELMAR_WERROR ON CACHE BOOL "Treat warnings as errors")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Grammar tables are compiled alike in every preset (the cache then serves all of them), so C gets no flags of its own
# from the build type.
set(CMAKE_C_FLAGS_DEBUG "" CACHE STRING "" FORCE)
set(CMAKE_C_FLAGS_RELEASE "" CACHE STRING "" FORCE)
set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1 -D_GLIBCXX_ASSERTIONS" CACHE STRING "" FORCE)
set(CMAKE_CXX_FLAGS_RELEASE "-O2" CACHE STRING "" FORCE)

# Precompiled headers and ccache agree only if the header's time stamp is left out and these slacks are allowed.
find_program(VELMAR_CCACHE ccache)
if(VELMAR_CCACHE)
  set(launcher ${CMAKE_COMMAND} -E env
      CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
      CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1 CCACHE_MAXSIZE=10G ${VELMAR_CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()

add_library(VelmarOptions INTERFACE)
target_compile_options(VelmarOptions INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<BOOL:${VELMAR_WERROR}>>:-Werror>
  -fPIC -fno-omit-frame-pointer) # -fPIC everywhere: one precompiled header serves libraries and programs
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(VelmarOptions INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Xclang$<SEMICOLON>-fno-pch-timestamp>)
  target_link_options(VelmarOptions INTERFACE -fuse-ld=lld)
endif()

# Sanitizers watch our code and the runtime's, not the generated grammar tables.
add_library(VelmarSanitizers INTERFACE)
if(VELMAR_SANITIZE STREQUAL "address")
  set(sanitize -fsanitize=address,undefined -fno-sanitize-recover=all)
  set(sanitizeRuntime -fsanitize=address)
elseif(VELMAR_SANITIZE STREQUAL "thread")
  set(sanitize -fsanitize=thread)
  set(sanitizeRuntime -fsanitize=thread)
elseif(VELMAR_SANITIZE)
  message(FATAL_ERROR "VELMAR_SANITIZE is empty, 'address' or 'thread', not '${VELMAR_SANITIZE}'.")
endif()
if(VELMAR_FUZZERS AND NOT VELMAR_TESTS)
  list(APPEND sanitize -fsanitize=fuzzer-no-link)
endif()
target_compile_options(VelmarSanitizers INTERFACE ${sanitize})
target_link_options(VelmarSanitizers INTERFACE ${sanitize})

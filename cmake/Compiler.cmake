# One place for language level, warnings, sanitizers and the compiler cache.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})

find_program(NOMELY_CCACHE ccache)
if(NOMELY_CCACHE)
  # The precompiled headers are only cached when ccache may ignore their time stamps.
  set(launcher ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${NOMELY_CCACHE})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
endif()

add_library(nomely_options INTERFACE)
target_include_directories(nomely_options INTERFACE ${CMAKE_SOURCE_DIR}/src)
target_compile_options(nomely_options INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(nomely_options INTERFACE -fpch-preprocess)
  # g++ 12 sees overlapping copies in std::string's operator+ where there are none.
  target_compile_options(nomely_options INTERFACE -Wno-restrict)
  if(NOMELY_SANITIZE MATCHES thread)
    # Nor, between ThreadSanitizer's calls, does it know a string's own buffer from its heap.
    target_compile_options(nomely_options INTERFACE -Wno-array-bounds -Wno-stringop-overflow)
  endif()
else()
  # To clang, sign conversions are part of -Wconversion; to g++ they are not.
  target_compile_options(nomely_options INTERFACE -Wno-sign-conversion)
endif()
if(NOMELY_SANITIZE)
  target_compile_options(nomely_options INTERFACE
    -fsanitize=${NOMELY_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(nomely_options INTERFACE -fsanitize=${NOMELY_SANITIZE})
endif()
if(NOMELY_COVERAGE)
  target_compile_options(nomely_options INTERFACE --coverage)
  target_link_options(nomely_options INTERFACE --coverage)
endif()

# What is tested is compiled as everywhere; the tests' own code, of which no user runs a line, takes a
# third of the time without optimisation and without checks for undefined behaviour. To be linked
# last.
add_library(nomely_quick_options INTERFACE)
target_compile_options(nomely_quick_options INTERFACE -O0 -fno-sanitize=undefined)

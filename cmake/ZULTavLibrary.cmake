# What every target of the project has in common: language level, warnings, floating-point
# discipline, and the place where it is built.

set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
# Libraries find each other, and the command line finds them, wherever the tree is put.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

add_library(zultav_options INTERFACE)
target_compile_features(zultav_options INTERFACE cxx_std_20)
# A fused multiply-add where the source has none would break the error-free transformations. Calls
# between a library's own functions are direct.
target_compile_options(zultav_options INTERFACE
  -ffp-contract=off -fno-math-errno -fno-semantic-interposition
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wconversion
  -Wno-missing-braces)  # clang asks for braces that aggregates of aggregates may leave out
target_include_directories(zultav_options INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)

# Sanitizer runtimes are linked into the program, not into its libraries.
set(zultav_link_options)
if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  set(zultav_link_options -Wl,--no-undefined)
endif()

# zultav_library(NAME SOURCES … [DEPENDS …]): one shared library, symbols hidden by default.
function(zultav_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name} SHARED ${ARG_SOURCES})
  add_library(ZULTavNumbers::${name} ALIAS ${name})
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:zultav_options> PUBLIC ${ARG_DEPENDS})
  target_compile_features(${name} PUBLIC cxx_std_20)
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/zultav>)
  set_target_properties(${name} PROPERTIES
    CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    INSTALL_RPATH "$ORIGIN")
  target_link_options(${name} PRIVATE ${zultav_link_options})
  set_property(GLOBAL APPEND PROPERTY ZULTAV_LIBRARIES ${name})
endfunction()

# zultav_variants(NAME): the same library for newer processors, with fused multiply-add and with
# rounding modes in the instructions. The dynamic loader of glibc takes the best one that fits from
# these folders beside the plain library; all give the same bits. Call it last.
function(zultav_variants name)
  if(NOT (CMAKE_SYSTEM_NAME STREQUAL "Linux" AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64"
          AND CMAKE_SIZEOF_VOID_P EQUAL 8))
    return()
  endif()
  get_target_property(sources ${name} SOURCES)
  get_target_property(libraries ${name} LINK_LIBRARIES)
  get_target_property(options ${name} COMPILE_OPTIONS)
  if(NOT options)
    set(options)
  endif()
  foreach(level x86-64-v3 x86-64-v4)
    set(variant ${name}_${level})
    add_library(${variant} SHARED ${sources})
    target_link_libraries(${variant} PRIVATE ${libraries})
    target_compile_options(${variant} PRIVATE ${options} -march=${level})
    set_target_properties(${variant} PROPERTIES
      OUTPUT_NAME ${name}
      LIBRARY_OUTPUT_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/glibc-hwcaps/${level}
      CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
      INSTALL_RPATH "$ORIGIN/../..")
    target_link_options(${variant} PRIVATE ${zultav_link_options})
    add_dependencies(${name} ${variant})
    install(TARGETS ${variant}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${level})
  endforeach()
endfunction()

# zultav_test(NAME SOURCES … LIBS …): one GoogleTest program, each of its tests known to ctest.
function(zultav_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE zultav_options ${ARG_LIBS} GTest::gtest_main)
  set_target_properties(${name} PROPERTIES CXX_EXTENSIONS OFF)
  # Tests replace the allocation functions and ask for too much memory on purpose; both would end
  # a program under the address sanitizer.
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES
    PROPERTIES TIMEOUT 600
               ENVIRONMENT ASAN_OPTIONS=allocator_may_return_null=1:alloc_dealloc_mismatch=0)
endfunction()

# Third-party code comes from Debian's packages only (scripts/install-deps).

# GoogleTest: built from the package's sources so that the same suite also
# builds with the mingw cross compilers.
if(OSTREL_BUILD_TESTS)
  set(OSTREL_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest sources")
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
  set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
  add_subdirectory(${OSTREL_GTEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
endif()

# Header-only libraries. A cross build must not see the whole of /usr/include,
# so those headers are reached through a narrow folder made here.
set(OSTREL_NARROW_INCLUDE ${CMAKE_BINARY_DIR}/narrow-include)
foreach(dir CLI nlohmann)
  if(NOT EXISTS /usr/include/${dir})
    message(FATAL_ERROR "/usr/include/${dir} is missing: run scripts/install-deps")
  endif()
  file(MAKE_DIRECTORY ${OSTREL_NARROW_INCLUDE})
  file(CREATE_LINK /usr/include/${dir} ${OSTREL_NARROW_INCLUDE}/${dir} SYMBOLIC)
endforeach()
add_library(ostrel_header_libs INTERFACE)
target_include_directories(ostrel_header_libs SYSTEM INTERFACE ${OSTREL_NARROW_INCLUDE})

if(NOT WIN32)
  find_package(pugixml REQUIRED)
endif()

if(OSTREL_BUILD_BENCH AND NOT WIN32)
  find_package(benchmark REQUIRED)
endif()

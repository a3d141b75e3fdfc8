find_package(Threads REQUIRED)

# Boost is used for its headers only (shared_ptr, make_shared, any).
if(WIN32 AND CMAKE_CROSSCOMPILING)
  # Debian ships the headers for the host only. The cross compiler sees a
  # folder that holds nothing but a link to boost/, never all of /usr/include.
  find_path(ZUUTILS_HOST_BOOST_DIR boost/version.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(_shim ${CMAKE_BINARY_DIR}/boost-headers)
  file(MAKE_DIRECTORY ${_shim})
  file(CREATE_LINK ${ZUUTILS_HOST_BOOST_DIR}/boost ${_shim}/boost SYMBOLIC)
  if(NOT TARGET Boost::headers)
    add_library(Boost::headers INTERFACE IMPORTED)
    set_target_properties(Boost::headers PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${_shim})
  endif()
else()
  find_package(Boost 1.74 REQUIRED CONFIG)
endif()

if(ZUUTILS_BUILD_TESTS)
  if(WIN32 AND CMAKE_CROSSCOMPILING)
    # No prebuilt GoogleTest exists for mingw: build it from Debian's sources
    # (it defines the GTest:: aliases itself).
    set(gtest_disable_pthreads OFF CACHE BOOL "" FORCE)
    set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
    set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  else()
    find_package(GTest REQUIRED)
  endif()
endif()

# LibpropertiesInstall.cmake - what `cmake --install` puts where, and the
# files through which other projects find the installed library.
#
# Under the prefix:
#   include/libproperties/*.h        the public headers
#   <libdir>/libproperties.so.1.0.0  with its .so.1 and .so links, and the
#   <libdir>/libTextNumbers.so.1.0.0 companion library the same way
#   <libdir>/cmake/libproperties/    the CMake package: find_package(libproperties)
#                                    gives the targets libproperties::properties
#                                    and libproperties::TextNumbers
#   <libdir>/pkgconfig/libproperties.pc  links both libraries
# <libdir> is CMAKE_INSTALL_LIBDIR (lib/<multiarch> for the prefix /usr on
# Debian).
#
# The headers include each other by bare name ("Property.h"), so they live
# together in include/libproperties and clients put that directory on their
# include path: the CMake target and the .pc file both do.
#
# Components: Runtime (the versioned libraries and their .so.1 links) and
# Development (headers, .so links, CMake package, .pc file).

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(PROPERTIES_INSTALL_INCLUDEDIR
    ${CMAKE_INSTALL_INCLUDEDIR}/libproperties)
set(PROPERTIES_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/libproperties)

# PROPERTIES_INTERNAL_HEADERS (the top CMakeLists.txt) are only for the
# library's sources. No public header may include them (the consumer test
# compiles every installed header).
file(GLOB PROPERTIES_INSTALLED_HEADERS CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/Src/*.h)
list(REMOVE_ITEM PROPERTIES_INSTALLED_HEADERS ${PROPERTIES_INTERNAL_HEADERS})
list(APPEND PROPERTIES_INSTALLED_HEADERS
  ${PROJECT_SOURCE_DIR}/TextNumbers/TextNumbers.h)

# The same names inside this build, for projects that add this one with
# add_subdirectory().
add_library(libproperties::properties ALIAS properties)
add_library(libproperties::TextNumbers ALIAS TextNumbers)

foreach(target properties TextNumbers)
  target_include_directories(${target} PUBLIC
    $<INSTALL_INTERFACE:${PROPERTIES_INSTALL_INCLUDEDIR}>)
endforeach()

# An installed libproperties finds libTextNumbers beside it, also under a
# prefix the dynamic loader does not search (a system package turns this off).
set_target_properties(properties PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS properties TextNumbers
  EXPORT libpropertiesTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT Runtime NAMELINK_COMPONENT Development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Runtime)
install(FILES ${PROPERTIES_INSTALLED_HEADERS}
  DESTINATION ${PROPERTIES_INSTALL_INCLUDEDIR} COMPONENT Development)

# CMake package. TextNumbers is exported too (as libproperties::TextNumbers)
# because libproperties links it; clients of libproperties::properties do
# not link it themselves.
install(EXPORT libpropertiesTargets
  NAMESPACE libproperties::
  FILE libpropertiesTargets.cmake
  DESTINATION ${PROPERTIES_INSTALL_CMAKEDIR} COMPONENT Development)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/libpropertiesConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/libpropertiesConfig.cmake
  INSTALL_DESTINATION ${PROPERTIES_INSTALL_CMAKEDIR})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/package/libpropertiesConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/package/libpropertiesConfig.cmake
  ${PROJECT_BINARY_DIR}/package/libpropertiesConfigVersion.cmake
  DESTINATION ${PROPERTIES_INSTALL_CMAKEDIR} COMPONENT Development)

# pkg-config file, made in two steps: the directories now, the prefix at
# install time, so that the file names the prefix actually installed to
# (`cmake --install <build> --prefix <dir>`). DESTDIR is not part of it.
foreach(kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(PC_${kind} "${CMAKE_INSTALL_${kind}}")
  else()
    set(PC_${kind} "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
endforeach()
set(PC_PREFIX "@PC_PREFIX@")
configure_file(${CMAKE_CURRENT_LIST_DIR}/libproperties.pc.in
               ${PROJECT_BINARY_DIR}/package/libproperties.pc.in @ONLY)
install(CODE "
  set(PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
  configure_file(\"${PROJECT_BINARY_DIR}/package/libproperties.pc.in\"
                 \"${PROJECT_BINARY_DIR}/package/libproperties.pc\" @ONLY)
" COMPONENT Development)
install(FILES ${PROJECT_BINARY_DIR}/package/libproperties.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)

# The test of the installed tree: installs this build to a scratch prefix
# and builds a small program against it, once through the CMake package and
# once through pkg-config. Label "install"; `ctest -LE install` skips it.
if(PROPERTIES_BUILD_TESTS)
  add_test(NAME InstalledConsumer
    COMMAND sh ${PROJECT_SOURCE_DIR}/tests/consumer/run.sh
            ${PROJECT_BINARY_DIR} ${PROJECT_SOURCE_DIR}
            ${PROJECT_BINARY_DIR}/tests/consumer-scratch)
  set_tests_properties(InstalledConsumer PROPERTIES
    LABELS install TIMEOUT 600)
endif()

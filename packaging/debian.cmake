# The Debian packages libsgbk1, libsgbk-dev, sgbk and python3-sgbk: `cpack` in a build of the preset "package".
# scripts/test-packages makes them and tries them in a bare Debian. The preset "package-arm64" makes all but the
# last for arm64.

if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL libraries development)
if(TARGET sgbk-command)
  list(APPEND CPACK_COMPONENTS_ALL command)
endif()
if(TARGET sgbk-python)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
if(NOT CPACK_PACKAGE_CONTACT)
  set(CPACK_PACKAGE_CONTACT "sgbk maintainers <maintainers@sgbk.example>")
endif()

# Dependencies are read from the binaries; the command's libraries are in this build.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/data ${PROJECT_BINARY_DIR}/text)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS libraries)
set(CPACK_COMPONENT_COMMAND_DEPENDS libraries)
set(CPACK_COMPONENT_PYTHON_DEPENDS libraries)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Chinese text to clean simplified GBK")

set(CPACK_DEBIAN_LIBRARIES_DESCRIPTION
"Converts Big5, traditional GBK, UCS-2, UTF-8 and HZ to simplified GBK, GBK to
Big5 and to half-width text, and thins punctuation, as table look-ups that are
safe on any input. Tried on amd64, arm64, riscv64 and ppc64el.")
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_NAME libsgbk1)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/debian/shlibs ${CMAKE_CURRENT_SOURCE_DIR}/debian/triggers)

set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
"Headers, static library, CMake and pkg-config files and documentation of
libsgbk.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libsgbk-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)

set(CPACK_DEBIAN_COMMAND_DESCRIPTION
"The command: converts files and streams of any length with libsgbk, and tells
what was lost.")
set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME sgbk)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION text)

set(CPACK_DEBIAN_PYTHON_DESCRIPTION
"The Python package: text of any encoding to simplified str or bytes, with
libsgbk.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-sgbk)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3 (>= 3.9), python3-cffi-backend (>= 1.15)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_SOURCE_DIR}/debian/python/postinst
  ${CMAKE_CURRENT_SOURCE_DIR}/debian/python/prerm)

# What Debian asks of every package and an installed tree does not need.
set(debian ${CMAKE_CURRENT_BINARY_DIR}/debian)
string(TIMESTAMP today "%Y-%m-%d %H:%M:%S" UTC)
execute_process(COMMAND date -u -R -d "${today}" OUTPUT_VARIABLE date
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
file(READ ${PROJECT_SOURCE_DIR}/NOTICE notice)
configure_file(debian/changelog.in ${debian}/changelog @ONLY)
configure_file(debian/copyright.in ${debian}/copyright @ONLY)
configure_file(debian/finish.cmake.in ${debian}/finish.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${debian}/finish.cmake)

include(CPack)

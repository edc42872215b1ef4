# Packages from CPack: a Debian package and a tarball of the installed tree.
# Build with the package preset (prefix /usr), so that the libraries land in
# Debian's multiarch directory.

set(legiorrug_doc_dir ${CMAKE_INSTALL_DATADIR}/doc/${PROJECT_NAME})
set(legiorrug_maintainer "legiorrug maintainers <legiorrug@example.com>")

# Debian's copyright file and changelog, for the package and any install.
string(TIMESTAMP legiorrug_changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/copyright.in ${CMAKE_BINARY_DIR}/copyright @ONLY)
# A native package's changelog is changelog.gz.
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${CMAKE_BINARY_DIR}/changelog @ONLY)
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/changelog.gz
  COMMAND gzip -9 --no-name --force --keep ${CMAKE_BINARY_DIR}/changelog
  DEPENDS ${CMAKE_BINARY_DIR}/changelog
  VERBATIM)
add_custom_target(legiorrug_debian_changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/changelog.gz)
install(FILES ${CMAKE_BINARY_DIR}/copyright ${CMAKE_BINARY_DIR}/changelog.gz
  DESTINATION ${legiorrug_doc_dir})

set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "legiorrug")
set(CPACK_PACKAGE_CONTACT ${legiorrug_maintainer})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "integration registry adapter of the broker, with its shell")
set(CPACK_PACKAGE_DESCRIPTION
  "The native library through which an integration broker's processes reach\n\
their integration registry (policies, business transaction definitions,\n\
services): an in-memory registry, and an adapter that forwards every\n\
operation through JNI to the Java registry in the process's JVM. With the\n\
stand-in platform library, headers, a CMake package, a pkg-config file, the\n\
registry's jars and the legiorrug shell.")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${legiorrug_maintainer})
# dpkg-shlibdeps finds the run-time dependencies; libjvm is loaded, not
# linked, so a JDK is only a suggestion: hosts of the in-memory registry
# need none.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "openjdk-17-jdk-headless")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# dpkg runs ldconfig once after installing or removing libraries.
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers)

include(CPack)

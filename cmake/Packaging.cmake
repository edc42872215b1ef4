# The relocatable tarball from CPack (package preset); the Debian packages
# are built from debian/ (scripts/package-check).

if(LEGIORRUG_RELOCATABLE)
  # A Debian package states its licence in its own copyright file.
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()

set(CPACK_PACKAGE_NAME ${PROJECT_NAME})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "legiorrug")
set(CPACK_PACKAGE_CONTACT "legiorrug maintainers <legiorrug@example.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "integration registry adapter of the broker, with its shell")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_GENERATOR TGZ)
set(CPACK_STRIP_FILES ON)

include(CPack)

# A Debian package of the library, its headers, the CMake and pkg-config files, the kova-mapping
# tool, its manual and the example documents: `cpack -G DEB` in a configured build folder (release
# preset: `cd build/release && cpack -G DEB`).
set(KOVA_PACKAGE_MAINTAINER "KOVAMappingServices maintainers <kova-mapping@example.org>"
    CACHE STRING "Maintainer field of the Debian package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kovamappingservices)
set(CPACK_PACKAGE_VENDOR "KOVAMappingServices")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
    "KOVAMappingServices keeps the mapping between the objects of a CAD system and those of a PLM platform, reads and writes its JSON mapping documents (versions 6 to 12, optionally in a compressed envelope) and computes synchro stamps. This package holds the shared library, its headers, its CMake and pkg-config files, and the kova-mapping command-line tool.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${KOVA_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
# Run-time dependencies (libssl, libdeflate, libsimdjson, the C++ runtime) come from dpkg-shlibdeps.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
include(CPack)

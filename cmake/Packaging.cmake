# Debian packages, split as Debian splits a library: `cpack -G DEB` in a configured build folder
# (release preset: `cd build/release && cpack -G DEB`) makes one package an install component:
#
#   libkovamappingservices2     runtime  the shared libraries (the package is named after the C++
#                                        library's SONAME, libKOVAMappingServices.so.2)
#   libkovamappingservices-dev  dev      the headers, the libraries' unversioned names, the CMake
#                                        package, the pkg-config files, the README and C API page
#   kova-mapping                tool     the kova-mapping tool, its manual page, bash completion,
#                                        the JSON Schemas, its Markdown manual and example documents
#   python3-kovamapping         python   the Python package kovamapping, for the interpreter it was
#                                        built for
#
# Every package but the runtime depends on the runtime package of the same version; dpkg-shlibdeps
# adds what each package's programs and libraries need from Debian (libc6, libssl3...). The runtime
# package declares its libraries in a shlibs file, so that programs built against them get their
# dependency from dpkg-shlibdeps too. Each package takes over the files of the single package of
# earlier builds, kovamappingservices.
#
# tests/install/debian_packages_test.sh (test install.debian_packages) makes the packages, checks
# their fields and contents, and unpacks each alone, and each with the runtime package, into a
# scratch root where the tool runs, the Python package imports and a consumer builds.
set(KOVA_PACKAGE_MAINTAINER "KOVAMappingServices maintainers <kova-mapping@example.org>"
    CACHE STRING "Maintainer field of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kovamappingservices)
set(CPACK_PACKAGE_VENDOR "KOVAMappingServices")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# Each package has its own summary, the first line of its component's description below; a
# project-wide summary would be put before it.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${KOVA_PACKAGE_MAINTAINER}")
# Maintainer files (the runtime package's shlibs) are written 0644, scripts 0755.
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(KOVA_RUNTIME_PACKAGE libkovamappingservices${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${KOVA_RUNTIME_PACKAGE})
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkovamappingservices-dev)
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME kova-mapping)
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-kovamapping)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)

# "Depends: libkovamappingservices2 (= VERSION)" for the others.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
foreach(component DEV TOOL PYTHON)
  set(CPACK_COMPONENT_${component}_DEPENDS runtime)
  set(CPACK_DEBIAN_${component}_PACKAGE_BREAKS kovamappingservices)
  set(CPACK_DEBIAN_${component}_PACKAGE_REPLACES kovamappingservices)
endforeach()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_BREAKS kovamappingservices)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_REPLACES kovamappingservices)

# The extension module is built for one Python version (its file name says which): the package
# takes that version of Debian's python3 and no other.
if(KOVA_BUILD_PYTHON)
  math(EXPR kova_python_next_minor "${Python3_VERSION_MINOR} + 1")
  set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
      "python3 (>= ${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}), python3 (<< ${Python3_VERSION_MAJOR}.${kova_python_next_minor})")
endif()

# Dependencies on Debian's libraries come from dpkg-shlibdeps. The tool and the extension also
# need libKOVAMappingServices.so.2, which no installed package holds: dpkg-shlibdeps finds it in
# the build tree and, seeing no package for it, leaves it to the explicit dependency on the runtime
# package above.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
get_target_property(kova_library_dir KOVAMappingServices LIBRARY_OUTPUT_DIRECTORY)
if(NOT kova_library_dir)
  set(kova_library_dir ${PROJECT_BINARY_DIR})
endif()
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${kova_library_dir})

# The runtime package's shlibs file: a program linked with one of its libraries depends on this
# package, of this version or later (the SONAME changes when compatibility breaks).
set(kova_shlibs "libKOVAMappingServices ${PROJECT_VERSION_MAJOR} ${KOVA_RUNTIME_PACKAGE} (>= ${PROJECT_VERSION})\n")
if(TARGET kovamapping_c)
  get_target_property(kova_c_soversion kovamapping_c SOVERSION)
  string(APPEND kova_shlibs "libkovamapping_c ${kova_c_soversion} ${KOVA_RUNTIME_PACKAGE} (>= ${PROJECT_VERSION})\n")
endif()
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/packaging/runtime/shlibs CONTENT "${kova_shlibs}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packaging/runtime/shlibs)

# Descriptions: the summary line, then the long description (lines of at most 80 columns; "." is
# an empty line).
set(kova_about
    "KOVAMappingServices keeps the mapping between the objects of a CAD system and
those of a PLM platform, reads and writes its JSON mapping documents (versions
6 to 12, optionally in a compressed envelope) and computes synchro stamps.
.
")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "mapping tables, mapping documents and synchro stamps (shared libraries)
${kova_about}This package holds the shared libraries: the C++ library
(libKOVAMappingServices.so.${PROJECT_VERSION_MAJOR}) and its C interface (libkovamapping_c.so.1).")
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "mapping tables, mapping documents and synchro stamps (development files)
${kova_about}This package holds what programs built with the libraries need: the headers of
the C++ library and of its C interface (kova_mapping.h), the CMake package
KOVAMappingServices and the pkg-config files KOVAMappingServices and
kovamapping_c.")
set(CPACK_COMPONENT_TOOL_DESCRIPTION
    "look into, convert and make mapping documents and synchro stamps
${kova_about}This package holds the kova-mapping command-line tool (check, dump, convert,
diff, tree and audit documents, pack and unpack envelopes, compute stamps), its
manual page and bash completion, the JSON Schemas of the mapping documents and
example documents.")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
    "mapping tables, mapping documents and synchro stamps (Python 3)
${kova_about}This package holds the Python package kovamapping: the library's tables,
documents, envelopes, stamps, diffs and threaded audits from Python ${Python3_VERSION_MAJOR}.${Python3_VERSION_MINOR}.")

include(CPack)

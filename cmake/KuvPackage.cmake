# Debian packages by CPack: libkuvcv2017, named after what the library calls itself, and libkuvcv-dev.
#
# Component groups become packages. Each joins what everyone installs with what only Debian wants: its copyright file and changelog.
find_program(GZIP_PROGRAM gzip)
find_program(DPKG_DEB dpkg-deb)
mark_as_advanced(GZIP_PROGRAM DPKG_DEB)
if(NOT GZIP_PROGRAM OR NOT DPKG_DEB)
  return()
endif()

set(KUVCV_PACKAGE_MAINTAINER "kuvCV authors <kuvcv@invalid>" CACHE STRING "Name and address that Debian packages give")
set(runtime libkuvcv${PROJECT_VERSION_MAJOR})
set(development libkuvcv-dev)
set(release 1)
set(debian ${CMAKE_CURRENT_BINARY_DIR}/debian)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kuvcv)
set(CPACK_PACKAGE_VENDOR "kuvCV authors")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package's description has its own in the first line
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/package)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL kuvcv_runtime kuvcv_development debian_runtime debian_development)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE kuvcv)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${release})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${KUVCV_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_MULTIARCH same) # written by CMake 3.31 and newer
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "exact image and signal primitives for x86 processors
kuvCV is a C library of image and signal primitives: arithmetic, conversions,
statistics, tone maps and dithers, demosaicing, filters, resizing, transforms
and labels. Results are documented to the last bit. It exists in six variants
for growing instruction sets, of which the processor's best one is taken. It
never allocates behind the caller's back, starts no thread and takes no lock.
.
This package contains the shared library.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${runtime} (= ${PROJECT_VERSION}-${release})")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "exact image and signal primitives for x86 processors (development files)
kuvCV is a C library of image and signal primitives: arithmetic, conversions,
statistics, tone maps and dithers, demosaicing, filters, resizing, transforms
and labels.
.
This package contains the header, which documents every function, the static
library, and what CMake and pkg-config need to find them.")

# What the runtime tells the package manager: to renew the linker's cache, and on which version of it a program depends that was linked with
# the library. That is told by symbol; all symbols are of the first version.
set(soname libkuvcv.so.${PROJECT_VERSION_MAJOR})
file(READ ${CMAKE_CURRENT_BINARY_DIR}/kuvcv.map symbols)
string(REGEX MATCHALL "kuv[A-Za-z0-9_]+" symbols "${symbols}")
list(TRANSFORM symbols REPLACE "(.+)" " \\1@KUVCV_2017 2017.0.3\n")
list(JOIN symbols "" symbols)
file(WRITE ${debian}/symbols
  "${soname} ${runtime} #MINVER#\n* Build-Depends-Package: ${development}\n KUVCV_2017@KUVCV_2017 2017.0.3\n${symbols}")
file(WRITE ${debian}/shlibs "libkuvcv ${PROJECT_VERSION_MAJOR} ${runtime} (>= 2017.0.3)\n")
file(WRITE ${debian}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${debian}/symbols ${debian}/shlibs ${debian}/triggers)

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${debian}/changelog.Debian "kuvcv (${PROJECT_VERSION}-${release}) unstable; urgency=medium

  * Version ${PROJECT_VERSION}.

 -- ${KUVCV_PACKAGE_MAINTAINER}  ${date}
")
file(READ LICENSE license)
string(REGEX REPLACE "^.*(Redistribution and use)" "\\1" license "${license}")
string(STRIP "${license}" license)
string(REPLACE "\n" "\n " license " ${license}")
string(REPLACE "\n \n" "\n .\n" license "${license}")
file(WRITE ${debian}/copyright "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: kuvcv

Files: *
Copyright: 2026, the kuvCV authors
License: BSD-2-Clause
${license}
")
file(COPY_FILE CHANGELOG.md ${debian}/changelog)
foreach(name IN ITEMS changelog changelog.Debian)
  execute_process(COMMAND ${GZIP_PROGRAM} -9nf ${debian}/${name} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

foreach(kind IN ITEMS runtime development)
  install(FILES ${debian}/copyright ${debian}/changelog.gz ${debian}/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${kind}} COMPONENT debian_${kind} EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
foreach(kind IN ITEMS runtime development)
  cpack_add_component_group(${kind})
  cpack_add_component(kuvcv_${kind} GROUP ${kind})
  cpack_add_component(debian_${kind} GROUP ${kind})
endforeach()

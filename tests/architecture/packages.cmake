# Packs the build into Debian packages, looks into them, unpacks them, and builds the program that README.md shows with what is inside.
#
#   cmake -D BUILD=... -D WORK=... -D CONSUMER=... -D README=... -D GENERATOR=... -D C_COMPILER=... -D C_FLAGS=... -D READELF=...
#         -D LIBDIR=... -D CONFIG=... -P packages.cmake
cmake_minimum_required(VERSION 3.21)

include(${CMAKE_CURRENT_LIST_DIR}/consumer.cmake)

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_CPACK_COMMAND} --config ${BUILD}/CPackConfig.cmake -B ${WORK} -C ${CONFIG})
file(GLOB packages RELATIVE ${WORK} ${WORK}/*.deb)
list(SORT packages)
if(NOT packages MATCHES "^libkuvcv-dev_2017\\.0\\.3-1_([a-z0-9]+)\\.deb;libkuvcv2017_2017\\.0\\.3-1_([a-z0-9]+)\\.deb$")
  message(FATAL_ERROR "packages: ${packages}")
endif()
list(GET packages 0 development)
list(GET packages 1 runtime)

# expect_control(PACKAGE LINE...): the lines, as regular expressions, stand in the package's control file.
function(expect_control package)
  run(dpkg-deb --field ${WORK}/${package})
  foreach(line IN LISTS ARGN)
    if(NOT "\n${output}" MATCHES "\n${line}\n")
      message(FATAL_ERROR "${package} has no ${line}:\n${output}")
    endif()
  endforeach()
endfunction()
expect_control(${runtime} "Package: libkuvcv2017" "Version: 2017\\.0\\.3-1" "Section: libs" "Maintainer: [^\n]+ <[^\n]+>"
  "Depends: libc6 \\(>= [0-9.]+\\)" "Description: exact image [^\n]+\n [^\n]+")
expect_control(${development} "Package: libkuvcv-dev" "Section: libdevel" "Depends: libkuvcv2017 \\(= 2017\\.0\\.3-1\\)"
  "Description: exact image [^\n]+\n [^\n]+")

# What the runtime tells the package manager: the linker's cache is to be renewed, and who links with the library depends on the package.
run(dpkg-deb --control ${WORK}/${runtime} ${WORK}/control)
foreach(pair IN ITEMS "triggers:^activate-noawait ldconfig\n$" "shlibs:^libkuvcv 2017 libkuvcv2017 \\(>= 2017\\.0\\.3\\)\n$"
    "symbols:^libkuvcv\\.so\\.2017 libkuvcv2017 #MINVER#\n(.*\n)? kuviAdd_32f_C1IR@KUVCV_2017 2017\\.0\\.3\n"
    "md5sums:libkuvcv\\.so\\.2017\\.0\\.3")
  string(REGEX MATCH "^([a-z0-9]+):(.*)$" matched "${pair}")
  set(pattern "${CMAKE_MATCH_2}")
  file(READ ${WORK}/control/${CMAKE_MATCH_1} content)
  if(NOT content MATCHES "${pattern}")
    message(FATAL_ERROR "${CMAKE_MATCH_1}: ${content}")
  endif()
endforeach()

function(expect_files package)
  run(dpkg-deb --extract ${WORK}/${package} ${WORK}/${package}.d)
  file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${WORK}/${package}.d/usr ${WORK}/${package}.d/*)
  list(SORT files)
  list(SORT ARGN)
  if(NOT files STREQUAL ARGN)
    message(FATAL_ERROR "files: ${files}\nwanted: ${ARGN}")
  endif()
  run(dpkg-deb --extract ${WORK}/${package} ${WORK}/root)
endfunction()
foreach(name IN ITEMS libkuvcv2017 libkuvcv-dev)
  set(${name}Documents share/doc/${name}/changelog.Debian.gz share/doc/${name}/changelog.gz share/doc/${name}/copyright)
endforeach()
expect_files(${runtime} ${runtimeFiles} ${libkuvcv2017Documents})
expect_files(${development} ${developmentFiles} ${libkuvcv-devDocuments})

# The program of README.md, in both ways that it shows.
set(prefix ${WORK}/root/usr)
set(libdir ${prefix}/${LIBDIR})
file(READ ${README} readme)
string(CONCAT shown "A program, `mosaic\\.c`:\n\n```c\n(#include <kuvcv\\.h>.*\n)```\n\n"
  "```sh\ncc mosaic\\.c \\$\\(pkg-config --cflags --libs kuvcv\\)")
if(NOT readme MATCHES "${shown}")
  message(FATAL_ERROR "${README} shows no program mosaic.c, or not how to build it")
endif()
file(WRITE ${WORK}/mosaic/mosaic.c "${CMAKE_MATCH_1}")
find_program(PKG_CONFIG pkg-config REQUIRED)
run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${libdir}/pkgconfig ${PKG_CONFIG} --cflags --libs kuvcv)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${C_COMPILER} ${WORK}/mosaic/mosaic.c ${flags} -o ${WORK}/mosaic/pkgconfig)
expect_needed(${WORK}/mosaic/pkgconfig ON)
expect_run(${WORK}/mosaic/pkgconfig "status 0, centre")

if(NOT readme MATCHES "```cmake\n(find_package\\(kuvcv CONFIG REQUIRED\\).*target_link_libraries\\(mosaic PRIVATE kuvcv::kuvcv\\)\n)```")
  message(FATAL_ERROR "${README} does not show how to use CMake")
endif()
string(REPLACE "target_link" "add_executable(mosaic mosaic.c)\ntarget_link" lists "${CMAKE_MATCH_1}")
file(WRITE ${WORK}/mosaic/CMakeLists.txt "cmake_minimum_required(VERSION 3.21)\nproject(mosaic C)\n${lists}")
run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${WORK}/mosaic -B ${WORK}/mosaic/build -DCMAKE_PREFIX_PATH=${prefix}
  -DCMAKE_C_COMPILER=${C_COMPILER})
run(${CMAKE_COMMAND} --build ${WORK}/mosaic/build)
expect_needed(${WORK}/mosaic/build/mosaic ON)
expect_run(${WORK}/mosaic/build/mosaic "status 0, centre")

file(REMOVE_RECURSE ${WORK}/_CPack_Packages)

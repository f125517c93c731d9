# Installs the build into a fresh prefix, checks the list of files, and uses the package as a stranger would.
#
#   cmake -D BUILD=... -D WORK=... -D CONSUMER=... -D GENERATOR=... -D C_COMPILER=... -D C_FLAGS=... -D READELF=... -D LIBDIR=...
#         -D CONFIG=... -P install.cmake
cmake_minimum_required(VERSION 3.21)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/first)
# The installed tree can be moved.
file(RENAME ${WORK}/first ${WORK}/prefix)
set(prefix ${WORK}/prefix)

file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${prefix} ${prefix}/*)
string(TOLOWER ${CONFIG} config)
set(wanted
  include/kuvcv.h
  ${LIBDIR}/cmake/kuvcv/kuvcvConfig.cmake
  ${LIBDIR}/cmake/kuvcv/kuvcvConfigVersion.cmake
  ${LIBDIR}/cmake/kuvcv/kuvcvTargets-${config}.cmake
  ${LIBDIR}/cmake/kuvcv/kuvcvTargets.cmake
  ${LIBDIR}/libkuvcv.a
  ${LIBDIR}/libkuvcv.so
  ${LIBDIR}/libkuvcv.so.2017
  ${LIBDIR}/libkuvcv.so.2017.0.3
  ${LIBDIR}/pkgconfig/kuvcv.pc)
list(SORT files)
list(SORT wanted)
if(NOT files STREQUAL wanted)
  message(FATAL_ERROR "installed files: ${files}\nwanted: ${wanted}")
endif()

# Whether the program was linked with the shared library; that of the C++ runtime it never needs.
function(expect_needed program shared)
  run(${READELF} -d ${program})
  if(output MATCHES "libstdc\\+\\+|libc\\+\\+")
    message(FATAL_ERROR "${program} needs the C++ runtime:\n${output}")
  endif()
  if(shared AND NOT output MATCHES "libkuvcv\\.so\\.2017\\]" OR NOT shared AND output MATCHES "libkuvcv")
    message(FATAL_ERROR "${program} is linked with the wrong library:\n${output}")
  endif()
endfunction()

function(expect_run program)
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${program})
  if(NOT output MATCHES "kuvCV .*2017\\.0\\.3")
    message(FATAL_ERROR "${program} printed ${output}")
  endif()
endfunction()

# find_package, as it comes and with the static library asked for.
foreach(shared IN ITEMS ON OFF)
  set(build ${WORK}/find-${shared})
  set(choice "")
  if(NOT shared)
    set(choice -DBUILD_SHARED_LIBS=OFF)
  endif()
  run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMER}/find -B ${build} -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_C_FLAGS=${C_FLAGS} -DCMAKE_BUILD_TYPE=${CONFIG} ${choice})
  run(${CMAKE_COMMAND} --build ${build} --config ${CONFIG})
  expect_needed(${build}/consumer ${shared})
  expect_run(${build}/consumer)
endforeach()

# pkg-config, in the same two ways.
find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
run(${PKG_CONFIG} --modversion kuvcv)
if(NOT output MATCHES "^2017\\.0\\.3\n")
  message(FATAL_ERROR "pkg-config gives version ${output}")
endif()
separate_arguments(c_flags UNIX_COMMAND "${C_FLAGS}")
run(${PKG_CONFIG} --cflags --libs kuvcv)
separate_arguments(shared_flags UNIX_COMMAND "${output}")
run(${C_COMPILER} ${c_flags} ${CONSUMER}/main.c ${shared_flags} -o ${WORK}/pkgconfig-shared)
expect_needed(${WORK}/pkgconfig-shared ON)
expect_run(${WORK}/pkgconfig-shared)
run(${PKG_CONFIG} --static --cflags --libs kuvcv)
separate_arguments(static_flags UNIX_COMMAND "${output}")
run(${C_COMPILER} ${c_flags} ${CONSUMER}/main.c -Wl,-Bstatic ${static_flags} -Wl,-Bdynamic -o ${WORK}/pkgconfig-static)
expect_needed(${WORK}/pkgconfig-static OFF)
expect_run(${WORK}/pkgconfig-static)

# No package at all: a C compiler, the header and the archive.
run(${C_COMPILER} ${c_flags} -std=c99 -pedantic-errors -I${prefix}/include ${CONSUMER}/main.c ${prefix}/${LIBDIR}/libkuvcv.a -o ${WORK}/plain)
expect_needed(${WORK}/plain OFF)
expect_run(${WORK}/plain)

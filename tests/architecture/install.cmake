# Installs the build into a fresh prefix, checks the list of files, and uses the package as a stranger would.
#
#   cmake -D BUILD=... -D WORK=... -D CONSUMER=... -D GENERATOR=... -D C_COMPILER=... -D C_FLAGS=... -D READELF=... -D LIBDIR=...
#         -D CONFIG=... -P install.cmake
cmake_minimum_required(VERSION 3.21)

include(${CMAKE_CURRENT_LIST_DIR}/consumer.cmake)

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/first)
# The installed tree can be moved.
file(RENAME ${WORK}/first ${WORK}/prefix)
set(prefix ${WORK}/prefix)
set(libdir ${prefix}/${LIBDIR})

file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${prefix} ${prefix}/*)
set(wanted ${runtimeFiles} ${developmentFiles})
list(SORT files)
list(SORT wanted)
if(NOT files STREQUAL wanted)
  message(FATAL_ERROR "installed files: ${files}\nwanted: ${wanted}")
endif()

# The two components are that tree, parted.
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/runtime --component kuvcv_runtime)
run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK}/development --component kuvcv_development)
file(GLOB_RECURSE runtime LIST_DIRECTORIES false RELATIVE ${WORK}/runtime ${WORK}/runtime/*)
file(GLOB_RECURSE development LIST_DIRECTORIES false RELATIVE ${WORK}/development ${WORK}/development/*)
set(parts ${runtime} ${development})
list(SORT parts)
if(NOT parts STREQUAL wanted OR NOT runtime STREQUAL runtimeFiles)
  message(FATAL_ERROR "runtime: ${runtime}\ndevelopment: ${development}")
endif()

# find_package: as it comes, with the static library asked for in each way, and with both.
expect_find(default ON)
expect_find(off OFF -DBUILD_SHARED_LIBS=OFF)
expect_find(static OFF -DCOMPONENTS=static -DVERSION=2017.0.3)
expect_find(shared ON -DCOMPONENTS=shared -DBUILD_SHARED_LIBS=OFF)
expect_find(both ON "-DCOMPONENTS=shared static")
expect_find(target OFF -DTARGET=kuvcv::static)
# What is not there is not found.
foreach(wrong IN ITEMS -DVERSION=2016 -DVERSION=2017.1 -DVERSION=2018 -DCOMPONENTS=python)
  execute_process(COMMAND ${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMER}/find -B ${WORK}/find-wrong -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_C_COMPILER=${C_COMPILER} ${wrong} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(result EQUAL 0 OR NOT output MATCHES "kuvcv_FOUND|compatible[ \n]+with[ \n]+requested[ \n]+version")
    message(FATAL_ERROR "find_package with ${wrong}: ${output}")
  endif()
  file(REMOVE_RECURSE ${WORK}/find-wrong)
endforeach()

# pkg-config, in the same two ways.
find_program(PKG_CONFIG pkg-config REQUIRED)
set(ENV{PKG_CONFIG_PATH} ${libdir}/pkgconfig)
run(${PKG_CONFIG} --modversion kuvcv)
if(NOT output MATCHES "^2017\\.0\\.3\n")
  message(FATAL_ERROR "pkg-config gives version ${output}")
endif()
separate_arguments(c_flags UNIX_COMMAND "${C_FLAGS}")
run(${PKG_CONFIG} --cflags --libs kuvcv)
separate_arguments(shared_flags UNIX_COMMAND "${output}")
run(${C_COMPILER} ${c_flags} ${CONSUMER}/main.c ${shared_flags} -o ${WORK}/pkgconfig-shared)
expect_needed(${WORK}/pkgconfig-shared ON)
expect_run(${WORK}/pkgconfig-shared "kuvCV .*2017\\.0\\.3")
run(${PKG_CONFIG} --static --cflags --libs kuvcv)
separate_arguments(static_flags UNIX_COMMAND "${output}")
run(${C_COMPILER} ${c_flags} ${CONSUMER}/main.c -Wl,-Bstatic ${static_flags} -Wl,-Bdynamic -o ${WORK}/pkgconfig-static)
expect_needed(${WORK}/pkgconfig-static OFF)
expect_run(${WORK}/pkgconfig-static "kuvCV .*2017\\.0\\.3")

# A program without any shared library; sanitizers cannot make one.
if(NOT C_FLAGS MATCHES "-fsanitize")
  run(${C_COMPILER} ${c_flags} -static ${CONSUMER}/main.c ${static_flags} -o ${WORK}/pkgconfig-alone)
  expect_run(${WORK}/pkgconfig-alone "kuvCV .*2017\\.0\\.3")
endif()

# No package at all: a C compiler, the header and the archive.
run(${C_COMPILER} ${c_flags} -std=c99 -pedantic-errors -I${prefix}/include ${CONSUMER}/main.c ${libdir}/libkuvcv.a -o ${WORK}/plain)
expect_needed(${WORK}/plain OFF)
expect_run(${WORK}/plain "kuvCV .*2017\\.0\\.3")

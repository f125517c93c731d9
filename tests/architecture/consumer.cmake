# What the checks of installed and packaged trees share: how a user's programs are built, and what is expected of them.

# What the two components hold, in order.
string(TOLOWER ${CONFIG} config)
set(runtimeFiles
  ${LIBDIR}/libkuvcv.so.2017
  ${LIBDIR}/libkuvcv.so.2017.0.3)
set(developmentFiles
  include/kuvcv.h
  ${LIBDIR}/cmake/kuvcv/kuvcvConfig.cmake
  ${LIBDIR}/cmake/kuvcv/kuvcvConfigVersion.cmake
  ${LIBDIR}/cmake/kuvcv/kuvcvTargets-${config}.cmake
  ${LIBDIR}/cmake/kuvcv/kuvcvTargets.cmake
  ${LIBDIR}/libkuvcv.a
  ${LIBDIR}/libkuvcv.so
  ${LIBDIR}/pkgconfig/kuvcv.pc)

# run(COMMAND...): sets `output`; a failure ends the check.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

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

# expect_run(PROGRAM PATTERN): it runs, and prints what matches.
function(expect_run program pattern)
  run(${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${libdir} ${program})
  if(NOT output MATCHES "${pattern}")
    message(FATAL_ERROR "${program} printed ${output}")
  endif()
endfunction()

# expect_find(NAME SHARED OPTION...): builds and runs the project that finds the package under `prefix`.
function(expect_find name shared)
  set(build ${WORK}/find-${name})
  run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${CONSUMER}/find -B ${build} -DCMAKE_PREFIX_PATH=${prefix}
    -DCMAKE_C_COMPILER=${C_COMPILER} -DCMAKE_C_FLAGS=${C_FLAGS} -DCMAKE_BUILD_TYPE=${CONFIG} ${ARGN})
  run(${CMAKE_COMMAND} --build ${build} --config ${CONFIG})
  expect_needed(${build}/consumer ${shared})
  expect_run(${build}/consumer "kuvCV .*2017\\.0\\.3")
endfunction()
